// Matches as they are played: against a scripted player at the other end of the wire, in both roles.
#include <algorithm>
#include <map>

#include "control/program_flags.h"
#include "dxp/statistics.h"
#include "tests/dxp/match_fixture.h"

namespace {

constexpr const char* FOUR_STARTS =
    "[Event \"one\"]\n1. 32-28 19-23 *\n\n"
    "[Event \"two\"]\n1. 33-29 17-22 *\n\n"
    "[Event \"three\"]\n1. 34-30 *\n\n"
    "[Event \"four\"]\n[FEN \"W:W28,31,32,33,37,38:B8,9,12,13,14,19\"]\n*\n\n";

class MatchPlayTest : public MatchTest {
  protected:
    void TearDown() override {
        program_flags = ProgramFlags{};
        MatchTest::TearDown();
    }
    MatchFields four_starts(int repeats) const {
        write_content(folder.file("ballots.pdn"), FOUR_STARTS);
        MatchFields fields = match_fields();
        fields.openings = FILE_OPENINGS;
        fields.ballot_file = folder.file("ballots.pdn");
        fields.repeats = repeats;
        fields.minutes = 0.1;
        fields.moves = 40;
        return fields;
    }
    // Connects to a peer that waits on a port of its own.
    static void connect_to_peer() {
        store_setting_text(settings.dxp_host, "127.0.0.1");
        ASSERT_EQ(connect_to_host(), 0);
    }
    static bool match_is_over() { return dxp_connection.connection_state == DXP_UNCONNECTED; }
};

// A peer who follows until the connection ends.
struct Follower {
    Peer peer;
    PlayerReport report;
    std::jthread thread;

    void run(int port, const PlayerOptions& options) {
        ASSERT_EQ(peer_listen(peer, port), port);
        thread = std::jthread([this, options] {
            if (peer_accept(peer)) follow_games(peer, options, report);
        });
    }
    void expect_well() {
        thread.join();
        EXPECT_EQ(peer.complaint, "");
    }
};

char colour_told(const std::string& request) { return request[35]; }
std::string position_told(const std::string& request) { return request.substr(42); }

int sum_of_results() {
    return dxp_state.match_wins + dxp_state.match_losses + dxp_state.match_draws + dxp_state.match_unknowns;
}

}  // namespace

// Each position twice in a row with colours swapped, all of them over and over, and then the end.
TEST_F(MatchPlayTest, AMatchGoesByItsPlan) {
    PlayerOptions options;
    options.claim_at_ply = 3;
    options.choose = [](const PlayedGame& played, int moves) { return played.plies % moves; };
    Follower follower;
    follower.run(port(), options);
    connect_to_peer();
    int told = 0;
    bool over = false;
    static int* told_games = nullptr;
    static bool* told_over = nullptr;
    told_games = &told;
    told_over = &over;
    match_hooks.game_ended = [](int32_t) { ++*told_games; };
    match_hooks.match_over = [] { *told_over = true; };
    ASSERT_EQ(begin_match(four_starts(2)), 0);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    EXPECT_TRUE(over);
    EXPECT_EQ(told, 16);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);

    const std::vector<std::string>& requests = follower.report.requests;
    ASSERT_EQ(requests.size(), 16u) << "no request follows the last game";
    for (size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(colour_told(requests[i]), i % 2 == 0 ? 'Z' : 'W') << i;
        EXPECT_EQ(position_told(requests[i]), position_told(requests[i / 2 * 2 % 8])) << i;
        EXPECT_EQ(requests[i].substr(36, 6), "0.1040") << i;
    }
    std::map<std::string, int> positions;
    for (const std::string& request : requests) ++positions[position_told(request)];
    EXPECT_EQ(positions.size(), 4u);

    EXPECT_EQ(dxp_state.match_games, 16);
    EXPECT_EQ(sum_of_results(), 16);
    EXPECT_EQ(dxp_state.match_unknowns, 16) << "the peer claims nothing";
    EXPECT_EQ(content_of(stats_file()),
              "Tessarin vs Scripted Peer:  0 wins, 0 losses, 0 draws, 16 unknowns\n");
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 16u);
    for (size_t i = 0; i < games.size(); ++i) {
        EXPECT_EQ(games[i].event, "Game " + std::to_string(i + 1) + ", opening start position " +
                                      std::to_string(i / 2 % 4 + 1));
        EXPECT_EQ(games[i].white, i % 2 == 0 ? "Tessarin" : "Scripted Peer");
        EXPECT_EQ(games[i].black, i % 2 == 0 ? "Scripted Peer" : "Tessarin");
        EXPECT_EQ(squares_text(games[i].states[0].position), position_told(requests[i]).substr(2));
        EXPECT_EQ(static_cast<int>(games[i].states.size()) - 1, follower.report.plies[i]);
    }
}

// The results of both sides and of the file agree, whoever claims what.
TEST_F(MatchPlayTest, ResultsAreCountedFromThisSide) {
    struct Row {
        char claim;
        MatchCounters wanted;
        const char* white_result;  // of a game in which this side is white
        const char* black_result;
    };
    for (const Row& row :
         {Row{'0', MatchCounters{0, 0, 0, 2}, "*", "*"}, Row{'1', MatchCounters{2, 0, 0, 0}, "2-0", "0-2"},
          Row{'2', MatchCounters{0, 2, 0, 0}, "1-1", "1-1"},
          Row{'3', MatchCounters{0, 0, 2, 0}, "0-2", "2-0"}, Row{'7', MatchCounters{0, 0, 0, 2}, "*", "*"}}) {
        PlayerOptions options;
        options.claim_at_ply = 2;
        options.claim = row.claim;
        Follower follower;
        follower.run(port(), options);
        connect_to_peer();
        MatchFields fields = four_starts(1);
        write_content(folder.file("ballots.pdn"), "[Event \"one\"]\n1. 32-28 19-23 *\n");
        ASSERT_EQ(begin_match(fields), 0);
        ASSERT_TRUE(run_until(match_is_over));
        follower.expect_well();
        MatchCounters read;
        EXPECT_EQ(read_match_stats(read), 2);
        EXPECT_EQ(read.wins, row.wanted.wins) << row.claim;
        EXPECT_EQ(read.losses, row.wanted.losses) << row.claim;
        EXPECT_EQ(read.draws, row.wanted.draws) << row.claim;
        EXPECT_EQ(read.unknowns, row.wanted.unknowns) << row.claim;
        const std::vector<FiledGame> games = filed_games(games_file());
        ASSERT_EQ(games.size(), 2u);
        EXPECT_EQ(games[0].result, row.white_result) << row.claim;
        EXPECT_EQ(games[1].result, row.black_result) << row.claim;
    }
}

// The match ends on its own with the number of moves: then this side claims, and the other counts the same.
TEST_F(MatchPlayTest, TheLimitOfMovesEndsGames) {
    Follower follower;
    follower.run(port(), {});
    connect_to_peer();
    MatchFields fields = four_starts(1);
    fields.moves = 3;
    ASSERT_EQ(begin_match(fields), 0);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    EXPECT_EQ(follower.report.reasons, std::vector<char>(8, '0'));
    EXPECT_EQ(dxp_state.match_unknowns, 8);
    for (const FiledGame& filed : filed_games(games_file())) EXPECT_EQ(filed.result, "*");
}

// The last two games of a whole match of ballots, and nothing behind them.
TEST_F(MatchPlayTest, TheLastPairOfAWholeMatchUsesTheLastBallot) {
    PlayerOptions options;
    options.claim_at_ply = 1;
    options.claim = '2';
    Follower follower;
    follower.run(port(), options);
    connect_to_peer();
    write_content(stats_file(), "Tessarin vs Scripted Peer:  50 wins, 50 losses, 54 draws, 1 unknowns\n");
    MatchFields fields = match_fields();
    fields.openings = TWO_MOVE_OPENINGS;
    fields.repeats = 1;
    fields.resume = true;
    ASSERT_EQ(begin_match(fields), 0);
    EXPECT_EQ(dxp_state.match_games, 155);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    ASSERT_EQ(follower.report.requests.size(), 3u);
    EXPECT_EQ(colour_told(follower.report.requests[0]), 'W') << "game 156 is the second of its pair";
    EXPECT_EQ(position_told(follower.report.requests[1]), position_told(follower.report.requests[2]));
    EXPECT_NE(position_told(follower.report.requests[0]), position_told(follower.report.requests[1]));
    EXPECT_EQ(dxp_state.match_games, 158);
    EXPECT_EQ(content_of(stats_file()),
              "Tessarin vs Scripted Peer:  50 wins, 50 losses, 57 draws, 1 unknowns\n");
}

// Broken off at any moment and resumed, a match has the games that it would have had.
TEST_F(MatchPlayTest, ABrokenMatchIsResumedWhereItWas) {
    MatchFields fields = four_starts(1);
    int cuts = 0;
    for (int leaves_at = 5; dxp_state.match_games < 8 && cuts < 20; leaves_at += 6, ++cuts) {
        int sent = 0;
        PlayerOptions options;
        options.claim_at_ply = 4;
        options.claim = '2';
        options.before_send = [&sent, leaves_at](Peer& peer, const PlayedGame&) {
            if (++sent < leaves_at) return true;
            peer_reset(peer);
            return false;
        };
        Follower follower;
        follower.run(port(), options);
        connect_to_peer();
        fields.resume = cuts > 0;
        const int before = dxp_state.match_games;
        ASSERT_EQ(begin_match(fields), 0);
        EXPECT_EQ(dxp_state.match_games, before) << "what was finished counts, what was begun does not";
        ASSERT_TRUE(run_until(match_is_over));
        if (dxp_state.match_games < 8) {
            EXPECT_NE(dxp_state.dxp_follower, 0) << "no further game is asked for";
        }
    }
    EXPECT_EQ(dxp_state.match_games, 8);
    EXPECT_GE(cuts, 3);
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 8u);
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(games[i].event,
                  "Game " + std::to_string(i + 1) + ", opening start position " + std::to_string(i / 2 + 1));
}

TEST_F(MatchPlayTest, AMatchWithIncrementTellsIt) {
    program_flags.autoconnect_enabled = true;
    PlayerOptions options;
    options.claim_at_ply = 2;
    Follower follower;
    follower.run(port(), options);
    connect_to_peer();
    MatchFields fields = four_starts(1);
    fields.incremental = true;
    fields.initial_seconds = 3.5;
    fields.increment_seconds = 0.05;
    ASSERT_EQ(begin_match(fields), 0);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    for (const std::string& request : follower.report.requests) {
        EXPECT_EQ(request[0], 'F');
        EXPECT_EQ(request.substr(36, 12), "3.50000.0500");
    }
}

// Without a limit on the moves: what is asked for stays that from game to game, the clock reckons with a long
// game, and no value ends a game before its time.
TEST_F(MatchPlayTest, NoMovesAreNoLimit) {
    PlayerOptions options;
    options.claim_at_ply = 9;
    options.choose = [](const PlayedGame& played, int moves) { return played.plies % moves; };
    script.think = first_move;
    script.value = 2500;  // won, were this the last move
    for (const int32_t moves : {0, -1}) {
        Follower follower;
        follower.run(port(), options);
        connect_to_peer();
        MatchFields fields = four_starts(1);
        fields.moves = moves;
        ASSERT_EQ(begin_match(fields), 0);
        EXPECT_EQ(settings.clock_moves_limit, DXP_UNLIMITED_CLOCK_MOVES);
        ASSERT_TRUE(run_until(match_is_over));
        follower.expect_well();
        EXPECT_EQ(dxp_state.match_games, 8);
        EXPECT_EQ(dxp_state.match_unknowns, 8) << "the peer ends each game";
        ASSERT_EQ(follower.report.requests.size(), 8u);
        for (const std::string& request : follower.report.requests) EXPECT_EQ(request.substr(39, 3), "000");
        EXPECT_EQ(match_fields().moves, 0) << "as it was chosen, for the next match";
    }
    settings.clock_moves_limit = 60;
    EXPECT_EQ(match_fields().moves, 60) << "but for a choice since";
    Follower follower;
    follower.run(port(), options);
    connect_to_peer();
    ASSERT_EQ(begin_match(four_starts(1)), 0);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    EXPECT_EQ(follower.report.requests.back().substr(39, 3), "040") << "the next match has a limit again";
    EXPECT_EQ(match_fields().moves, 40);
}

TEST_F(MatchPlayTest, AutoconnectNeedsNoDialog) {
    PlayerOptions options;
    options.claim_at_ply = 1;
    Follower follower;
    follower.run(port(), options);
    const MatchFields fields = four_starts(1);
    store_setting_text(settings2.match_ballot_file, fields.ballot_file);
    settings.match_opening_kind = FILE_OPENINGS;
    settings2.match_repeats = 1;
    settings.operator_time = 9;
    store_setting_text(settings.dxp_host, "127.0.0.1");
    dxp_state.match_games = 5;
    dxp_state.match_losses = 5;
    ASSERT_EQ(begin_match_autoconnect(), 0);
    EXPECT_EQ(dxp_state.match_games, 0);
    EXPECT_EQ(dxp_state.match_losses, 0);
    EXPECT_EQ(settings.operator_time, 0);
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    ASSERT_TRUE(run_until(match_is_over));
    follower.expect_well();
    EXPECT_EQ(follower.report.games, 8);
}

TEST_F(MatchPlayTest, AutoconnectWithoutAHostStartsNothing) {
    store_setting_text(settings.dxp_host, "127.0.0.1");
    EXPECT_NE(begin_match_autoconnect(), 0);
    EXPECT_EQ(events_of("box"), Events{"box Unsuccessful: Cannot connect to remote host"});
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
}

// The follower only counts. Its games have no opening in their names.
TEST_F(MatchPlayTest, TheFollowerCountsTheSameGames) {
    wait_for_connection_command();
    Peer peer;
    PlayerReport report;
    std::jthread thread([&] {
        if (!peer_connect(peer, port())) return;
        PlayerOptions options;
        const char claims[] = {'1', '2', '3', '0', '2'};
        for (int i = 0; i < 5; ++i) {
            options.claim_at_ply = 3 + i;
            options.claim = claims[i];
            initiate_game(peer, game_request_text("Scripted Peer", i % 2 == 0 ? 'Z' : 'W', "001", "040"),
                          options, report);
        }
    });
    ASSERT_TRUE(run_until([] { return dxp_state.match_games == 5; }));
    thread.join();
    EXPECT_EQ(peer.complaint, "");
    EXPECT_EQ(content_of(stats_file()),
              "Tessarin vs Scripted Peer:  1 wins, 1 losses, 2 draws, 1 unknowns\n");
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 5u);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(games[i].event, "Game " + std::to_string(i + 1));
        EXPECT_EQ(games[i].white, i % 2 == 0 ? "Scripted Peer" : "Tessarin");
        EXPECT_EQ(static_cast<int>(games[i].states.size()) - 1, report.plies[i]);
    }

    // A peer who comes back goes on with the match; without the file it is a new one.
    for (const bool with_file : {true, false}) {
        peer_close(peer);
        ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
        if (!with_file) std::filesystem::remove(stats_file());
        wait_for_connection_command();
        std::jthread again([&] {
            PlayerOptions options;
            options.claim_at_ply = 2;
            if (peer_connect(peer, port()))
                initiate_game(peer, game_request_text("Scripted Peer", 'W', "001", "040"), options, report);
        });
        const int32_t wanted = with_file ? 6 : 1;
        EXPECT_TRUE(run_until([&] { return dxp_state.match_games == wanted; })) << with_file;
        EXPECT_EQ(sum_of_results(), wanted);
        EXPECT_EQ(filed_games(games_file()).size(), static_cast<size_t>(wanted));
    }
}

// "Terminate connection" breaks a match off, and it can be resumed.
TEST_F(MatchPlayTest, AMatchIsBrokenOffByCommand) {
    PlayerOptions options;
    options.claim_at_ply = 4;
    Follower follower;
    follower.run(port(), options);
    connect_to_peer();
    ASSERT_EQ(begin_match(four_starts(1)), 0);
    ASSERT_TRUE(run_until([] { return dxp_state.match_games == 3; }));
    terminate_connection_command();
    follower.expect_well();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    settle();
    EXPECT_EQ(dxp_state.match_games, 3);
    EXPECT_EQ(protocol_text().find("Connection lost"), std::string::npos);
    EXPECT_EQ(filed_games(games_file()).size(), 3u);
    EXPECT_TRUE(match_can_resume(TWO_MOVE_OPENINGS));
}
