// A shell command run to its end, and the words it is made of.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct CommandResult {
    int status = -1;     // of its exit; -1 if a signal ended it
    std::string output;  // standard output and error
};

// One word of a command, whatever it holds: the folders of users have blanks in their names.
inline std::string quoted(const std::string& word) {
    std::string text = "'";
    for (const char letter : word)
        if (letter == '\'')
            text += "'\\''";
        else
            text += letter;
    return text + '\'';
}

inline CommandResult run_command(const std::string& command) {
    CommandResult result;
    FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) return result;
    char buffer[4096];
    for (size_t bytes; (bytes = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        result.output.append(buffer, bytes);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}
