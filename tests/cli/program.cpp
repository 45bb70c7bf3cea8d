#include "tests/cli/program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/base/run_command.h"

ProgramResult run_program(const std::string& arguments, const std::string& input,
                          const std::filesystem::path& folder, const std::string& program) {
    const TemporaryFolder files;
    const std::string in = files.write("in", input);
    const std::string out = files.path / "out", err = files.path / "err";
    // Behind these redirections the arguments may have others of their own.
    const std::string command = "cd " + quoted(folder) + " && " + quoted(program) + " <" + quoted(in) + " >" +
                                quoted(out) + " 2>" + quoted(err) + " " + arguments;
    const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): a shell is what users have
    ProgramResult result;
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    result.output = read_text(out);
    result.errors = read_text(err);
    return result;
}

std::string last_line(const std::string& text) {
    const std::string trimmed = text.substr(0, text.find_last_not_of('\n') + 1);
    const size_t start = trimmed.rfind('\n');
    return start == std::string::npos ? trimmed : trimmed.substr(start + 1);
}

int count_lines(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tessarin test-XXXXXX").string();
    path = mkdtemp(name.data());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
    const std::filesystem::path file = path / name;
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
}

std::string read_text(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

ProgramCopy::ProgramCopy() : program(folder.path / "tessarin-cli") {
    std::filesystem::copy_file(PROGRAM, program);
}

RunningProgram::RunningProgram(const std::string& arguments, const std::filesystem::path& folder) {
    // Behind a shell's & the key would be ignored by all that is started.
    std::signal(SIGINT, SIG_DFL);
    // The shell becomes the program, so that the interrupt reaches it.
    const std::vector<std::string> shell = {"sh", "-c",
                                            "cd " + quoted(folder) + " && exec " + quoted(PROGRAM) + " 2>" +
                                                quoted(files.path / "err") + " " + arguments};
    start_child(child, "/bin/sh", shell);
}

bool RunningProgram::type(const std::string& line) { return write_line(child, line) == 0; }

bool RunningProgram::read_until(const std::string& text) {
    std::string line;
    do {
        if (read_line(child, line) != 0) return false;
        output += line + '\n';
    } while (line.find(text) == std::string::npos);
    return true;
}

void RunningProgram::interrupt() const { kill(child.pid, SIGINT); }

ProgramResult RunningProgram::finish() {
    ProgramResult result;
    close(child.input);
    child.input = -1;
    for (std::string line; read_line(child, line) == 0;) output += line + '\n';
    result.status = wait_for_child(child);
    result.output = output;
    result.errors = read_text(files.path / "err");
    return result;
}

bool wait_for_text(const std::filesystem::path& path, const std::string& text) {
    const auto start = std::chrono::steady_clock::now();
    while (read_text(path).find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() - start > std::chrono::minutes(1)) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}
