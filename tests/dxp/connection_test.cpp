// The connection: how it comes about and ends, what goes over it, and what is told of it.
#include "dxp/connection.h"

#include <netdb.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <thread>

#include "base/clock.h"
#include "base/log.h"
#include "control/program_flags.h"
#include "tests/dxp/flow_fixture.h"

namespace {

using namespace std::string_literals;

// Its number, where the system knows no name for it.
std::string name_of_this_machine() {
    addrinfo* found = nullptr;
    if (getaddrinfo("localhost", nullptr, nullptr, &found) != 0) return "127.0.0.1";
    freeaddrinfo(found);
    return "localhost";
}

class ConnectionTest : public FlowTest {
  protected:
    // The peer is connected and nothing was said.
    void connect_peer() {
        const int before = count_lines("< Connection established");
        serve({});
        ASSERT_TRUE(run_until([&] { return count_lines("< Connection established") > before; }));
    }
    static bool line_comes(const std::string& line) {
        return run_until([&] { return count_lines(line) > 0; });
    }
    // Nothing is taken out, and no further message fits in.
    static void wait_for_full_ring() {
        const DxpRing& ring = dxp_connection.link->ring;
        const int64_t end = clock_ms() + PEER_WAIT_MS;
        while ((ring.write_index + 1) % DXP_RING_SIZE != ring.read_index && clock_ms() < end)
            std::this_thread::yield();
        EXPECT_EQ((ring.write_index + 1) % DXP_RING_SIZE, ring.read_index);
    }
    static void expect_lost_once() {
        ASSERT_TRUE(run_until([] { return count_lines("< Connection lost") > 0; }));
        EXPECT_EQ(count_lines("< Connection lost"), 1);
        EXPECT_EQ(events_of("status").back(), "status DXP_CONNECTIONLOST");
        EXPECT_EQ(dxp_state.dxp_follower, 1);
        expect_ready();
    }
    void expect_server_serves() {
        serve({sends(request_from_start('Z')), hears(ACCEPTED), closes()});
        ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
    }
};

std::mutex log_mutex;  // the search and the receive thread log too
std::string logged;
void keep_log(const char* text) {
    const std::lock_guard lock(log_mutex);
    logged += text;
}
bool log_has(const char* text) {
    const std::lock_guard lock(log_mutex);
    return logged.find(text) != std::string::npos;
}

struct LogListener {
    LogListener() {
        logged.clear();
        log_listener = keep_log;
    }
    ~LogListener() { log_listener = nullptr; }
};

std::vector<std::string> lines_behind(int count) {
    const std::vector<std::string> lines = protocol_lines();
    return {lines.begin() + std::min<int>(count, static_cast<int>(lines.size())), lines.end()};
}

size_t open_handles() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

int boxes_with(const std::string& text) { return count_events("box " + text); }

}  // namespace

TEST_F(ConnectionTest, APeerThatComesIsTold) {
    connect_peer();
    EXPECT_EQ(protocol_lines(),
              (std::vector<std::string>{"< Listening for Dxp connections", "< Connection established"}));
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    EXPECT_EQ(count_events("status Connection established"), 1);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "until a game is asked for";
}

TEST_F(ConnectionTest, TheWaitingGoesOnUntilAPeerComes) {
    wait_for_connection_command();
    EXPECT_EQ(dxp_connection.connection_state, DXP_LISTENING);
    run_for(1300);  // beyond the first wait
    EXPECT_EQ(dxp_connection.connection_state, DXP_LISTENING);
    EXPECT_EQ(count_lines("< Listening for Dxp connections"), 1);
    run({connects_to(port())});
    EXPECT_TRUE(run_until([] { return count_lines("< Connection established") == 1; }));
}

// It is told, once, and tried until the other program goes.
TEST_F(ConnectionTest, APortThatIsTakenIsTold) {
    const LogListener listener;
    const std::string line = "< Cannot listen on port " + std::to_string(port());
    Peer other;
    ASSERT_EQ(peer_listen(other, port()), port());
    wait_for_connection_command();
    ASSERT_TRUE(line_comes(line));
    EXPECT_EQ(protocol_lines(), (std::vector<std::string>{"< Listening for Dxp connections", line}));
    EXPECT_TRUE(log_has(("cannot listen on port " + std::to_string(port())).c_str()));
    EXPECT_TRUE(dxp_connection.port_taken);
    run_for(300);  // beyond the second try
    EXPECT_EQ(count_lines(line), 1);
    other.listener.close();
    run({connects_to(port())});
    EXPECT_TRUE(run_until([] { return count_lines("< Connection established") == 1; }));
    EXPECT_FALSE(dxp_connection.port_taken);
}

TEST_F(ConnectionTest, TheWaitingCanBeEnded) {
    wait_for_connection_command();
    ASSERT_TRUE(line_comes("< Listening for Dxp connections"));
    terminate_connection_command();
    EXPECT_EQ(dxp_connection.connection_state, DXP_UNCONNECTED);
    EXPECT_TRUE(line_comes("< Listening terminated"));
    EXPECT_EQ(count_lines("< Connection lost"), 0);
    expect_ready();
    connect_peer();
}

TEST_F(ConnectionTest, NobodyWaitsTwice) {
    wait_for_connection_command();
    EXPECT_FALSE(dxp_menu_state().connect_enabled);
    wait_for_connection_command();
    make_connection_command("127.0.0.1");
    EXPECT_EQ(dxp_connection.connection_state, DXP_LISTENING);
    EXPECT_EQ(count_lines("< Attempting connection to 127.0.0.1"), 0);
    run({connects_to(port()), sends("K0")});
    EXPECT_TRUE(line_comes("> K0"));
    EXPECT_EQ(count_lines("< Listening for Dxp connections"), 1);
}

// A second peer finds nobody at the port.
TEST_F(ConnectionTest, ThereIsOneConnectionAtATime) {
    connect_peer();
    Peer second;
    EXPECT_FALSE(peer_connect(second, port(), 50));
    wait_for_connection_command();
    make_connection_command("127.0.0.1");
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    run({sends("K0")});
    EXPECT_TRUE(line_comes("> K0"));
}

TEST_F(ConnectionTest, MenusFollowTheStateAndTheMode) {
    EXPECT_EQ(dxp_menu_state(DXP_UNCONNECTED, NORMAL_MODE), (DxpMenuState{true, false, false, true}));
    EXPECT_EQ(dxp_menu_state(DXP_UNCONNECTED, DXP_MODE), (DxpMenuState{true, false, false, true}));
    EXPECT_EQ(dxp_menu_state(DXP_LISTENING, NORMAL_MODE), (DxpMenuState{false, true, false, false}));
    for (const int32_t mode : {NORMAL_MODE, TWO_PLAYERS_MODE, ANALYSIS_MODE, SETUP_MODE})
        EXPECT_EQ(dxp_menu_state(DXP_CONNECTED, mode), (DxpMenuState{false, true, true, false}));
    EXPECT_EQ(dxp_menu_state(DXP_CONNECTED, DXP_MODE), (DxpMenuState{false, true, false, false}));
}

TEST_F(ConnectionTest, MessagesInOnePieceAreTakenInTheirOrder) {
    connect_peer();
    run({sends_joined({"K1", "Chello", "K2"})});
    EXPECT_TRUE(line_comes("> K2"));
    EXPECT_EQ(lines_behind(2), (std::vector<std::string>{"> K1", "> Chello", "> K2"}));
}

TEST_F(ConnectionTest, AMessageInPiecesIsTakenWithItsNul) {
    static void (*usual)(int32_t type, int32_t number);
    static std::atomic<int> messages;
    usual = dxp_connection.post_event;
    messages = 0;
    dxp_connection.post_event = [](int32_t type, int32_t number) {
        messages += type != DXP_CONNECTIONLOST;
        usual(type, number);
    };
    connect_peer();
    run({sends_bytes("Cpie"), stays_silent(30), sends_bytes("ces"), stays_silent(30)});
    EXPECT_EQ(protocol_lines().size(), 2u);
    run({sends_bytes("\0"s)});
    EXPECT_TRUE(line_comes("> Cpieces"));
    EXPECT_EQ(protocol_lines().size(), 3u);
    EXPECT_EQ(messages, 1) << "posted once";
    dxp_connection.post_event = usual;
}

TEST_F(ConnectionTest, BytesMayComeOneByOne) {
    connect_peer();
    run({sends_in_pieces(request_from_start('Z') + "\0K3\0"s, 1, 2), hears(ACCEPTED)});
    EXPECT_TRUE(line_comes("> K3"));
    EXPECT_EQ(lines_behind(2),
              (std::vector<std::string>{"> " + request_from_start('Z'), "< " + ACCEPTED, "> K3"}));
    EXPECT_EQ(game.gui_mode, DXP_MODE);
}

TEST_F(ConnectionTest, ALoneNulIsNothing) {
    connect_peer();
    run({sends_bytes("\0\0K1\0\0\0\0K2\0\0"s)});
    EXPECT_TRUE(line_comes("> K2"));
    EXPECT_EQ(lines_behind(2), (std::vector<std::string>{"> K1", "> K2"}));
}

TEST_F(ConnectionTest, AnUnknownLetterEndsTheConnectionBehindWhatCameBefore) {
    const LogListener listener;
    connect_peer();
    run({sends_joined({"K1", "Xyz", "K2"}), sees_end()});
    expect_lost_once();
    EXPECT_EQ(count_lines("> K1"), 1);
    EXPECT_EQ(count_lines("> K2"), 0);
    EXPECT_TRUE(log_has("unknown type"));
    expect_server_serves();
}

TEST_F(ConnectionTest, ATextOf133BytesEndsTheConnection) {
    connect_peer();
    const std::string longest = "C" + std::string(131, 'c');
    run({sends(longest)});
    EXPECT_TRUE(line_comes("> " + longest));
    run({sends("K1"), sends(longest + "c"), sees_end()});
    expect_lost_once();
    EXPECT_EQ(count_lines("> K1"), 1);
    expect_server_serves();
}

TEST_F(ConnectionTest, BytesWithoutAnEndEndTheConnection) {
    const LogListener listener;
    connect_peer();
    run({sends_bytes(std::string(132, 'x')), stays_silent(50)});
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    run({sends_bytes("x"), sees_end()});
    expect_lost_once();
    EXPECT_TRUE(log_has("without an end"));
    expect_server_serves();
}

TEST_F(ConnectionTest, EveryWayToGoIsALoss) {
    for (const PeerStep& going : {closes(), resets(), half_closes()}) {
        connect_peer();
        run({going});
        ASSERT_TRUE(run_until([] { return count_lines("< Connection lost") > 0; }));
        expect_ready();
        FlowTest::TearDown();
        FlowTest::SetUp();
    }
}

TEST_F(ConnectionTest, AnEndOnThisSideIsNoLoss) {
    connect_peer();
    terminate_connection_command();
    EXPECT_EQ(dxp_connection.connection_state, DXP_UNCONNECTED);
    run({sees_end()});
    expect_ready();
    EXPECT_EQ(count_lines("< Connection lost"), 0);
    EXPECT_EQ(count_events("status DXP_CONNECTIONLOST"), 0);
    terminate_connection_command();
    dxp_disconnect();
    connect_peer();
}

// What was posted before the end tells of nothing that is there any more.
TEST_F(ConnectionTest, EventsOfAnEndedConnectionAreDropped) {
    connect_peer();
    ASSERT_TRUE(peer_send_joined(peer, {request_from_start('Z'), "K7", "X"}));
    EXPECT_TRUE(peer_sees_end(peer));
    terminate_connection_command();
    connect_peer();
    EXPECT_EQ(count_lines("> K7"), 0);
    EXPECT_EQ(count_lines("< Connection lost"), 0);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    run({sends("K8")});
    EXPECT_TRUE(line_comes("> K8"));
}

TEST_F(ConnectionTest, AMatchThatCameBackKeepsItsScoreIfAFileProvesIt) {
    dxp_state.match_games = 7;
    dxp_state.match_wins = 3;
    static int32_t games_on_file = 0;
    match_hooks.read_match_stats = [](MatchCounters&) { return games_on_file; };
    games_on_file = 7;
    connect_peer();
    EXPECT_EQ(dxp_state.match_games, 7);
    EXPECT_EQ(dxp_state.match_wins, 3);
    terminate_connection_command();
    games_on_file = 0;
    serve({});
    EXPECT_TRUE(run_until([] { return count_lines("< Connection established") == 2; }));
    EXPECT_EQ(dxp_state.match_games, 0);
    EXPECT_EQ(dxp_state.match_wins, 0);
}

TEST_F(ConnectionTest, ConnectingToAHostIsTold) {
    ASSERT_EQ(peer_listen(peer, port()), port());
    const std::string host = name_of_this_machine();
    make_connection_command(host.c_str());
    EXPECT_EQ(setting_text(settings.dxp_host), host);
    EXPECT_EQ(protocol_lines(),
              (std::vector<std::string>{"< Attempting connection to " + host, "< Connected"}));
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    run({accepts(), sends("K1")});
    EXPECT_TRUE(line_comes("> K1"));
    run({closes()});
    expect_lost_once();
}

TEST_F(ConnectionTest, AFailedConnectionIsTold) {
    set_gui_mode(TWO_PLAYERS_MODE);
    for (const char* const host : {"127.0.0.1", "no such host", ""}) {
        const int before = boxes_with("Unsuccessful: Cannot connect to remote host");
        settings.dxp_host[0] = '\0';
        store_setting_text(settings.dxp_host, host);
        EXPECT_EQ(connect_to_host(), 1) << host;
        EXPECT_EQ(boxes_with("Unsuccessful: Cannot connect to remote host"), before + 1);
        EXPECT_EQ(protocol_lines().back(), "< Connection attempt failed");
        expect_ready();
    }
}

TEST_F(ConnectionTest, ALongHostIsCut) {
    make_connection_command(std::string(60, 'h').c_str());
    EXPECT_EQ(setting_text(settings.dxp_host), std::string(49, 'h'));
}

TEST_F(ConnectionTest, AServerListensByItself) {
    program_flags.server_mode = true;
    dxp_connection.connection_event.signal();
    ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_LISTENING; }));
    for (int i = 1; i <= 2; ++i) {
        run({connects_to(port()), sends("K1"), closes()});
        ASSERT_TRUE(run_until([&] { return count_lines("< Connection lost") == i; }));
        EXPECT_EQ(dxp_connection.connection_state, DXP_LISTENING) << "at once";
    }
    terminate_connection_command();
    ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_LISTENING; }))
        << "also when the user ended it";
    run({connects_to(port()), sends(request_from_start('Z')), hears(ACCEPTED)});
}

// It does not take the connection thread to find that out, which is held here until the state has been seen.
TEST_F(ConnectionTest, AServerListensAtOnceBehindALoss) {
    static void (*usual)(void (*work)(int32_t), int32_t argument);
    static std::atomic<bool> hold_next;
    static Event go_on;
    usual = ui.post;
    ui.post = [](void (*work)(int32_t), int32_t argument) {
        usual(work, argument);
        if (hold_next.exchange(false)) go_on.wait();
    };
    program_flags.server_mode = true;
    dxp_connection.connection_event.signal();
    ASSERT_TRUE(line_comes("< Listening for Dxp connections"));
    hold_next = true;
    run({connects_to(port()), closes()});
    EXPECT_TRUE(line_comes("< Connection lost"));
    EXPECT_EQ(dxp_connection.connection_state, DXP_LISTENING);
    EXPECT_FALSE(dxp_menu_state().connect_enabled);
    go_on.signal();
    EXPECT_TRUE(run_until([] { return count_lines("< Listening for Dxp connections") == 2; }));
}

TEST_F(ConnectionTest, WithoutServerModeNobodyListens) {
    connect_peer();
    run({closes()});
    expect_lost_once();
    run_for(100);
    EXPECT_EQ(dxp_connection.connection_state, DXP_UNCONNECTED);
    EXPECT_EQ(count_lines("< Listening for Dxp connections"), 1);
}

TEST_F(ConnectionTest, WithoutAThreadThereIsNoConnection) {
    const auto usual = dxp_connection.make_thread;
    dxp_connection.make_thread = [](void (*)(std::shared_ptr<DxpLink>), std::shared_ptr<DxpLink>) {
        return false;
    };
    ASSERT_EQ(peer_listen(peer, port()), port());
    EXPECT_EQ(connect_to_host(), 1);
    dxp_connection.make_thread = usual;
    EXPECT_EQ(protocol_lines().back(), "< Connection attempt failed");
    expect_ready();
    run({accepts(), sees_end()});
    connect_peer();
}

TEST_F(ConnectionTest, AMissingConnectionThreadIsTold) {
    dxp_connection.connection_thread_runs = false;
    dxp_connection.make_connection_thread = [](void (*)()) { return false; };
    start_connection_thread();
    EXPECT_EQ(boxes_with("Error: Cannot create connection thread"), 1);
    EXPECT_FALSE(dxp_connection.connection_thread_runs);
    dxp_connection.make_connection_thread = nullptr;
    dxp_connection.connection_thread_runs = true;
}

TEST_F(ConnectionTest, SendingWithoutAConnectionDoesNothing) {
    DxpMessage message;
    message.type = DXP_BACKACC;
    char text[DXP_TEXT_SIZE] = "";
    EXPECT_EQ(dxp_send_message(message, text), 1);
    EXPECT_STREQ(text, "K0") << "can be shown all the same";
    message.type = DXP_MOVE;
    dxp_get_message(message, text);
    EXPECT_EQ(message.type, DXP_NO_MESSAGE);
    EXPECT_STREQ(text, "");
}

// The sending side may be the first to find the connection lost; either tells, and only one of them.
TEST_F(ConnectionTest, ALossIsToldOnceWhoeverFindsIt) {
    connect_peer();
    peer_reset(peer);
    DxpMessage message;
    message.type = DXP_BACKACC;
    char text[DXP_TEXT_SIZE];
    int failed = 0;
    for (int i = 0; i < 1000 && !failed; ++i) failed = dxp_send_message(message, text);
    EXPECT_EQ(failed, 1);
    expect_lost_once();
}

TEST_F(ConnectionTest, ALossIsPostedOnceAndAnEndOnThisSideNever) {
    static void (*usual)(int32_t type, int32_t number);
    static std::atomic<int> losses;
    usual = dxp_connection.post_event;
    losses = 0;
    dxp_connection.post_event = [](int32_t type, int32_t number) {
        losses += type == DXP_CONNECTIONLOST;
        usual(type, number);
    };
    connect_peer();
    terminate_connection_command();
    expect_ready();
    EXPECT_EQ(losses, 0);
    connect_peer();
    peer_reset(peer);
    DxpMessage message;
    message.type = DXP_BACKACC;
    char text[DXP_TEXT_SIZE];
    while (dxp_send_message(message, text) == 0) continue;
    expect_lost_once();
    EXPECT_EQ(losses, 1);
    dxp_connection.post_event = usual;
}

// The interface does not stand still for a peer who reads nothing.
TEST_F(ConnectionTest, APeerWhoTakesNothingIsLostBehindTheLimit) {
    EXPECT_EQ(dxp_connection.send_ms, 10000);
    dxp_connection.send_ms = 1200;
    connect_peer();
    dxp_connection.send_ms = DXP_SEND_MS;
    DxpMessage message;
    message.type = DXP_CHAT;
    std::snprintf(message.chat.text, sizeof message.chat.text, "%s", std::string(126, 'c').c_str());
    char text[DXP_TEXT_SIZE];
    int64_t begin = 0;
    do begin = clock_ms();
    while (dxp_send_message(message, text) == 0);
    EXPECT_GE(clock_ms() - begin, 1100) << "it was given its time";
    expect_lost_once();
    expect_server_serves();
}

// While the user reads of an error nothing is taken out, and more comes in than the ring holds: the rest
// waits.
TEST_F(ConnectionTest, AFullRingHoldsThePeerBackAndLosesNothing) {
    connect_peer();
    run({sends(request_from_start('Z')), hears(ACCEPTED)});
    in_message_box = [&] {
        in_message_box = nullptr;
        for (int i = 0; i < 1000; ++i) ASSERT_TRUE(peer_send(peer, "Cwords"));
        wait_for_full_ring();
    };
    ASSERT_TRUE(peer_send(peer, move_message_text(1, 50)));
    EXPECT_TRUE(run_until([] { return count_lines("> Cwords") == 1000; }));
    EXPECT_EQ(game.gui_mode, DXP_MODE) << "the game goes on";
    run({closes()});
    expect_lost_once();
    expect_server_serves();
}

// Also in a box, whose loop is where the user gives up.
TEST_F(ConnectionTest, AnEndOnThisSideEndsTheWaitForRoom) {
    const LogListener listener;
    connect_peer();
    run({sends(request_from_start('Z')), hears(ACCEPTED)});
    bool ended = false;
    in_message_box = [&] {
        in_message_box = nullptr;
        for (int i = 0; i < 1000; ++i) ASSERT_TRUE(peer_send(peer, "Cwords"));
        wait_for_full_ring();
        terminate_connection_command();
        const int64_t end = clock_ms() + PEER_WAIT_MS;
        while (dxp_connection.receive_threads != 0 && clock_ms() < end) std::this_thread::yield();
        EXPECT_EQ(dxp_connection.receive_threads, 0);
        EXPECT_TRUE(peer_sees_end(peer));
        ended = true;
    };
    ASSERT_TRUE(peer_send(peer, move_message_text(1, 50)));
    ASSERT_TRUE(run_until([&] { return ended; }));
    expect_ready();
    EXPECT_EQ(count_lines("> Cwords"), 0);
    EXPECT_EQ(count_lines("< Connection lost"), 0);
    EXPECT_FALSE(log_has("connection closed")) << "the peer did nothing wrong";
    expect_server_serves();
}

// More than the ring holds, in one piece, and the interface has other things to do.
TEST_F(ConnectionTest, ABurstOfMessagesIsTakenWhole) {
    connect_peer();
    const std::string chat = "C" + std::string(116, 'c');
    ASSERT_TRUE(peer_send_joined(peer, std::vector<std::string>(30, chat)));
    wait_for_full_ring();
    std::vector<std::string> many;
    for (int i = 0; i < 1000; ++i) many.push_back(i % 3 ? "K0" : "Chello");
    run({[&](Peer& p) { peer_send_joined(p, many); }});
    EXPECT_TRUE(run_until([] { return count_lines("> Chello") + count_lines("> K0") == 1000; }));
    EXPECT_EQ(count_lines("> " + chat), 30);
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    terminate_connection_command();
    expect_ready();
    expect_server_serves();
}

TEST_F(ConnectionTest, ConnectionsLeaveNothingBehind) {
    size_t handles = 0;
    for (int i = 0; i < 40; ++i) {
        ASSERT_EQ(peer_listen(peer, port()), port());
        ASSERT_EQ(connect_to_host(), 0);
        run({accepts(), sends(i % 2 ? "K0" : "unknown")});
        if (i % 4 < 2) terminate_connection_command();
        peer_close(peer);
        ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
        expect_ready();
        const size_t open_now = open_handles();
        if (i == 0) handles = open_now;
        EXPECT_EQ(open_now, handles);
    }
}

TEST_F(ConnectionTest, PortsAreNumbers) {
    const std::string port_text = dxp_connection.port_text;
    for (const char* const text : {"", "0", "65536", "-1", "12x", " 12", "99999999999", "port"})
        EXPECT_FALSE(choose_dxp_port(text)) << text;
    EXPECT_FALSE(choose_dxp_port(nullptr));
    EXPECT_EQ(dxp_connection.port_text, port_text);
    EXPECT_TRUE(choose_dxp_port("1"));
    EXPECT_STREQ(dxp_connection.port_text, "1");
    EXPECT_TRUE(choose_dxp_port("65535"));
    EXPECT_STREQ(dxp_connection.port_text, "65535");
    EXPECT_STREQ(DxpConnection().port_text, "27531");
    EXPECT_STREQ(DXP_PORT, "27531");
    EXPECT_TRUE(choose_dxp_port(port_text.c_str()));
}
