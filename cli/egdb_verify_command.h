// `egdb verify`: the files of a database against the known checksums.
#pragma once

#include <CLI/CLI.hpp>

void add_egdb_verify_command(CLI::App& egdb);
