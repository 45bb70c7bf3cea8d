// Games in which the other side asks and this one obeys: their beginnings, moves and claims.
#include "control/game_clock.h"
#include "control/time_control.h"
#include "tests/dxp/follower_fixture.h"

TEST_F(FollowerTest, ARequestForWhiteIsAnsweredAndPlayedAtOnce) {
    start_as_white();
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_EQ(dxp_state.engine_colour, WHITE);
    EXPECT_EQ(dxp_state.dxp_follower, 1);
    EXPECT_STREQ(dxp_state.opponent_name, "Peer");
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_side, WHITE);
    EXPECT_EQ(clock_state.clock_moves, 1);
    EXPECT_EQ(count_events("status DXP_GAMEREQ accepted"), 1);
    const auto titles = events_of("title");
    ASSERT_FALSE(titles.empty());
    EXPECT_EQ(titles.back(), "title Tessarin vs Peer:  0 wins, 0 losses, 0 draws, 0 unknowns");
    char mode[100];
    status_pane_text(mode, sizeof mode);
    EXPECT_NE(std::string(mode).find("Dxp Follower"), std::string::npos);
}

TEST_F(FollowerTest, ASearchThatIsDroppedWhileItsBoxIsOpenPlaysNothing) {
    settings.wld_enable = 1;
    mode_hooks.egdb_state = [] { return int32_t{EGDB_FAILED}; };
    script.think = first_move;
    start_search();
    ASSERT_TRUE(wait_for_search());
    int boxes = 0;
    in_message_box = [&] {
        ++boxes;
        dxp_drop_search();
    };
    timer_tick();
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(game.history_count, 1);
    timer_tick();
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(FollowerTest, ARequestForBlackIsAnsweredAndTheFirstMoveWaitedFor) {
    start_as_black();
    run_for(100);
    EXPECT_EQ(script.searches, 0);
    EXPECT_EQ(dxp_state.engine_colour, BLACK);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(clock_state.clock_side, BLACK);
    script.think = answer_with("19-23");
    run({sends(move_message_text(33, 28)), hears(move_message_text(19, 23))});
    EXPECT_EQ(game.history_count, 3);
    EXPECT_EQ(clock_state.clock_moves, 1);
}

TEST_F(FollowerTest, APositionWithBlackToMoveIsPlayedAtOnceByBlack) {
    script.think = first_move;
    serve({sends(request_of_position('Z', "B:W31,32,K40:B1,2,K14")), hears(ACCEPTED), hears("M0000*")});
    EXPECT_EQ(dxp_state.engine_colour, BLACK);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    EXPECT_EQ(game.game_history[0].side, BLACK);
    int side = WHITE;
    EXPECT_TRUE(same_pieces(game.game_history[0].position, position_from("B:W31,32,K40:B1,2,K14", side)));
}

TEST_F(FollowerTest, APositionWithBlackToMoveIsWaitedForByWhite) {
    serve({sends(request_of_position('W', "B:W31,32,K40:B1,2,K14")), hears(ACCEPTED), hears_nothing(100)});
    EXPECT_EQ(script.searches, 0);
    script.think = first_move;
    run({sends(move_message_text(1, 6)), hears("M0000*")});
}

TEST_F(FollowerTest, TheInitialPositionInSquaresIsNoSetUpOne) {
    serve({sends(request_of_position('W', "W:W31-50:B1-20")), hears(ACCEPTED),
           hears(move_message_text(32, 28))});
    EXPECT_EQ(game.game_history[0].setup_flag, 0);
}

TEST_F(FollowerTest, UnknownSquaresStayEmptyAndOtherSidesAreBlack) {
    std::string squares(50, 'x');
    squares[0] = 'z';
    squares[49] = 'w';
    squares[10] = 'Q';
    serve({sends(game_request_text("Peer", 'q', "005", "075", "Bx" + squares)), hears(ACCEPTED),
           hears("M0000????00")});
    EXPECT_EQ(dxp_state.engine_colour, BLACK);
    EXPECT_EQ(game.game_history[0].side, BLACK);
    int side = BLACK;
    EXPECT_TRUE(same_pieces(game.game_history[0].position, position_from("B:W50:B1", side)));
}

TEST_F(FollowerTest, TheTimeIsTheRequests) {
    settings.operator_time = 5;
    settings2.increment_mode = 1;
    settings2.match_incremental = 1;
    serve({sends(game_request_text("Peer", 'Z', "7.5", "040")), hears(ACCEPTED)});
    EXPECT_EQ(settings.clock_minutes, 7.5);
    EXPECT_EQ(settings.clock_moves_limit, 40);
    EXPECT_EQ(settings.operator_time, 0);
    EXPECT_EQ(settings2.increment_mode, 0);
    EXPECT_EQ(settings2.match_incremental, 0);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK);
    EXPECT_TRUE(settings.use_game_clock);
    run({sends(fischer_request_text("Peer", 'Z', "300.50", "2.0000")), hears(ACCEPTED)});
    EXPECT_EQ(settings2.initial_seconds, 300.5);
    EXPECT_EQ(settings2.increment_seconds, 2);
    EXPECT_EQ(settings2.increment_mode, 1);
    EXPECT_EQ(settings2.match_incremental, 1);
    EXPECT_EQ(settings.clock_minutes, 7.5);
}

TEST_F(FollowerTest, ANewMatchCountsFromNothing) {
    dxp_state.match_wins = 9;
    dxp_state.dxp_follower = 0;
    start_as_black();
    expect_counters(0, 0, 0, 0);
    EXPECT_EQ(dxp_state.dxp_follower, 1);
    dxp_state.match_games = 3;
    dxp_state.match_wins = 2;
    run({sends(request_from_start('Z')), hears(ACCEPTED)});
    expect_counters(2, 0, 0, 0);
}

TEST_F(FollowerTest, ARequestInMidSearchBeginsAnew) {
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    const std::jthread releases = release_next_search();
    run({sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28)),
         hears_nothing(100)});
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(clock_state.clock_moves, 1);
}

TEST_F(FollowerTest, ARequestTakesTheProgramOutOfWhateverItDoes) {
    for (const int32_t mode : {TWO_PLAYERS_MODE, SETUP_MODE, ANALYSIS_MODE}) {
        set_gui_mode(mode);
        if (mode == ANALYSIS_MODE) {
            script.hold = true;
            start_search();
            wait_until_held();
            script.hold = false;
        }
        if (dxp_connection.connection_state == DXP_UNCONNECTED) serve({});
        run({sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28))});
        EXPECT_EQ(game.gui_mode, DXP_MODE);
        EXPECT_EQ(game.history_count, 2) << mode;
        EXPECT_EQ(game.game_history[0].setup_flag, 0);
    }
}

TEST_F(FollowerTest, CapturesAreSentWithTheirSquaresInOrder) {
    script.think = answer_with("28x10");
    serve({sends(request_of_position('W', "W:W28,50:B23,14,1,2,3")), hears(ACCEPTED),
           hears(move_message_text(28, 10, {23, 14}))});
}

TEST_F(FollowerTest, ReceivedCapturesMatchInAnyOrder) {
    script.think = first_move;
    for (const std::vector<int>& jumped : {std::vector<int>{23, 14}, {14, 23}}) {
        if (dxp_connection.connection_state == DXP_UNCONNECTED) serve({});
        run({sends(request_of_position('Z', "W:W28,50:B23,14,1,2,3")), hears(ACCEPTED),
             sends(move_message_text(28, 10, jumped)), hears("M0000*")});
        EXPECT_EQ(game.game_history[1].position.white & mask_of_square[9], mask_of_square[9]);
        EXPECT_EQ(count_events("box"), 0);
    }
}

TEST_F(FollowerTest, AWrongMoveIsToldAndTheFirstPlayed) {
    start_as_black();
    const std::string first = move_text_at(0);
    script.think = answer_with("19-23");
    run({sends(move_message_text(1, 50)), hears(move_message_text(19, 23))});
    EXPECT_EQ(events_of("box"),
              (Events{"box MOVE error: cannot match from and to squares of received move"}));
    EXPECT_EQ(count_lines("< cannot match from and to squares of received move"), 1);
    char text[MOVE_TEXT_SIZE];
    full_move_text(game.game_history[0].position, move_to(game.game_history[1].position), WHITE, text);
    EXPECT_EQ(text, first);
}

TEST_F(FollowerTest, ACaptureWithoutCapturedSquaresIsToldTwice) {
    script.think = first_move;
    serve({sends(request_of_position('Z', "W:W28,50:B23,14,1,2,3")), hears(ACCEPTED),
           sends(move_message_text(28, 10)), hears("M0000*")});
    EXPECT_EQ(events_of("box"),
              (Events{"box MOVE error: number jumped dont match",
                      "box MOVE error: cannot match from and to squares of received move"}));
    EXPECT_EQ(game.history_count, 3);
}

TEST_F(FollowerTest, OfSeveralCapturesTheFirstIsPlayed) {
    script.think = first_move;
    serve({sends(request_of_position('Z', "W:WK26:B1,13,17,24,32,34,42")), hears(ACCEPTED)});
    run({sends(move_message_text(26, 8)), hears("M0000*")});
    ASSERT_GE(game.history_count, 2);
    MoveList list;
    generate_moves(game.game_history[0].position, list, WHITE);
    ASSERT_GT(list.count, 1);
    EXPECT_TRUE(same_pieces(game.game_history[1].position, position_after(list[0], BLACK)));
}

TEST_F(FollowerTest, AQuietMoveWithCapturedSquaresIsToldAndPlayed) {
    start_as_black();
    script.think = answer_with("19-23");
    run({sends(move_message_text(33, 28, {22})), hears(move_message_text(19, 23))});
    EXPECT_EQ(events_of("box"), (Events{"box MOVE error: number jumped dont match"}));
    EXPECT_EQ(game.game_history[1].position.white & mask_of_square[27], mask_of_square[27]);
}

TEST_F(FollowerTest, CaptureListsThatAreWrongAreTold) {
    script.think = first_move;
    serve({});
    for (const std::string& move :
         {move_message_text(28, 10, {23}), move_message_text(28, 10, {23, 14, 9}),
          move_message_text(28, 10, {23, 13}), std::string("M0000281099"), std::string("M000028102")}) {
        clear_events();
        run({sends(request_of_position('Z', "W:W28,50:B23,14,1,2,3")), hears(ACCEPTED), sends(move),
             hears("M0000*")});
        EXPECT_EQ(count_events("box MOVE error: cannot match"), 1) << move;
    }
}

// A box holds the protocol; what comes in meanwhile waits, in its order.
TEST_F(FollowerTest, AnOpenBoxHoldsTheProtocol) {
    start_as_black();
    script.think = answer_with("19-23");
    int lines_in_box = 0;
    in_message_box = [&] {
        in_message_box = nullptr;
        ASSERT_TRUE(peer_send_joined(peer, {"Cone", "Ctwo"}));
        run_for(200);
        lines_in_box = count_lines("> Cone");
    };
    run({sends(move_message_text(1, 50))});
    EXPECT_TRUE(run_until([] { return count_lines("> Ctwo") > 0; }));
    EXPECT_EQ(lines_in_box, 0);
    run({hears(move_message_text(19, 23))});
    auto lines = protocol_lines();
    std::erase(lines, "< " + move_message_text(19, 23));
    EXPECT_EQ(lines[lines.size() - 1], "> Ctwo");
    EXPECT_EQ(lines[lines.size() - 2], "> Cone");
}

TEST_F(FollowerTest, APeerThatLeavesDuringABoxIsHandledBehindIt) {
    start_as_black();
    in_message_box = [&] {
        in_message_box = nullptr;
        peer_close(peer);
        run_for(100);
        EXPECT_EQ(count_lines("< Connection lost"), 0);
    };
    ASSERT_TRUE(peer_send(peer, move_message_text(1, 50)));
    EXPECT_TRUE(run_until([] { return count_lines("< Connection lost") == 1; }));
    expect_ready();
}

TEST_F(FollowerTest, AMoveOutOfTurnIsPlayedLikeAnyOther) {
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    script.think = answer_with("19-23");
    const std::jthread releases = release_next_search();
    run({sends(move_message_text(33, 28)), hears(move_message_text(19, 23))});
    EXPECT_EQ(game.history_count, 3);
}

TEST_F(FollowerTest, APonderedReplyIsSentAtOnce) {
    settings.pondering_on = 1;
    script.predict = answer_with("19-23");
    script.think = [](const Position& position, int side, const MoveList& list) {
        return answer_with(position.white & mask_of_square[31] ? "32-28" : "28x19")(position, side, list);
    };
    start_as_white();
    // White has searched behind 19-23 already.
    ASSERT_TRUE(run_until([] { return search_thread.ponder_done; }));
    const int searches = script.searches;
    settings.pondering_on = 0;
    run({sends(move_message_text(19, 23)), hears(move_message_text(28, 19, {23}))});
    EXPECT_EQ(script.searches, searches);
    EXPECT_EQ(clock_state.clock_moves, 2);
}

TEST_F(FollowerTest, APonderSearchThatRunsBecomesTheRealOne) {
    settings.pondering_on = 1;
    script.predict = answer_with("19-23");
    start_as_white();
    terminate_connection_command();
    script.predict = [](const Position& position, int side, const MoveList& list) {
        script.hold = true;
        return answer_with("19-23")(position, side, list);
    };
    start_as_white();
    wait_within_search();
    script.think = answer_with("28x19");
    const int searches = script.searches;
    settings.pondering_on = 0;
    std::jthread releases([] {
        while (search_thread.pondering) std::this_thread::yield();
        script.hold = false;
    });
    run({sends(move_message_text(19, 23)), hears(move_message_text(28, 19, {23}))});
    EXPECT_EQ(script.searches, searches);
}

TEST_F(FollowerTest, AnotherReplyThanThePredictedIsSearched) {
    settings.pondering_on = 1;
    script.predict = [](const Position& position, int side, const MoveList& list) {
        script.hold = true;
        return answer_with("19-23")(position, side, list);
    };
    start_as_white();
    wait_within_search();
    script.think = answer_with("37-32");
    settings.pondering_on = 0;
    const std::jthread releases = release_next_search();
    run({sends(move_message_text(18, 23)), hears(move_message_text(37, 32))});
}

// Claims by this side.

TEST_F(FollowerTest, AWinIsClaimedAndTheWinningMoveStaysUnsent) {
    script.value = -4000;  // good for white
    serve({sends(request_from_start('W')), hears(ACCEPTED), hears("E30"), hears_nothing(50)});
    expect_counters(1, 0, 0, 0);
    expect_filed("Peer", "Tessarin", "2-0");
    EXPECT_EQ(appended[0].positions, 2) << "with the move that was not sent";
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEEND sent, WIN claimed.");
    EXPECT_EQ(stats_written, 1);
    EXPECT_EQ(dxp_state.match_games, 0) << "until the other side has answered";
    EXPECT_FALSE(search_thread.searching);
    run({sends("E00"), hears_nothing(50)});
    EXPECT_EQ(dxp_state.match_games, 1);
    expect_counters(1, 0, 0, 0);
    EXPECT_EQ(appended.size(), 1u);
}

// It is counted and filed, so the next game is not to take its place.
TEST_F(FollowerTest, AClaimedGameStaysThoughThePeerGoesWithoutAnAnswer) {
    script.value = -4000;
    match_hooks.read_match_stats = [](MatchCounters&) { return dxp_state.match_wins; };
    for (int games = 1; games <= 2; ++games) {
        serve({sends(request_from_start('W')), hears(ACCEPTED), hears("E30"), closes()});
        ASSERT_TRUE(run_until([] { return dxp_connection.connection_state == DXP_UNCONNECTED; }));
        EXPECT_EQ(dxp_state.match_games, games);
        expect_counters(games, 0, 0, 0);
    }
}

TEST_F(FollowerTest, ALossIsClaimed) {
    script.value = 4000;
    serve({sends(request_from_start('W')), hears(ACCEPTED), hears("E10")});
    expect_counters(0, 0, 1, 0);
    expect_filed("Peer", "Tessarin", "0-2");
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEEND sent, LOSS claimed.");
}

TEST_F(FollowerTest, ClaimsOfBlackAreTheOtherWayRound) {
    start_as_black();
    script.value = 4000;
    script.think = answer_with("19-23");
    run({sends(move_message_text(33, 28)), hears("E30")});
    expect_counters(1, 0, 0, 0);
    expect_filed("Tessarin", "Peer", "0-2");
}

TEST_F(FollowerTest, ADrawIsClaimedAfterSixDrawishValues) {
    script.think = first_move;
    script.value = 1;
    serve({sends(request_of_position('W', "W:WK50,31:BK1,20")), hears(ACCEPTED), hears("M0000*")});
    EXPECT_TRUE(line_comes("< draws: 1"));
    game.draw_counter = 4;
    run({sends(move_message_text(20, 24)), hears("M0000*")});
    EXPECT_TRUE(line_comes("< draws: 5"));
    run({sends(move_message_text(24, 29)), hears("E20")});
    expect_counters(0, 1, 0, 0);
    expect_filed("Peer", "Tessarin", "1-1");
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEEND sent, DRAW claimed.");
    EXPECT_EQ(protocol_lines().back(), "< E20");
}

TEST_F(FollowerTest, TheMoveLimitEndsTheGameWithoutAResult) {
    serve({sends(game_request_text("Peer", 'W', "005", "002")), hears(ACCEPTED),
           hears(move_message_text(32, 28)), [](Peer&) { script.think = first_move; },
           sends(move_message_text(19, 23)), hears("E00"), hears_nothing(50)});
    expect_counters(0, 0, 0, 1);
    expect_filed("Peer", "Tessarin", "*");
    EXPECT_EQ(events_of("status").back(), "status DXP_GAMEEND sent, unknown result.");
}

TEST_F(FollowerTest, ARequestForNoMovesHasNoLimit) {
    serve({sends(game_request_text("Peer", 'W', "005", "000")), hears(ACCEPTED),
           hears(move_message_text(32, 28))});
    clock_state.clock_moves = 5000;
    script.think = first_move;
    run({sends(move_message_text(19, 23)), hears("M0000*")});
    EXPECT_FALSE(dxp_state.moves_limited);
    run({sends(request_from_start('Z')), hears(ACCEPTED)});
    EXPECT_TRUE(dxp_state.moves_limited);
}

TEST_F(FollowerTest, WithIncrementAGameHas130Moves) {
    serve({sends(fischer_request_text("Peer", 'W', "300.50", "2.0000")), hears(ACCEPTED),
           hears(move_message_text(32, 28))});
    clock_state.clock_moves = 128;
    script.think = first_move;
    run({sends(move_message_text(19, 23)), hears("M0000*")});
    EXPECT_EQ(clock_state.clock_moves, 129);
    game.draw_counter = 0;
    run({sends(move_message_text(14, 19)), hears("E00")});
    expect_counters(0, 0, 0, 1);
}

TEST_F(FollowerTest, TheLastManTakenIsAWin) {
    script.think = first_move;
    serve({sends(request_of_position('W', "W:W28:B23")), hears(ACCEPTED), hears("M0000281901*")});
    // Black has nothing left: whatever it sends, white has won.
    run({sends(move_message_text(1, 6)), hears("E30")});
    expect_counters(1, 0, 0, 0);
}

TEST_F(FollowerTest, WithoutAMoveTheGameIsLost) {
    script.think = search_really;
    serve({sends(request_of_position('W', "W:W6:B1")), hears(ACCEPTED), hears("E10")});
    expect_counters(0, 0, 1, 0);
    expect_filed("Peer", "Tessarin", "0-2");
}
