// Runs the console program as a user does.
#pragma once

#include <filesystem>
#include <string>

struct ProgramResult {
    int status = -1;     // exit status; -1 if it did not exit by itself
    std::string output;  // standard output
    std::string errors;  // standard error
};

// Runs the program with the arguments, which the shell splits, in `folder`, and with `input` on standard
// input.
ProgramResult run_program(const std::string& arguments, const std::string& input = "",
                          const std::filesystem::path& folder = ".", const std::string& program = PROGRAM);

// The last line of a text, without its newline.
std::string last_line(const std::string& text);

// The number of lines of a text.
int count_lines(const std::string& text);

// A folder that goes with the test.
struct TemporaryFolder {
    std::filesystem::path path;

    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Writes a file in it and returns its path.
    std::string write(const std::string& name, const std::string& content) const;
};

std::string read_text(const std::filesystem::path& path);
