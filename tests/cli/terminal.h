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

    // It is so many columns wide; before that its width is not known.
    void set_width(int columns) const;

    // Types a line.
    void type(const std::string& line) const;

    // Waits until the text has been printed, and goes on reading behind it. False after a minute.
    bool wait_for(const std::string& text);

    // What has been printed since.
    std::string read_printed();

  private:
    void read_more();

    std::string unread;
};
