#include "cli/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cinttypes>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <string>

#include "base/clock.h"
#include "base/files.h"
#include "base/program_paths.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "search/engine_settings.h"
#include "search/threads.h"
#include "shell/startup.h"

std::atomic<int32_t> stop_flag = 0;
std::atomic<bool> interrupted = false;

namespace {

int status_of_program = 0;

// What of the text goes into one line of the terminal that progress is shown on: a line that is wrapped could
// not be taken back.
std::string one_line(const std::string& text) {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return text;
    int columns = 0;
    size_t bytes = 0;
    for (; bytes < text.size(); ++bytes) {
        const bool begins_character = (text[bytes] & '\xc0') != '\x80';
        if (begins_character && ++columns == size.ws_col) break;
    }
    return text.substr(0, bytes);
}

void on_interrupt(int) {
    interrupted = true;
    stop_flag = 1;
    // A second interrupt ends the program at once.
    std::signal(SIGINT, SIG_DFL);
}

}  // namespace

int exit_status() { return status_of_program; }

void set_exit_status(int status) {
    if (status_of_program == 0) status_of_program = status;
}

void print_error(const char* format, va_list arguments) {
    show_progress("");
    std::fputs("tessarin-cli: ", stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

void print_line(const char* format, va_list arguments) {
    std::vprintf(format, arguments);
    std::putchar('\n');
    std::fflush(stdout);
}

void fail(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_error(format, arguments);
    va_end(arguments);
    set_exit_status(EXIT_BAD_INPUT);
}

bool start_console_engine() {
    StartupOptions options;
    options.saved_settings = false;
    begin_startup(options);
    switch (finish_startup()) {
        case ENGINE_STARTED:
            return true;
        case ENGINE_NO_WEIGHTS:
            fail("Cannot open %s for reading in %s", WEIGHTS_FILE, program_paths.program_folder.c_str());
            return false;
        default:
            fail("Cannot allocate hashtable");
            return false;
    }
}

bool read_position(const std::string& fen, Position& position) {
    int side = WHITE;
    if (fen_to_position(fen.c_str(), position, side) == 0) return true;
    fail("not a position: %.200s", fen.c_str());
    return false;
}

void catch_interrupt() { std::signal(SIGINT, on_interrupt); }

void set_search_threads(int threads) {
    engine_settings.search_threads = threads;
    threads_init(threads);
}

void show_progress(const std::string& text) {
    static const bool terminal = isatty(STDERR_FILENO) != 0;
    if (!terminal) return;
    std::fprintf(stderr, "\r\033[K%s", one_line(text).c_str());
    std::fflush(stderr);
}

bool check_weights(const std::string& path) {
    const int64_t size = file_size(path);
    if (size == static_cast<int64_t>(WEIGHTS_BYTES)) return true;
    if (size < 0)
        fail("cannot open %s for reading", path.c_str());
    else
        fail("%s is no weights file: %" PRId64 " bytes, not %zu", path.c_str(), size, WEIGHTS_BYTES);
    return false;
}

std::string duration_text(double seconds) {
    const long total = std::lround(seconds);
    char text[32];
    if (total >= 3600)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", total / 3600, total / 60 % 60, total % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld", total / 60, total % 60);
    return text;
}

std::string time_left_text(int64_t start_ms, double done, double left) {
    const double seconds = static_cast<double>(clock_ms() - start_ms) / 1000;
    return ", time left " + (done > 0 ? duration_text(seconds / done * left) : "-");
}
