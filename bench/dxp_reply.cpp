// How long a move stays in the program once its search has ended, as bench/reply_times.h has it.
//
//   dxp_reply console|ticks [MOVES]
//
// With "console" the interface thread runs the loop of the console program, which the end of a search wakes;
// with "ticks" it finds out at its next tick.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "bench/reply_times.h"
#include "cli/game_console.h"
#include "cli/message_loop.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "dxp/game_flow.h"
#include "tests/dxp/scripted_peer.h"

namespace {

constexpr int USAGE_STATUS = 2;

// Work that is posted runs at once; the end of a search is seen by the tick.
void turn_ticking_loop(int64_t& next_tick_ms) {
    if (clock_ms() >= next_tick_ms) {
        timer_tick();
        next_tick_ms = clock_ms() + TICK_MS;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
}

struct PostedWork {
    void (*work)(int32_t argument);
    int32_t argument;
};
std::mutex post_mutex;
std::vector<PostedWork> posted;

void post_plain_work(void (*work)(int32_t argument), int32_t argument) {
    const std::lock_guard lock(post_mutex);
    posted.push_back({work, argument});
}

void run_posted_work() {
    std::vector<PostedWork> taken;
    {
        const std::lock_guard lock(post_mutex);
        taken.swap(posted);
    }
    for (const PostedWork& work : taken) work.work(work.argument);
}

Ui make_screen(bool console) {
    Ui screen = no_ui();
    screen.post = console ? post_console_work : post_plain_work;
    screen.post_search_picture = [](SearchPicture picture) {
        note_search_end(picture);
        wake_console_loop();
    };
    return screen;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string kind = argc > 1 ? argv[1] : "";
    const bool console = kind == "console";
    if (argc > 3 || (!console && kind != "ticks")) {
        std::fprintf(stderr, "usage: dxp_reply console|ticks [MOVES]\n");
        return USAGE_STATUS;
    }
    const size_t wanted = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 300;
    const int port = free_port();
    setenv(DXP_PORT_VARIABLE, std::to_string(port).c_str(), 1);
    if (!start_game_console(make_screen(console))) return 1;
    settings.pondering_on = 0;
    start_dxp();
    wait_for_connection_command();
    const std::jthread peer = start_timing_peer(port, wanted);
    for (int64_t next_tick_ms = 0; !timing_is_done();) {
        if (console) {
            turn_console_loop();
        } else {
            run_posted_work();
            turn_ticking_loop(next_tick_ms);
        }
    }
    discard_search();
    return print_reply_times();
}
