// Where things are. Paths are 8-bit texts; folders end in the system's separator.
#pragma once

#include <string>

// The folder of the running program, with its final separator; "./" if the system does not tell.
std::string executable_folder();

// The path as one that stays right when the current folder changes; it need not exist.
std::string absolute_path(const std::string& path);

// Makes the program's own folder the current one, where the data files are opened by plain name. A program
// run from a folder with "Release" or "Debug" in its path keeps the current folder, so that a build tree of
// an integrated environment finds its files in the project. Returns the program folder: "./" in that case.
std::string enter_program_folder();
