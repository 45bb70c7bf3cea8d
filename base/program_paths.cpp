#include "base/program_paths.h"

ProgramPaths program_paths;

ProgramPaths make_program_paths(const std::string& program_folder, const std::string& data_folder,
                                int instance_number) {
    ProgramPaths paths;
    paths.program_folder = program_folder;
    paths.data_folder = data_folder;
    paths.instance_number = instance_number;
    if (instance_number > 0) paths.instance_suffix = '[' + std::to_string(instance_number) + ']';
    const std::string& suffix = paths.instance_suffix;
    paths.log_path = data_folder + PROGRAM_SHORT_NAME + suffix + ".log";
    paths.egdb_log_path = data_folder + "egdb" + suffix + ".log";
    paths.window_title = std::string(PROGRAM_NAME) + "(x64)" + suffix + " " + PROGRAM_VERSION;
    paths.short_name = PROGRAM_SHORT_NAME + suffix + " " + PROGRAM_VERSION;
    return paths;
}

std::string program_folder_below(const std::string& user_folder) {
    if (user_folder.empty()) return "";
    return user_folder + VENDOR_NAME + "/" + PROGRAM_NAME + "/";
}
