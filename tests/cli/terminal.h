// A terminal that a test sits before: what the program prints to it is read here, and lines are typed.
#pragma once

#include <string>

struct Terminal {
    int screen = -1;   // the side of whoever sits before it
    int program = -1;  // the program's side, kept open so that nothing is lost when the program ends
    std::string path;  // for redirections

    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // Types a line.
    void type(const std::string& line) const;

    // What has been printed since the last call.
    std::string read_printed() const;

    // Waits until the text has been printed. False after a minute.
    bool wait_for(const std::string& text) const;
};
