#include "tests/dxp/flow_fixture.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "base/clock.h"
#include "control/program_flags.h"

namespace {

std::vector<std::string> lines;

// Bytes that wait in a socket: with TIOCOUTQ until the other side's system has them, with FIONREAD until they
// are read.
int waiting_bytes(int descriptor, unsigned long kind) {
    int count = 0;
    return ioctl(descriptor, kind, &count) == 0 ? count : 0;
}

// The program's receive thread has read what the peer has sent.
bool all_is_read(const Peer& peer) {
    const std::lock_guard lock(dxp_connection.mutex);
    const auto& link = dxp_connection.link;
    return !link || !link->open || !peer.socket.open() ||
           (waiting_bytes(peer.socket.get(), TIOCOUTQ) == 0 &&
            waiting_bytes(static_cast<int>(link->socket.get()), FIONREAD) == 0);
}

}  // namespace

const std::string ACCEPTED = game_acceptance_text("Tessarin");

void FlowTest::SetUp() {
    MatchTest::SetUp();
    lines.clear();
    ui.append_dxp_text = [](const char* text, bool received) {
        std::string line = (received ? "> " : "< ") + std::string(text);
        EXPECT_TRUE(line.ends_with('\n')) << line;
        if (line.ends_with('\n')) line.pop_back();
        lines.push_back(line);
    };
    program_flags.server_mode = false;
}

void FlowTest::TearDown() {
    program_flags.server_mode = false;
    terminate_connection_command();
    run_for(5);  // a thread that has just been woken begins
    MatchTest::TearDown();
}

void FlowTest::run(PeerScript steps) {
    std::atomic<bool> done{false};
    peer.complaint.clear();
    std::jthread thread([&] {
        run_script(peer, steps);
        done = true;
    });
    EXPECT_TRUE(run_until([&] { return done.load(); }, 2 * PEER_WAIT_MS));
    EXPECT_EQ(peer.complaint, "");
    thread.join();
    EXPECT_TRUE(run_until([&] { return all_is_read(peer); }));
    run_for(5);
}

void FlowTest::run_for(int milliseconds) {
    const int64_t end = clock_ms() + milliseconds;
    run_until([&] { return clock_ms() >= end; }, milliseconds + PEER_WAIT_MS);
}

void FlowTest::serve(PeerScript steps) {
    wait_for_connection_command();
    steps.insert(steps.begin(), connects_to(port()));
    run(std::move(steps));
}

void FlowTest::expect_ready() {
    EXPECT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
    EXPECT_TRUE(run_until(threads_rest));
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(dxp_connection_number(), 0);
    EXPECT_FALSE(search_thread.searching);
    EXPECT_EQ(dxp_menu_state(), DxpMenuState{});
}

std::vector<std::string> protocol_lines() { return lines; }

int count_lines(const std::string& line) {
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

std::string request_from_start(char colour) { return game_request_text("Peer", colour, "005", "075"); }

std::string request_of_position(char colour, const std::string& fen) {
    int side = WHITE;
    const Position position = position_from(fen, side);
    return game_request_text("Peer", colour, "005", "075",
                             std::string(side == WHITE ? "BW" : "BZ") + squares_text(position));
}
