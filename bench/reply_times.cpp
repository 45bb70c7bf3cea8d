#include "bench/reply_times.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <vector>

#include "tests/dxp/scripted_player.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int MOVES_A_GAME = 30;
constexpr const char* TIME_OF_GAME = "0.1";  // minutes, for the moves below: some 30 ms a move
constexpr const char* MOVES_OF_GAME = "200";

std::atomic<int64_t> ended_ns{0};
std::atomic<bool> done{false};
std::vector<double> milliseconds;

int64_t now_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
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

}  // namespace

// The interface thread posts the picture once more when it has seen the end.
void note_search_end(SearchPicture picture) {
    int64_t none = 0;
    if (picture == PICTURE_GO) ended_ns.compare_exchange_strong(none, now_ns());
}

std::jthread start_timing_peer(int port, size_t moves) {
    return std::jthread(play_games, port, std::max<size_t>(moves, 1));
}

bool timing_is_done() { return done; }

int print_reply_times() {
    if (milliseconds.empty()) return 1;
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto part = [](double share) {
        return milliseconds[static_cast<size_t>(share * static_cast<double>(milliseconds.size() - 1))];
    };
    std::printf("%zu moves: median %.2f ms, 99%% %.2f ms, worst %.2f ms\n", milliseconds.size(), part(0.5),
                part(0.99), milliseconds.back());
    return 0;
}
