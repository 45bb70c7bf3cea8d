// Small endings solved once for all tests of one program.
#pragma once

#include "tools/egdb_values.h"

// All materials of up to that many pieces, solved. Kept until the program ends.
const SolvedSet& solved_up_to(int pieces);
