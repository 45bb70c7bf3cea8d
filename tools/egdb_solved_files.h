// The files that keep solved materials while a build is under way, so that one that was interrupted does not
// solve them again. Builds of values and of moves to conversion have the same ones.
#pragma once

#include <string>

#include "tools/egdb_build.h"
#include "tools/egdb_solver.h"

// Adds the material to the set from its file in the folder, empty or ending in "/". False if it isn't there
// or damaged.
bool take_kept(const std::string& folder, const Material& m, SolvedSet& set);

// Solves the material, as `solve_material` does, and keeps it in its file. The result tells a file that
// cannot be written.
EgdbBuildStatus solve_and_keep(const std::string& folder, const Material& m, SolvedSet& set,
                               const SolveControl& control, EgdbBuildResult& result);

// Removes those of up to so many pieces, and what builds that were killed left half written in the folder.
void remove_kept(const std::string& folder, int pieces);
