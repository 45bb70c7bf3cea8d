// Values of the endgame databases as the console prints them.
#pragma once

#include <string>

#include "egdb/driver.h"
#include "egdb/numbering.h"

const char* egdb_value_text(EgdbValue value);

// The name of the file, without extension, that the canonical material belongs to.
std::string egdb_file_of(const Material& m);
