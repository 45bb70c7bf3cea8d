// Solved endings from a folder that keeps them, for the programs that compare databases with the solver.
#pragma once

#include <string>

#include "tools/egdb_values.h"

// Fills the set up to that many pieces; what the folder does not have is solved and put there. False on
// failure.
bool have_solved(SolvedSet& set, const std::string& folder, int pieces);
