// Games that this side asks for.
#include "control/game_clock.h"
#include "control/program_flags.h"
#include "control/time_control.h"
#include "tests/dxp/follower_fixture.h"

namespace {

int over_at = 0;  // the match is over when so many games are played
std::vector<int32_t> pairs;
int matches_over = 0;

class InitiatorTest : public FollowerTest {
  protected:
    void SetUp() override {
        FollowerTest::SetUp();
        over_at = 4;
        pairs.clear();
        matches_over = 0;
        match_hooks.set_next_start_position = [](int32_t pair) {
            pairs.push_back(pair);
            if (dxp_state.match_games >= over_at) return 1;
            new_game();
            return 0;
        };
        match_hooks.match_over = [] { ++matches_over; };
        settings.clock_minutes = 120;
        settings.clock_moves_limit = 75;
        set_time_control(TIME_GAME_CLOCK);
    }

    // A match is begun on a new connection, as its dialog does.
    void begin_match() {
        const int before = count_lines("< Connection established");
        serve({});
        ASSERT_TRUE(run_until([&] { return count_lines("< Connection established") > before; }));
        set_gui_mode(DXP_MODE);
        dxp_state.match_games = 0;
        dxp_state.dxp_follower = 0;
        clear_match_counters();
        new_game();
        dxp_send_game_request();
    }
};

std::string initial_request(char colour) {
    return "R01Tessarin                        " + std::string(1, colour) + "120075BW" +
           std::string(INITIAL_SQUARES);
}

const std::string PEER_ACCEPTS = game_acceptance_text("Scripted Peer");

}  // namespace

TEST_F(InitiatorTest, ARequestTellsEverythingOfTheGame) {
    begin_match();
    run({hears(initial_request('Z'))});
    EXPECT_EQ(dxp_state.engine_colour, WHITE);
    EXPECT_EQ(dxp_state.phase, DXP_REQUESTED);
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEREQ sent.");
    EXPECT_EQ(protocol_lines().back(), "< " + initial_request('Z'));
    EXPECT_EQ(count_events("pause 50"), 1);
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(InitiatorTest, PositionsAreSentAsTheyStand) {
    begin_match();
    set_position("B:W6,K7,50:B1,K2,45");
    dxp_state.match_games = 1;
    settings.clock_minutes = 0.5;
    dxp_send_game_request();
    run({hears(initial_request('Z')),
         hears("R01Tessarin                        W0.5075BZzZeeewW" + std::string(37, 'e') + "zeeeew")});
    EXPECT_EQ(dxp_state.engine_colour, BLACK);
}

TEST_F(InitiatorTest, WithIncrementTheRequestIsTheOther) {
    settings2.match_incremental = 1;
    settings2.increment_mode = 0;
    settings2.initial_seconds = 300.5;
    settings2.increment_seconds = 0.5;
    begin_match();
    run({hears("F01Tessarin                        Z300.500.5000BW" + std::string(INITIAL_SQUARES))});
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEREQ_FISCHER sent.");
    EXPECT_EQ(settings2.increment_mode, 1) << "the engine plays by what it tells";
}

// Both sides play by what a request has room for.
TEST_F(InitiatorTest, NumbersThatDoNotFitARequestAreTheLargestThatDo) {
    const std::string name = "01Tessarin                        Z",
                      board = "BW" + std::string(INITIAL_SQUARES);
    settings.clock_minutes = 1440;
    settings.clock_moves_limit = 1000;
    begin_match();
    run({hears("R" + name + "999999" + board)});
    EXPECT_EQ(settings.clock_minutes, 999);
    EXPECT_EQ(settings.clock_moves_limit, 999);
    settings2.match_incremental = 1;
    settings2.initial_seconds = 1e6;
    settings2.increment_seconds = 1e30;
    dxp_send_game_request();
    run({hears("F" + name + "999999999999" + board)});
    EXPECT_EQ(settings2.initial_seconds, 999999);
    EXPECT_EQ(settings2.increment_seconds, 999999);
    settings2.initial_seconds = 60;
    settings2.increment_seconds = 99999.96;
    dxp_send_game_request();
    run({hears("F" + name + "60.000100000" + board)});
}

TEST_F(InitiatorTest, AcceptedItMovesFirstWithWhite) {
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears(move_message_text(32, 28))});
    EXPECT_STREQ(dxp_state.opponent_name, "Scripted Peer");
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_side, WHITE);
    EXPECT_EQ(clock_state.clock_moves, 1);
    EXPECT_EQ(count_events("status GAMEACC from Scripted Peer"), 1);
    EXPECT_EQ(events_of("title").back(),
              "title Tessarin vs Scripted Peer:  0 wins, 0 losses, 0 draws, 0 unknowns");
    char mode[100];
    status_pane_text(mode, sizeof mode);
    EXPECT_NE(std::string(mode).find("Dxp Initiator"), std::string::npos);
}

TEST_F(InitiatorTest, AcceptedItWaitsWithBlack) {
    begin_match();
    run({hears(initial_request('Z'))});
    dxp_state.match_games = 1;
    dxp_send_game_request();
    run({hears(initial_request('W')), sends(PEER_ACCEPTS), hears_nothing(50)});
    EXPECT_EQ(script.searches, 0);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_side, BLACK);
    script.think = answer_with("19-23");
    run({sends(move_message_text(33, 28)), hears(move_message_text(19, 23))});
}

TEST_F(InitiatorTest, RefusedNothingIsPlayed) {
    begin_match();
    run({hears(initial_request('Z')), sends(game_acceptance_text("Scripted Peer", '1')), hears_nothing(50)});
    EXPECT_EQ(script.searches, 0);
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    run({sends(PEER_ACCEPTS), sends(move_message_text(33, 28)), sends("B001W"), hears_nothing(50)});
    EXPECT_EQ(game.history_count, 1) << "no game runs";
}

TEST_F(InitiatorTest, ASecondAcceptanceIsOnlyShown) {
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears(move_message_text(32, 28)),
         sends(game_acceptance_text("Other")), hears_nothing(50)});
    EXPECT_STREQ(dxp_state.opponent_name, "Scripted Peer");
    EXPECT_EQ(clock_state.clock_moves, 1);
}

TEST_F(InitiatorTest, BeforeTheAnswerNothingIsPlayed) {
    begin_match();
    run({hears(initial_request('Z')), sends(move_message_text(33, 28)), sends("B001W"), sends("Chello"),
         hears_nothing(50)});
    EXPECT_EQ(game.history_count, 1);
    run({sends("E30"), hears_nothing(50)});
    EXPECT_EQ(dxp_state.match_games, 0);
    run({sends(PEER_ACCEPTS), hears(move_message_text(32, 28))});
}

// What is one too many does not end the next game, whoever claimed the last.
TEST_F(InitiatorTest, APeerThatAnswersEveryEndEndsNoFurtherGame) {
    script.think = first_move;
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("M0000*"), sends("E10"), hears("E00"),
         sends("E00"), hears(initial_request('W')), sends(PEER_ACCEPTS), hears_nothing(50)});
    EXPECT_EQ(dxp_state.phase, DXP_PLAYING);
    // Claims that cross.
    script.value = -4000;
    run({sends(move_message_text(33, 29)), hears("E10"), sends("E20"), sends("E00"),
         hears(initial_request('Z'))});
    script.value = 0;
    run({sends(PEER_ACCEPTS), hears("M0000*"), hears_nothing(50), sends("E30"), hears("E00"), sends("E00"),
         hears(initial_request('W')), sends(PEER_ACCEPTS), sends("E10"), hears("E00"), sends("E00")});
    EXPECT_EQ(dxp_state.match_games, 4);
    EXPECT_EQ(dxp_state.match_unknowns, 0);
    EXPECT_EQ(appended.size(), 4u);
}

TEST_F(InitiatorTest, AMatchGoesFromGameToGame) {
    script.think = first_move;
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("M0000*"), sends("E10"), hears("E00"),
         hears(initial_request('W')), sends(PEER_ACCEPTS), sends("E20"), hears("E00"),
         hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("M0000*"), sends("E30"), hears("E00"),
         hears(initial_request('W')), sends(PEER_ACCEPTS), sends("E00"), hears("E00"), sees_end()});
    EXPECT_EQ(dxp_state.match_games, 4);
    EXPECT_EQ(pairs, (std::vector<int32_t>{0, 1, 1, 2}));
    expect_counters(1, 1, 1, 1);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(events_of("title").back(),
              "title Tessarin vs Scripted Peer:  1 wins, 1 losses, 1 draws, 1 unknowns")
        << "the score stays to be seen";
    ASSERT_EQ(appended.size(), 4u);
    EXPECT_EQ(appended[0].white, "Tessarin");
    EXPECT_EQ(appended[0].result, "2-0");
    EXPECT_EQ(appended[1].black, "Tessarin");
    EXPECT_EQ(appended[1].result, "1-1");
    EXPECT_EQ(appended[2].result, "0-2");
    EXPECT_EQ(appended[3].result, "*");
    EXPECT_EQ(stats_written, 4);
    EXPECT_EQ(matches_over, 1);
    expect_ready();
    EXPECT_FALSE(clock_state.clock_running);
    EXPECT_EQ(count_lines("< Connection lost"), 0);
}

TEST_F(InitiatorTest, AMatchEndsBehindAWholePairOnly) {
    script.think = first_move;
    over_at = 1;
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("M0000*"), sends("E10"), hears("E00"),
         hears("R01*"), sends(PEER_ACCEPTS), waits_to_hear("M0000*"), sends("E10"), hears("E00"),
         sees_end()});
    EXPECT_EQ(dxp_state.match_games, 2);
}

TEST_F(InitiatorTest, OwnClaimsWaitForTheAnswer) {
    script.value = -4000;
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("E30"), hears_nothing(100)});
    EXPECT_EQ(dxp_state.match_games, 0);
    EXPECT_EQ(dxp_state.phase, DXP_CLAIMED);
    script.value = 0;
    run({sends("E00"), hears(initial_request('W'))});
    EXPECT_EQ(dxp_state.match_games, 1);
    expect_counters(1, 0, 0, 0);
    EXPECT_EQ(appended.size(), 1u);
}

TEST_F(InitiatorTest, WhoIsAskedForAGameFollows) {
    script.think = first_move;
    begin_match();
    run({hears(initial_request('Z')), sends(request_from_start('Z')), hears(ACCEPTED), sends("E30"),
         hears("E00"), hears_nothing(50)});
    EXPECT_EQ(dxp_state.dxp_follower, 1);
    EXPECT_EQ(dxp_state.match_games, 1);
}

TEST_F(InitiatorTest, BehindALossNoGameIsAskedFor) {
    script.think = first_move;
    begin_match();
    run({hears(initial_request('Z')), sends(PEER_ACCEPTS), hears("M0000*"), sends("E10"), hears("E00"),
         hears(initial_request('W')), closes()});
    ASSERT_TRUE(run_until([] { return count_lines("< Connection lost") == 1; }));
    expect_ready();
    EXPECT_EQ(dxp_state.match_games, 1) << "so that it can be gone on with";
    EXPECT_EQ(dxp_state.dxp_follower, 1);
    run_for(100);
    EXPECT_EQ(dxp_connection_number(), 0);
}

TEST_F(InitiatorTest, APeerMayLeaveAtAnyPointOfAMatch) {
    const PeerScript story = {hears("R01*"),
                              sends(PEER_ACCEPTS),
                              waits_to_hear("M0000*"),
                              sends(move_message_text(20, 25)),
                              hears("M0000*"),
                              sends("E20"),
                              hears("E00")};
    script.think = first_move;
    for (size_t told = 0; told <= story.size(); ++told) {
        for (const PeerStep& going : {closes(), resets(), half_closes()}) {
            SCOPED_TRACE(told);
            begin_match();
            PeerScript steps(story.begin(), story.begin() + static_cast<std::ptrdiff_t>(told));
            steps.push_back(going);
            run(steps);
            ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
            expect_ready();
            EXPECT_EQ(dxp_state.dxp_follower, 1);
        }
    }
}

TEST_F(InitiatorTest, WholeMatchesArePlayed) {
    script.think = search_really;
    settings.clock_minutes = 0.1;
    settings.clock_moves_limit = 200;
    begin_match();
    PlayerReport report;
    PlayerOptions options;
    options.choose = [](const PlayedGame& played, int moves) { return played.plies * 5 % moves; };
    run({[&](Peer& p) { follow_games(p, options, report); }});
    EXPECT_EQ(report.games, 4);
    EXPECT_EQ(dxp_state.match_games, 4);
    EXPECT_EQ(appended.size(), 4u);
    EXPECT_EQ(matches_over, 1);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_EQ(
        dxp_state.match_wins + dxp_state.match_draws + dxp_state.match_losses + dxp_state.match_unknowns, 4);
    expect_ready();
}
