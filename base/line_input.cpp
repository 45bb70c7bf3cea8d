#include "base/line_input.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

// Takes the first line off what was read. False if there is none.
bool take_line(LineInput& input, std::string& line) {
    const size_t newline = input.unread.find('\n');
    if (newline == std::string::npos && input.unread.size() < LINE_INPUT_LIMIT &&
        (!input.ended || input.unread.empty()))
        return false;
    const size_t length = std::min({newline, LINE_INPUT_LIMIT, input.unread.size()});
    line = input.unread.substr(0, length);
    input.unread.erase(0, length == newline ? length + 1 : length);
    if (line.ends_with('\r')) line.pop_back();
    return true;
}

}  // namespace

LineStatus read_input_line(LineInput& input, int milliseconds, std::string& line) {
    if (take_line(input, line)) return LINE_READ;
    if (input.ended) return LINE_ENDED;
    pollfd waited{input.descriptor, POLLIN, 0};
    if (poll(&waited, 1, milliseconds) <= 0) return LINE_WAITING;
    char bytes[4096];
    const ssize_t got = read(input.descriptor, bytes, sizeof bytes);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return LINE_WAITING;
    if (got <= 0)
        input.ended = true;
    else
        input.unread.append(bytes, static_cast<size_t>(got));
    if (take_line(input, line)) return LINE_READ;
    return input.ended ? LINE_ENDED : LINE_WAITING;
}

bool input_is_terminal() { return isatty(STDIN_FILENO) != 0; }
