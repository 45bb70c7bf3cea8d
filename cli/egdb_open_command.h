// Opens a database as the engine does and tells what was found.
#pragma once

#include <CLI/CLI.hpp>

void add_egdb_open_command(CLI::App& egdb);
