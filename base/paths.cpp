#include "base/paths.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

std::string executable_folder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return "./";
    return program.parent_path().string() + "/";
}

std::string absolute_path(const std::string& path) {
    std::error_code error;
    const std::filesystem::path result = std::filesystem::absolute(path, error);
    return error ? path : result.string();
}

std::string enter_program_folder() {
    std::string folder = executable_folder();
    const bool build_tree =
        folder.find("Release") != std::string::npos || folder.find("Debug") != std::string::npos;
    if (build_tree || chdir(folder.c_str()) != 0) return "./";
    return folder;
}
