// Where things are. Paths are 8-bit texts; folders end in the system's separator.
#pragma once

#include <string>
#include <string_view>

// The running program's file; empty if the system does not tell.
std::string executable_file();

// Its folder, with the final separator; "./" if the system does not tell.
std::string executable_folder();

// The path as one that stays right when the current folder changes; it need not exist.
std::string absolute_path(const std::string& path);

// The folder belongs to a build tree of an integrated environment: "Release" or "Debug", spelt so, is
// somewhere in its path.
bool is_build_folder(std::string_view folder);

// Makes the program's own folder the current one, where the data files are opened by plain name. A program
// run from a build folder keeps the current folder, so that it finds its files in the project. Returns the
// program folder: "./" in that case.
std::string enter_program_folder();

// The folders that the system has for the data and for the settings of the user's programs, by the variables
// XDG_DATA_HOME and XDG_CONFIG_HOME or in the user's home. They need not exist. Empty if there is no home.
std::string user_data_folder();
std::string user_settings_folder();

// A folder for files that need not outlive the user's session, which nobody else may write to: that of
// XDG_RUNTIME_DIR, or one in /tmp, which is made. Empty if there is none that is safe to use.
std::string user_runtime_folder();
