// Playing over the network: the user connects to another program, has a match with it, watches, and breaks it
// off. The other program is a scripted peer.
#include <QRegularExpression>

#include "dxp/connection.h"
#include "shell/menu.h"
#include "tests/dxp/scripted_peer.h"
#include "tests/dxp/scripted_player.h"
#include "tests/gui/story_steps.h"

namespace {

// The peer's own thread tells how far it is by these.
struct Opponent {
    Peer peer;
    PlayerReport report;
    std::atomic<int> moves{0};
    std::jthread thread;
};

void follow(Opponent& opponent) {
    PlayerOptions options;
    options.claim_at_ply = 12;
    options.claim = '2';
    options.choose = [](const PlayedGame& game, int moves) { return game.plies * 7 % moves; };
    options.before_send = [&opponent](Peer&, const PlayedGame&) { return ++opponent.moves > 0; };
    opponent.thread = std::jthread([&opponent, options] {
        if (peer_accept(opponent.peer)) follow_games(opponent.peer, options, opponent.report);
    });
}

}  // namespace

TEST_F(Story, AMatchIsStartedWatchedAndBrokenOff) {
    const int port = free_port();
    Opponent opponent;
    ASSERT_EQ(peer_listen(opponent.peer, port), port);
    follow(opponent);
    Desk desk;
    desk.extra_environment << QStringLiteral("%1=%2").arg(QLatin1String(DXP_PORT_VARIABLE)).arg(port);
    ASSERT_TRUE(run(desk));
    const QString usual_title = title_of(desk, desk.window);

    ASSERT_TRUE(choose(desk, COMMAND_DXP_CONNECT));
    const QString host = wait_for_window(desk, QStringLiteral("Make Connection"));
    ASSERT_FALSE(host.isEmpty());
    take_keyboard(desk, host);
    press_here(desk, QStringLiteral("Return"));
    ASSERT_TRUE(wait_until_closed(desk, host));

    ASSERT_TRUE(choose(desk, COMMAND_START_MATCH));
    const QString match = wait_for_window(desk, QStringLiteral("Start DamExchange match"));
    ASSERT_FALSE(match.isEmpty());
    take_keyboard(desk, match);
    type_here(desk, QStringLiteral("0.2"));
    press_here(desk, QStringLiteral("Tab"));
    type_here(desk, QStringLiteral("60"));
    press_here(desk, QStringLiteral("Return"));
    ASSERT_TRUE(wait_until_closed(desk, match));

    ASSERT_TRUE(wait_until([&] { return opponent.moves > 3; }));
    // Games end; the title counts them.
    const auto title_counts = [&](const char* draws) {
        const QRegularExpression title(
            QStringLiteral("^Tessarin 1\\.60b vs Scripted Peer:  0 wins, 0 losses, %1 draws, 0 unknowns$")
                .arg(QLatin1String(draws)));
        return wait_until([&] { return title.match(title_of(desk, desk.window)).hasMatch(); }, 2 * PATIENCE);
    };
    ASSERT_TRUE(title_counts("\\d+")) << title_of(desk, desk.window).toStdString();
    ASSERT_TRUE(title_counts("([2-9]|\\d\\d+)")) << title_of(desk, desk.window).toStdString();

    ASSERT_TRUE(choose(desk, COMMAND_DXP_TERMINATE));
    EXPECT_TRUE(wait_until([&] { return title_of(desk, desk.window) == usual_title; }));
    opponent.thread.join();
    EXPECT_EQ(opponent.peer.complaint, "");
    const QString games = desk.data_folder() + QStringLiteral("dxpgames.pdn");
    const std::string text = file_text(games);
    EXPECT_NE(text.find("[Event \"Game 2, opening "), std::string::npos) << text;
    EXPECT_EQ(game_in_file(games, 0).size(), 14u)
        << "the peer has black, and ends the game behind its opponent's move";
    const std::string stats = file_text(desk.data_folder() + QStringLiteral("dxpstats.txt"));
    EXPECT_NE(stats.find("Tessarin 1.60b vs Scripted Peer:  0 wins, 0 losses, "), std::string::npos) << stats;
    EXPECT_TRUE(close_program(desk));
}
