// A folder that is there for one test, and environment variables that are as the test wants them.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tessarin-test-XXXXXX").string();
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        path = name + "/";
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path;  // with its final separator
    std::string file(const std::string& name) const { return path + name; }
};

// Sets variables and puts them back in the end.
class ScratchEnvironment {
  public:
    ScratchEnvironment() = default;
    ~ScratchEnvironment() {
        for (const auto& [name, value] : former) put(name, value);
    }
    ScratchEnvironment(const ScratchEnvironment&) = delete;
    ScratchEnvironment& operator=(const ScratchEnvironment&) = delete;

    // No value takes the variable away.
    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* const old = std::getenv(name.c_str());
        former.try_emplace(name, old ? std::optional<std::string>(old) : std::nullopt);
        put(name, value);
    }

  private:
    static void put(const std::string& name, const std::optional<std::string>& value) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
    std::map<std::string, std::optional<std::string>> former;
};

inline std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "(unreadable)";
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline void write_content(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

// Files and folders directly below a folder.
inline size_t entries_of(const std::string& folder) {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
    return count;
}
