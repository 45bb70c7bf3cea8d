// Games over the network in the whole desktop program, with a scripted peer at the other end: the commands
// and when they can be given, the pane, the title.
#include <QStatusBar>

#include <filesystem>

#include "base/instance.h"
#include "control/program_flags.h"
#include "dxp/game_flow.h"
#include "dxp/match.h"
#include "shell/qt/menu_state.h"
#include "tests/dxp/scripted_peer.h"
#include "tests/dxp/scripted_player.h"
#include "tests/gui/desktop_fixture.h"
#include "tests/gui/dialog_user.h"

namespace {

constexpr int TIME_ID = 1002;
constexpr int MOVES_ID = 1001;
constexpr int HOST_ID = 1000;

class Network : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        setenv(DXP_PORT_VARIABLE, std::to_string(port()).c_str(), 1);
    }
    // One for the whole program, as the connection thread is.
    static int port() {
        static const int chosen = free_port();
        return chosen;
    }
    static bool state_is(int32_t state) { return dxp_connection.connection_state == state; }

    // Connect and wait, terminate, match.
    static std::string enabled_commands() {
        std::string text;
        for (const int32_t id :
             {COMMAND_DXP_CONNECT, COMMAND_DXP_WAIT, COMMAND_DXP_TERMINATE, COMMAND_START_MATCH})
            text += action(id).isEnabled() ? '1' : '0';
        return text;
    }
    static void connect_by_dialog() {
        use_dialog([] { action(COMMAND_DXP_CONNECT).trigger(); },
                   [](QDialog& dialog) {
                       type(dialog, HOST_ID, "127.0.0.1");
                       click(dialog, OK_ID);
                   });
    }
    static void start_match_by_dialog(const char* minutes) {
        use_dialog([] { action(COMMAND_START_MATCH).trigger(); },
                   [minutes](QDialog& dialog) {
                       type(dialog, TIME_ID, minutes);
                       type(dialog, MOVES_ID, "50");
                       click(dialog, OK_ID);
                   });
    }
    static std::string title() { return main_window->windowTitle().toStdString(); }
};

}  // namespace

TEST_F(Network, CommandsFollowTheConnection) {
    open_small();
    EXPECT_EQ(enabled_commands(), "1100");
    action(COMMAND_DXP_WAIT).trigger();
    settle();
    EXPECT_EQ(enabled_commands(), "0010") << "listening";
    ASSERT_TRUE(
        wait_until([] { return pane_shows(DXP_WINDOW).find("Listening for Dxp") != std::string::npos; }));
    action(COMMAND_DXP_TERMINATE).trigger();
    settle();
    EXPECT_EQ(enabled_commands(), "1100");
    ASSERT_TRUE(wait_until([] { return !dxp_connection.waits_for_peer; }));
    settle();
    EXPECT_NE(pane_shows(DXP_WINDOW).find("Listening terminated"), std::string::npos);

    action(COMMAND_DXP_WAIT).trigger();
    Peer peer;
    ASSERT_TRUE(peer_connect(peer, port()));
    ASSERT_TRUE(wait_until([] { return enabled_commands() == "0011"; })) << "connected and idle";
    EXPECT_NE(pane_shows(DXP_WINDOW).find("Connection established"), std::string::npos);
    peer_close(peer);
    ASSERT_TRUE(wait_until([] { return enabled_commands() == "1100"; }));
    EXPECT_NE(pane_shows(DXP_WINDOW).find("Connection lost"), std::string::npos);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(Network, AMatchIsForThePeerThatItWasChosenFor) {
    open_small();
    program_flags.server_mode = true;
    action(COMMAND_DXP_WAIT).trigger();
    Peer peer, other;
    ASSERT_TRUE(peer_connect(peer, port()));
    ASSERT_TRUE(wait_until([] { return enabled_commands() == "0011"; }));
    use_dialog([] { action(COMMAND_START_MATCH).trigger(); },
               [&](QDialog& dialog) {
                   peer_close(peer);
                   ASSERT_TRUE(wait_until([] { return state_is(DXP_LISTENING); }));
                   ASSERT_TRUE(peer_connect(other, port()));
                   ASSERT_TRUE(wait_until([] { return state_is(DXP_CONNECTED); }));
                   click(dialog, OK_ID);
               });
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    program_flags.server_mode = false;
    action(COMMAND_DXP_TERMINATE).trigger();
}

TEST_F(Network, AHostThatIsNotThereIsTold) {
    open_small();
    connect_by_dialog();
    settle();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Cannot connect to remote host");
    EXPECT_EQ(boxes[0].title, "Unsuccessful");
    EXPECT_EQ(enabled_commands(), "1100");
    EXPECT_NE(pane_shows(DXP_WINDOW).find("Attempting connection to 127.0.0.1\nConnection attempt failed"),
              std::string::npos)
        << pane_shows(DXP_WINDOW);
}

// A match is started, followed and broken off.
TEST_F(Network, AMatchIsPlayedInTheWindow) {
    open_small();
    settings.pondering_on = 0;
    Peer peer;
    PlayerReport report;
    PlayerOptions options;
    options.claim_at_ply = 4;
    options.claim = '1';
    ASSERT_EQ(peer_listen(peer, port()), port());
    std::jthread thread([&] {
        if (peer_accept(peer)) follow_games(peer, options, report);
    });
    connect_by_dialog();
    ASSERT_TRUE(wait_until([] { return enabled_commands() == "0011"; }));
    start_match_by_dialog("0.1");
    EXPECT_EQ(enabled_commands(), "0010") << "one match at a time";
    ASSERT_TRUE(wait_until([] { return dxp_state.match_games >= 3; }));
    EXPECT_EQ(title(), program_paths.short_name + " vs Scripted Peer:  " +
                           std::to_string(dxp_state.match_wins) + " wins, 0 losses, 0 draws, 0 unknowns");
    EXPECT_NE(pane_shows(DXP_WINDOW).find("E10"), std::string::npos) << "the protocol shows the messages";
    EXPECT_NE(pane_shows(STATUS_WINDOW).find("Dxp Initiator"), std::string::npos);
    // The board is no one's to play on, and no other game can begin.
    EXPECT_FALSE(user_may_move());
    const int32_t games = dxp_state.match_games;
    action(COMMAND_NEW_GAME).trigger();
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    action(COMMAND_DXP_TERMINATE).trigger();
    settle();
    EXPECT_EQ(enabled_commands(), "1100");
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(title(), program_paths.window_title);
    thread.join();
    EXPECT_EQ(peer.complaint, "");
    EXPECT_GE(dxp_state.match_games, games);
    EXPECT_EQ(pane_shows(DXP_WINDOW).find("Connection lost"), std::string::npos);
    const std::string stats = content_of(data_folder() + "dxpstats.txt");
    EXPECT_TRUE(stats.starts_with("Tessarin 1.60b vs Scripted Peer:  ")) << stats;
}

TEST_F(Network, TheSecondCopyHasItsNumberInItsTitles) {
    std::filesystem::create_directories(data_folder());
    const InstanceLock first = claim_instance(data_folder(), "Tessarin International");
    ASSERT_TRUE(first.held());
    open_small();
    EXPECT_EQ(title(), "Tessarin International(x64)[1] 1.60b");
    action(COMMAND_DXP_WAIT).trigger();
    Peer peer;
    ASSERT_TRUE(peer_connect(peer, port()));
    ASSERT_TRUE(peer_send(peer, game_request_text("Scripted Peer", 'Z', "120", "050")));
    EXPECT_TRUE(wait_until([] {
        return title() == "Tessarin[1] 1.60b vs Scripted Peer:  0 wins, 0 losses, 0 draws, 0 unknowns";
    })) << title();
    action(COMMAND_DXP_TERMINATE).trigger();
    EXPECT_EQ(title(), "Tessarin International(x64)[1] 1.60b");
}

TEST_F(Network, TheProgramClosesInTheMiddleOfAMatch) {
    open_small();
    action(COMMAND_DXP_WAIT).trigger();
    Peer peer;
    ASSERT_TRUE(peer_connect(peer, port()));
    ASSERT_TRUE(peer_send(peer, game_request_text("Scripted Peer", 'W', "120", "050")));
    ASSERT_TRUE(wait_until([] { return real_search_runs(); }));
    EXPECT_NE(pane_shows(DXP_WINDOW).find("R01Scripted Peer"), std::string::npos);
    EXPECT_TRUE(close_desktop());
    EXPECT_TRUE(peer_sees_end(peer)) << "the other side is told";
}

TEST_F(Network, TheProgramClosesWhileItListens) {
    open_small();
    action(COMMAND_DXP_WAIT).trigger();
    ASSERT_TRUE(wait_until([] { return dxp_connection.waits_for_peer.load(); }));
    EXPECT_TRUE(close_desktop());
    EXPECT_FALSE(dxp_connection.waits_for_peer);
}

// What wakes a server to listen again is also how the waiting ends.
TEST_F(Network, AServerThatClosesListensNoMore) {
    open_desktop(true);
    settings.hash_mb = SMALL_HASH_MB;
    ASSERT_EQ(start_desktop_engine(), 0);
    dxp_connection.connection_event.signal();
    ASSERT_TRUE(wait_until([] { return dxp_connection.waits_for_peer.load(); }));
    EXPECT_TRUE(close_desktop());
    EXPECT_FALSE(dxp_connection.waits_for_peer);
    EXPECT_EQ(dxp_connection.connection_state, DXP_UNCONNECTED);
}

// Started as a server the program listens at once, and again when a peer has gone.
TEST_F(Network, AServerListensAgainAndAgain) {
    open_desktop(true);
    settings.hash_mb = SMALL_HASH_MB;
    ASSERT_EQ(start_desktop_engine(), 0);
    // The thread of the test before is still there, and wakes as a new one would.
    dxp_connection.connection_event.signal();
    for (int i = 0; i < 3; ++i) {
        Peer peer;
        ASSERT_TRUE(wait_until([&] { return peer_connect(peer, port(), 10); }));
        ASSERT_TRUE(wait_until([] { return state_is(DXP_CONNECTED); }));
        ASSERT_TRUE(wait_until([] { return enabled_commands() == "0011"; })) << i;
        peer_close(peer);
        ASSERT_TRUE(wait_until([] { return state_is(DXP_LISTENING); })) << i;
    }
    EXPECT_TRUE(boxes.empty());
}
