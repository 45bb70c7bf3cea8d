// How long a move stays in the program once its search has ended: a peer in this process plays games against
// the network play and takes the time from the search thread's last word to the arrival of the move.
//
//   dxp_reply console|ticks [MOVES]
//
// With "console" the interface thread runs the loop of the console program, which the end of a search wakes;
// with "ticks" it finds out at its next tick.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "cli/game_console.h"
#include "cli/message_loop.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "dxp/game_flow.h"
#include "tests/dxp/scripted_player.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int USAGE_STATUS = 2;
constexpr int MOVES_A_GAME = 30;
constexpr const char* TIME_OF_GAME = "0.1";  // minutes, for the moves below: some 30 ms a move
constexpr const char* MOVES_OF_GAME = "200";

std::atomic<int64_t> ended_ns{0};
std::atomic<bool> done{false};
std::vector<double> milliseconds;

int64_t now_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
}

// By the search thread; the interface thread posts the picture once more when it has seen the end.
void note_end(SearchPicture picture) {
    int64_t none = 0;
    if (picture == PICTURE_GO) ended_ns.compare_exchange_strong(none, now_ns());
}

// The peer's turn: the program's move has just come.
int take_time(const PlayedGame& game, int moves) {
    const int64_t end = ended_ns.exchange(0);
    if (game.plies > 0 && end > 0) milliseconds.push_back(static_cast<double>(now_ns() - end) / 1e6);
    return game.plies * 7 % moves;
}

void play_games(int port, size_t wanted) {
    Peer peer;
    PlayerReport report;
    PlayerOptions options;
    options.choose = take_time;
    options.claim_at_ply = MOVES_A_GAME;
    if (!peer_connect(peer, port)) std::fprintf(stderr, "the program does not listen\n");
    const std::string request = game_request_text("Peer", 'W', TIME_OF_GAME, MOVES_OF_GAME);
    while (peer.socket.open() && peer.well() && milliseconds.size() < wanted) {
        ended_ns = 0;  // of the move behind which the last game ended
        initiate_game(peer, request, options, report);
    }
    if (!peer.well()) std::fprintf(stderr, "%s\n", peer.complaint.c_str());
    done = true;
}

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
        note_end(picture);
        wake_console_loop();
    };
    return screen;
}

void print_figures() {
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto part = [](double share) {
        return milliseconds[static_cast<size_t>(share * static_cast<double>(milliseconds.size() - 1))];
    };
    std::printf("%zu moves: median %.2f ms, 99%% %.2f ms, worst %.2f ms\n", milliseconds.size(), part(0.5),
                part(0.99), milliseconds.back());
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
    const std::jthread peer(play_games, port, std::max<size_t>(wanted, 1));
    for (int64_t next_tick_ms = 0; !done;) {
        if (console) {
            turn_console_loop();
        } else {
            run_posted_work();
            turn_ticking_loop(next_tick_ms);
        }
    }
    discard_search();
    if (milliseconds.empty()) return 1;
    print_figures();
    return 0;
}
