#include "tests/cli/terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

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

void Terminal::type(const std::string& line) const {
    const std::string keys = line + '\n';
    [[maybe_unused]] const ssize_t typed = write(screen, keys.data(), keys.size());
}

std::string Terminal::read_printed() const {
    std::string printed;
    char buffer[4096];
    for (ssize_t got = 0; (got = read(screen, buffer, sizeof buffer)) > 0;)
        printed.append(buffer, static_cast<size_t>(got));
    return printed;
}

bool Terminal::wait_for(const std::string& text) const {
    const auto start = std::chrono::steady_clock::now();
    for (std::string printed; printed.find(text) == std::string::npos; printed += read_printed()) {
        if (std::chrono::steady_clock::now() - start > std::chrono::minutes(1)) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}
