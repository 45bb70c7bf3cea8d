// Peers that ask for strange things, are slow, leave or shout; and what they are told of the engine's
// thoughts.
#include "base/clock.h"
#include "control/program_flags.h"
#include "tests/dxp/follower_fixture.h"

using namespace std::string_literals;

// Positions that are none, and sides without pieces.

TEST_F(FollowerTest, StrangePositionsDoNoHarm) {
    script.think = search_really;
    const std::string empty(50, 'e');
    std::string white_on_last_row = empty, black_on_last_row = empty;
    white_on_last_row[0] = 'w';
    white_on_last_row[30] = 'z';
    black_on_last_row[49] = 'z';
    black_on_last_row[30] = 'w';
    serve({});
    for (const std::string& squares :
         {empty, white_on_last_row, black_on_last_row, std::string(50, 'W'), std::string(50, 'z'),
          std::string(25, 'w') + std::string(25, 'z'), std::string(25, 'Z') + std::string(25, 'W'),
          std::string("w"), std::string()}) {
        for (const char* const head : {"BW", "BZ", "B?"}) {
            for (const char colour : {'W', 'Z'}) {
                SCOPED_TRACE(head + squares + colour);
                run({sends(game_request_text("Peer", colour, "0.1", "075", head + squares)),
                     waits_to_hear(ACCEPTED), sends(move_message_text(32, 28)), sends("B001W"),
                     stays_silent(5), sends("E00")});
                ASSERT_TRUE(run_until([] { return dxp_state.phase == DXP_NO_GAME; }));
                EXPECT_TRUE(wait_for_search());
            }
        }
    }
    run({sends(request_from_start('Z')), waits_to_hear(ACCEPTED)});
}

// A game whose position the engine cannot play ends there, so that nobody waits for ever.
TEST_F(FollowerTest, APositionThatIsNoneEndsTheGame) {
    script.think = search_really;
    std::string squares(50, 'e');
    squares[0] = 'w';
    squares[30] = 'z';
    serve({sends(game_request_text("Peer", 'W', "005", "075", "BW" + squares)), hears(ACCEPTED), hears("E00"),
           hears_nothing(50)});
    expect_counters(0, 0, 0, 1);
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(FollowerTest, StrangeTimesDoNoHarm) {
    serve({});
    for (const char* const time : {"000", "-99", "9e9", "   ", "nan", "0.1", "999"})
        for (const char* const moves : {"000", "-99", "999", "   ", "002"})
            run({sends(game_request_text("Peer", 'W', time, moves)), hears(ACCEPTED),
                 hears(move_message_text(32, 28))});
    for (const char* const number : {"0.0000", "-1e300", "9e99  ", "      ", "nannan", "100000"})
        run({sends(fischer_request_text("Peer", 'W', number, number)), hears(ACCEPTED),
             hears(move_message_text(32, 28))});
}

// What the engine thinks is told in server mode.

TEST_F(FollowerTest, TheSearchTextIsChatInServerModeAlone) {
    start_as_white();
    run({sends("E00"), hears("E00")});
    program_flags.server_mode = true;
    run({sends(request_from_start('W')), hears(ACCEPTED), hears("Cbook ?"),
         hears(move_message_text(32, 28))});
    EXPECT_GE(dxp_state.last_chat_text.size(), 6u);
    // The last text goes out even if it was sent before.
    run({sends("E00"), hears("E00"), sends(request_from_start('W')), hears(ACCEPTED), hears("Cbook ?"),
         hears(move_message_text(32, 28))});
}

TEST_F(FollowerTest, DuringASearchCompletedIterationsAreToldAfterAWhile) {
    program_flags.server_mode = true;
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    SharedText<SEARCH_TEXT_SIZE>& text = search_thread.shared_text;
    const std::string long_text = "value=12,  depth 9 " + std::string(200, 'x');
    text.publish(long_text.c_str());
    const int64_t begin = search_thread.search_started_ms;
    std::string heard;
    int64_t heard_ms = 0;
    run({[&](Peer& p) {
        peer_receive(p, heard);
        heard_ms = clock_ms();
    }});
    EXPECT_EQ(heard, "C" + long_text.substr(0, 126));
    EXPECT_GE(heard_ms - begin, 300);
    EXPECT_EQ(protocol_lines().back(), "< " + heard);
    run({hears_nothing(120)});  // the same text, again and again
    text.publish("value<12,  depth 10");
    run({hears_nothing(120)});
    text.publish("value=13,  depth 10");
    run({hears("Cvalue=13,  depth 10")});
    script.hold = false;
    run({waits_to_hear(move_message_text(32, 28))});
}

TEST_F(FollowerTest, APonderSearchIsNotTold) {
    program_flags.server_mode = true;
    settings.pondering_on = 1;
    script.predict = [](const Position& position, int side, const MoveList& list) {
        script.hold = true;
        return answer_with("19-23")(position, side, list);
    };
    serve({sends(request_from_start('W')), hears(ACCEPTED), hears("Cbook ?"),
           hears(move_message_text(32, 28))});
    wait_within_search();
    search_thread.shared_text.publish("value=99");
    run({hears_nothing(450)});
    settings.pondering_on = 0;
    script.hold = false;
    run({hears_nothing(100)});
}

// The peer goes.

TEST_F(FollowerTest, APeerMayLeaveAtAnyPointOfAGame) {
    const std::vector<std::string> steps = {
        "", request_from_start('W'), move_message_text(19, 23), "B001W", "K0", "Chello", "E20"};
    for (const PeerStep& going : {closes(), resets(), half_closes()}) {
        for (size_t told = 0; told < steps.size(); ++told) {
            for (const bool at_once : {true, false}) {
                SCOPED_TRACE(told);
                script.think = first_move;
                PeerScript story;
                for (size_t i = 1; i <= told; ++i) story.push_back(sends(steps[i]));
                if (!at_once) story.push_back(stays_silent(10));
                story.push_back(going);
                serve(story);
                ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
                expect_ready();
                EXPECT_EQ(dxp_state.dxp_follower, 1);
            }
        }
    }
    script.think = answer_with("32-28");
    start_as_white();
}

TEST_F(FollowerTest, ALossInMidSearchLeavesTheBoardAsItWas) {
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    const std::string board = fen_now();
    run({closes()});
    ASSERT_TRUE(run_until([] { return count_lines("< Connection lost") == 1; }));
    expect_ready();
    run_for(100);
    EXPECT_EQ(fen_now(), board);
    EXPECT_EQ(game.history_count, 1);
    script.hold = false;
    start_as_white();
}

TEST_F(FollowerTest, TerminatingInMidSearchEndsItQuietly) {
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    terminate_connection_command();
    expect_ready();
    run({sees_end()});
    run_for(100);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(count_lines("< Connection lost"), 0);
}

TEST_F(FollowerTest, ASilentPeerIsWaitedFor) {
    start_as_white();
    run({stays_silent(500)});
    EXPECT_EQ(dxp_connection.connection_state, DXP_CONNECTED);
    script.think = first_move;
    run({sends(move_message_text(19, 23)), hears("M0000*")});
}

TEST_F(FollowerTest, AGameGoesByteByByte) {
    serve({sends_in_pieces(request_from_start('W') + "\0"s, 1, 1), hears(ACCEPTED),
           hears(move_message_text(32, 28))});
    script.think = first_move;
    run({sends_in_pieces(move_message_text(19, 23) + "\0"s, 1, 1), hears("M0000*"),
         sends_in_pieces("E00\0"s, 1, 1), hears("E00")});
}

TEST_F(FollowerTest, AThousandMessagesInAGameDoNoHarm) {
    start_as_white();
    script.think = first_move;
    std::vector<std::string> many;
    for (int i = 0; i < 1000; ++i)
        many.push_back(i % 4 == 0   ? move_message_text(19, 23)
                       : i % 4 == 1 ? "B001W"
                       : i % 4 == 2 ? request_from_start('W')
                                    : "E00");
    run({[&](Peer& p) { peer_send_joined(p, many); }, closes()});
    ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
    expect_ready();
    script.think = answer_with("32-28");
    start_as_white();
}

// A whole game with an engine that searches, against a player that knows the rules.
TEST_F(FollowerTest, WholeGamesAreFollowed) {
    script.think = search_really;
    script.predict = search_really;
    settings.pondering_on = 1;
    serve({});
    PlayerReport report;
    PlayerOptions options;
    options.choose = [](const PlayedGame& played, int moves) { return played.plies * 7 % moves; };
    run({[&](Peer& p) {
        for (const char* const request : {"W", "Z"})
            initiate_game(p, game_request_text("Peer", *request, "0.1", "200"), options, report);
    }});
    EXPECT_EQ(report.games, 2);
    EXPECT_EQ(dxp_state.match_games, 2);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_EQ(
        dxp_state.match_wins + dxp_state.match_draws + dxp_state.match_losses + dxp_state.match_unknowns, 2);
}
