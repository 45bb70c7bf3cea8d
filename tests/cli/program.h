// Runs the console program as a user does.
#pragma once

#include <filesystem>
#include <string>

#include "base/child_process.h"

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

// A folder that goes with the test. Its name has a blank, as those of users may.
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

// The program in a folder of its own, where the files that belong to it are missing, or others.
struct ProgramCopy {
    TemporaryFolder folder;
    std::string program;

    ProgramCopy();
};

// The program while somebody sits before it: lines are typed when others have been read, and the interrupt
// key is pressed when the program is known to be at work.
struct RunningProgram {
    TemporaryFolder files;
    ChildProcess child;
    std::string output;  // read so far

    // As `run_program` starts it.
    RunningProgram(const std::string& arguments, const std::filesystem::path& folder);

    // Types a line. False if the program no longer reads.
    bool type(const std::string& line);

    // Reads on until a new line of the output has the text. False at the end of the output.
    bool read_until(const std::string& text);

    void interrupt() const;

    // Ends the input, reads the rest and waits for the end.
    ProgramResult finish();
};

// Waits until the file has the text. False after a minute.
bool wait_for_text(const std::filesystem::path& path, const std::string& text);
