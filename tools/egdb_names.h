// The names of a database's files, and what each of them holds, for those who build it.
#pragma once

#include <vector>

#include "egdb/file_list.h"
#include "egdb/numbering.h"

// The names for that many pieces.
std::vector<EgdbFileName> egdb_names_of(EgdbType type, int pieces);

// The materials of a file, in the order in which they stand in it: that of the names of larger files.
std::vector<Material> materials_of(const EgdbFileName& name);
