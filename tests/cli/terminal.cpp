#include "tests/cli/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

Terminal::Terminal() : screen(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char name[64];
    if (screen < 0 || grantpt(screen) != 0 || unlockpt(screen) != 0 ||
        ptsname_r(screen, name, sizeof name) != 0)
        return;
    path = name;
    program = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
}

Terminal::~Terminal() {
    close(program);
    close(screen);
}

void Terminal::set_width(int columns) const {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = 24;
    ioctl(screen, TIOCSWINSZ, &size);
}

void Terminal::type(const std::string& line) const {
    const std::string keys = line + '\n';
    [[maybe_unused]] const ssize_t typed = write(screen, keys.data(), keys.size());
}

void Terminal::read_more() {
    char buffer[4096];
    for (ssize_t got = 0; (got = read(screen, buffer, sizeof buffer)) > 0;)
        unread.append(buffer, static_cast<size_t>(got));
}

bool Terminal::wait_for(const std::string& text) {
    const auto start = std::chrono::steady_clock::now();
    for (read_more();; read_more()) {
        if (const size_t at = unread.find(text); at != std::string::npos) {
            unread.erase(0, at + text.size());
            return true;
        }
        if (std::chrono::steady_clock::now() - start > std::chrono::minutes(1)) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

std::string Terminal::read_printed() {
    read_more();
    return std::exchange(unread, "");
}
