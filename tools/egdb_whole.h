// A database folder read wholly into memory, whatever files of it are there and whoever made them, and the
// solved values taken back from it.
#pragma once

#include <memory>
#include <string>

#include "egdb/database.h"
#include "egdb/engine_egdb.h"
#include "tools/egdb_values.h"

// Opens the .cpr1 files of the folder that are there, of up to `max_pieces`. Null if there is none or one
// cannot be read, which `log` was told.
std::unique_ptr<EgdbDatabase> open_whole_database(const std::string& folder, int max_pieces,
                                                  void (*log)(const char* text));

// Lets the engine ask the database, without what opens and closes it. `driver` is filled in; it and the
// database must live as long as the engine may ask, that is until `egdb_engine` is written again.
void use_in_engine(EgdbDatabase& database, EgdbDriver& driver);

// The values of all positions of a material of up to six pieces, from the database and, where the side to
// move captures, from the set, which must hold its `next_materials` of fewer pieces. 0; 1 if the database
// doesn't hold the material, 2 if memory ran out.
int values_from_database(EgdbDatabase& database, const SolvedSet& set, const Material& m, int threads,
                         SolvedMaterial& solved);
