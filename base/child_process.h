// Another program, run as a child and spoken to by lines of text: what is written arrives at its standard
// input, what it prints is read here. Its standard error is this program's.
//
// A child belongs to its record and ends with it at the latest. A record is used by one thread at a time;
// different threads may start and use children at once.
#pragma once

#include <cstdint>
#include <span>
#include <string>

// The path of the running program itself, whatever has become of its file.
extern const char* const THIS_PROGRAM;

struct ChildProcess {
    int32_t pid = 0;  // 0: there is none
    int input = -1;   // writing end
    int output = -1;  // reading end
    std::string unread;

    ChildProcess() = default;
    ~ChildProcess();  // a child that still runs is killed
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
};

// Starts the program with the arguments, the first of which is its name. The record must have no child. From
// the first start on this program ignores broken pipes; the child does not. 0, or 1 if it could not be
// started, with the reason in errno.
int start_child(ChildProcess& child, const char* program, std::span<const std::string> arguments);

// Writes the line and a newline. 0, or 1 if the child no longer reads.
int write_line(ChildProcess& child, const std::string& line);

// Waits for the next line and returns it without its newline. 0, or 1 if the child has closed its output; a
// last line without a newline is dropped.
int read_line(ChildProcess& child, std::string& line);

// Ends the child's input and closes its output, so that what it still prints is lost and may end it; waits
// until it ends and returns its exit status, or 128 plus the number of the signal that ended it; -1 if there
// is no child.
int wait_for_child(ChildProcess& child);
