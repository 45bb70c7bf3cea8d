// The names that this copy of the program goes by and the places that it writes to. Several copies can run at
// once: all but copy 0 put their number into each name.
#pragma once

#include <string>

constexpr const char* VENDOR_NAME = "Quillorn";
constexpr const char* PROGRAM_NAME = "Tessarin International";
constexpr const char* PROGRAM_SHORT_NAME = "Tessarin";
constexpr const char* PROGRAM_VERSION = "1.60b";

// Written at start-up, before other threads run, and constant from then on.
struct ProgramPaths {
    std::string program_file;     // the executable
    std::string program_folder;   // language files and the default database folders are found here
    std::string data_folder;      // of logs and analysis output; empty, the current folder, if there is none
    std::string settings_folder;  // empty if there is none
    int instance_number = 0;      // 0 to 99
    std::string instance_suffix;  // empty for copy 0, otherwise "[1]" and so on
    std::string log_path;         // the main log
    std::string egdb_log_path;    // the log of the endgame databases
    std::string window_title;
    std::string short_name;  // told to remote players
};
extern ProgramPaths program_paths;

// The paths of a program in `program_folder` that writes to `data_folder`, as copy `instance_number`. The
// executable and the settings folder are left empty.
ProgramPaths make_program_paths(const std::string& program_folder, const std::string& data_folder,
                                int instance_number);

// The vendor's and the program's folder below a folder of the user's, with the final separator; empty if
// `user_folder` is.
std::string program_folder_below(const std::string& user_folder);
