#include "base/paths.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

// An absolute folder from a variable, with its final separator; empty if there is none. Relative paths are to
// be ignored in the variables of this kind.
std::string folder_of_variable(const char* name) {
    const char* const value = std::getenv(name);
    if (!value || value[0] != '/') return "";
    const std::string folder = value;
    return folder.ends_with('/') ? folder : folder + "/";
}

std::string home_folder() {
    // A variable that is there but empty says that there is no home.
    if (std::getenv("HOME")) return folder_of_variable("HOME");
    passwd entry;
    passwd* found = nullptr;
    std::array<char, 4096> texts;
    if (getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found) != 0 || !found) return "";
    if (!entry.pw_dir || entry.pw_dir[0] != '/') return "";
    return std::string(entry.pw_dir) + "/";
}

std::string user_folder(const char* variable, const char* below_home) {
    std::string folder = folder_of_variable(variable);
    if (!folder.empty()) return folder;
    const std::string home = home_folder();
    return home.empty() ? "" : home + below_home;
}

// A folder of the user's own that others cannot put files into; no link that leads to one.
bool is_private_folder(const std::string& folder) {
    const std::string name = folder.substr(0, folder.find_last_not_of('/') + 1);
    struct stat status;
    return lstat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace

std::string executable_file() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "" : program.string();
}

std::string executable_folder() {
    const std::string file = executable_file();
    return file.empty() ? "./" : file.substr(0, file.rfind('/') + 1);
}

std::string absolute_path(const std::string& path) {
    std::error_code error;
    const std::filesystem::path result = std::filesystem::absolute(path, error);
    return error ? path : result.string();
}

bool is_build_folder(std::string_view folder) {
    return folder.find("Release") != std::string_view::npos || folder.find("Debug") != std::string_view::npos;
}

std::string enter_program_folder() {
    std::string folder = executable_folder();
    if (is_build_folder(folder) || chdir(folder.c_str()) != 0) return "./";
    return folder;
}

std::string user_data_folder() { return user_folder("XDG_DATA_HOME", ".local/share/"); }

std::string user_settings_folder() { return user_folder("XDG_CONFIG_HOME", ".config/"); }

std::string user_runtime_folder() {
    std::string session = folder_of_variable("XDG_RUNTIME_DIR");
    if (!session.empty() && is_private_folder(session)) return session;
    const std::string own = "/tmp/tessarin-international-" + std::to_string(geteuid()) + "/";
    mkdir(own.c_str(), 0700);
    return is_private_folder(own) ? own : "";
}
