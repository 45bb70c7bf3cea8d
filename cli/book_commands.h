// The commands below `book`.
#pragma once

#include <CLI/CLI.hpp>

void add_book_build(CLI::App& book);
