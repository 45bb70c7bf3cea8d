// How a follower's games end by the other side, and how moves are taken back.
#include "control/game_clock.h"
#include "tests/dxp/follower_fixture.h"

// Ends by the other side.

TEST_F(FollowerTest, ThePeersClaimsAreCountedAndAnswered) {
    struct Row {
        const char* text;
        int32_t DxpState::*counter;
        const char* result;
    };
    const Row rows[] = {{"E00", &DxpState::match_unknowns, "*"}, {"E10", &DxpState::match_wins, "2-0"},
                        {"E20", &DxpState::match_draws, "1-1"},  {"E30", &DxpState::match_losses, "0-2"},
                        {"E03", &DxpState::match_unknowns, "*"}, {"E90", &DxpState::match_unknowns, "*"},
                        {"E", &DxpState::match_unknowns, "*"},   {"EA0", &DxpState::match_unknowns, "*"},
                        {"E3", &DxpState::match_losses, "0-2"}};
    serve({});
    int games = 0;
    for (const Row& row : rows) {
        appended.clear();
        const int32_t before = dxp_state.*row.counter;
        run({sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28)),
             sends(row.text), hears("E00"), hears_nothing(20)});
        EXPECT_EQ(dxp_state.*row.counter, before + 1) << row.text;
        expect_filed("Peer", "Tessarin", row.result);
        EXPECT_EQ(dxp_state.match_games, ++games);
        EXPECT_EQ(stats_written, games);
        EXPECT_EQ(events_of("status").back(), "status DXP_GAMEEND received and acknowledged.");
    }
    EXPECT_EQ(events_of("title").back(), "title Tessarin vs Peer:  1 wins, 2 losses, 1 draws, 5 unknowns");
}

TEST_F(FollowerTest, AnEndIsShownInTheStatusLine) {
    start_as_black();
    run({sends("E30"), hears("E00")});
    EXPECT_EQ(count_events("status DXP_GAMEEND received, reason 3, stop code 0"), 1);
    expect_counters(0, 0, 1, 0);
    expect_filed("Tessarin", "Peer", "2-0");
}

TEST_F(FollowerTest, AnEndInMidSearchThrowsItsResultAway) {
    script.hold = true;
    serve({sends(request_from_start('W')), hears(ACCEPTED)});
    wait_within_search();
    run({sends("E20"), hears("E00"), hears_nothing(100)});
    EXPECT_EQ(game.history_count, 1) << "no move was made";
    expect_counters(0, 1, 0, 0);
    EXPECT_FALSE(search_thread.searching);
    EXPECT_FALSE(search_thread.search_finished);
}

// The search has ended, but nobody has looked: its move is not played either.
TEST_F(FollowerTest, AnEndBehindAnUnseenResultThrowsItAway) {
    start_as_black();
    script.think = first_move;
    start_search();
    ASSERT_TRUE(wait_for_search());
    ASSERT_TRUE(search_thread.search_finished);
    ASSERT_TRUE(peer_send(peer, "E20"));
    const DxpRing& ring = dxp_connection.link->ring;
    while (ring.write_index - ring.read_index < 4) std::this_thread::yield();
    dxp_handle_message(DXP_GAMEEND);
    run({hears("E00"), hears_nothing(50)});
    EXPECT_EQ(game.history_count, 1);
    expect_counters(0, 1, 0, 0);
}

TEST_F(FollowerTest, EndsThatCrossAreEachTheOthersAnswer) {
    script.value = -4000;
    serve({sends(request_from_start('W')), hears(ACCEPTED), hears("E30"), sends("E30"), hears_nothing(50)});
    EXPECT_EQ(dxp_state.match_games, 1);
    expect_counters(1, 0, 0, 0);
    EXPECT_EQ(appended.size(), 1u);
}

TEST_F(FollowerTest, AnEndOfNoGameIsAnsweredAndCountsNothing) {
    serve({sends("E30"), hears("E00"), sends("E10"), hears("E00")});
    EXPECT_EQ(dxp_state.match_games, 0);
    expect_counters(0, 0, 0, 0);
    EXPECT_TRUE(appended.empty());
    EXPECT_EQ(stats_written, 0);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    run({sends(request_from_start('Z')), hears(ACCEPTED), sends("E30"), hears("E00"), sends("E30"),
         hears("E00")});
    EXPECT_EQ(dxp_state.match_games, 1);
    expect_counters(0, 0, 1, 0);
}

// Two programs that answer every end would go on for ever.
TEST_F(FollowerTest, AnswersToClaimsOfNoGameComeToAnEnd) {
    serve({});
    int answers = 0;
    run({[&](Peer& p) {
        std::string text;
        for (answers = 0; answers < 50; ++answers)
            if (!peer_send(p, "E10") || !peer_receive(p, text, 1500)) break;
    }});
    EXPECT_GE(answers, 2);
    EXPECT_LT(answers, 50);
    run({sends("K0"), sends("E10"), hears("E00")});
}

// A peer that answers every end, also the answer to its own and a claim that crossed its own: no answer to
// that is left over for the next game.
TEST_F(FollowerTest, APeerThatAnswersEveryEndEndsNoFurtherGame) {
    start_as_black();
    for (int i = 0; i < 3; ++i)
        run({sends("E10"), hears("E00"), sends("E00"), hears_nothing(20), sends(request_from_start('Z')),
             hears(ACCEPTED), hears_nothing(20)});
    expect_counters(3, 0, 0, 0);
    for (int i = 0; i < 3; ++i) {
        script.value = -4000;
        run({sends(request_from_start('W')), hears(ACCEPTED), hears("E30"), sends("E10"), sends("E00"),
             hears_nothing(20)});
        script.value = 0;
        run({sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28)),
             hears_nothing(20)});
        EXPECT_EQ(dxp_state.phase, DXP_PLAYING);
    }
    EXPECT_EQ(dxp_state.match_games, 6);
    expect_counters(6, 0, 0, 0);
}

// The peer goes on without a word: its request is the answer.
TEST_F(FollowerTest, ARequestBehindAClaimCountsTheGame) {
    for (int game_number = 0; game_number < 3; ++game_number) {
        script.value = -4000;
        if (game_number == 0) serve({});
        run({sends(request_from_start('W')), hears(ACCEPTED), hears("E30")});
        EXPECT_EQ(dxp_state.match_games, game_number);
        expect_counters(game_number + 1, 0, 0, 0);
    }
    EXPECT_EQ(appended.size(), 3u);
}

TEST_F(FollowerTest, AnEndDoesNotDisturbAGameOfTheUsers) {
    serve({});
    script.hold = true;
    play("32-28");
    wait_within_search();
    run({sends("E30"), hears("E00"), sends("K0"), sends("A0"), sends(move_message_text(33, 29)),
         sends("B001W"), hears_nothing(50)});
    EXPECT_TRUE(search_thread.searching);
    script.think = answer_with("19-23");
    script.hold = false;
    EXPECT_TRUE(run_until([] { return game.history_count == 3; }));
}

TEST_F(FollowerTest, TheProtocolOfALongMatchIsShortened) {
    static int trims = 0;
    trims = 0;
    ui.trim_dxp_text = [](size_t limit, size_t kept) {
        EXPECT_EQ(limit, 15000u);
        EXPECT_EQ(kept, 1500u);
        EXPECT_EQ(count_lines("> E20"), trims) << "before the text is added";
        ++trims;
    };
    start_as_black();
    run({sends("E20"), hears("E00"), sends(request_from_start('Z')), hears(ACCEPTED), sends("E20"),
         hears("E00")});
    EXPECT_EQ(trims, 2);
}

// Taking back.

TEST_F(FollowerTest, MovesAreTakenBack) {
    start_as_white();
    script.think = answer_with("28x19");
    run({sends(move_message_text(19, 23)), hears(move_message_text(28, 19, {23}))});
    ASSERT_EQ(game.history_count, 4);
    // To black's first move: white's is kept.
    run({sends("B001Z"), hears("K0"), hears_nothing(50)});
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.history_last, 2);
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(clock_state.clock_moves, 1);
    script.think = answer_with("37-32");
    run({sends(move_message_text(18, 23)), hears(move_message_text(37, 32))});
    // To white's first move: the engine searches again, behind its answer.
    script.think = answer_with("33-29");
    run({sends("B001W"), hears("K0"), hears(move_message_text(33, 29))});
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(clock_state.clock_moves, 1);
}

TEST_F(FollowerTest, MovesOfAGameThatBlackBeganAreTakenBack) {
    script.think = first_move;
    serve({sends(request_of_position('W', "B:W31,32,46:B1,2,5")), hears(ACCEPTED),
           sends(move_message_text(1, 6)), hears("M0000*"), sends(move_message_text(2, 7)), hears("M0000*")});
    ASSERT_EQ(game.history_count, 5);
    run({sends("B002Z"), hears("K0"), hears_nothing(50)});  // entry 3
    EXPECT_EQ(game.history_count, 3);
    EXPECT_EQ(game.board_side, BLACK);
    run({sends("B002W"), hears("K0"), hears("M0000*")});  // entry 2, and the engine's new move
    EXPECT_EQ(game.history_count, 3);
}

TEST_F(FollowerTest, TakingBackOutOfRangeChangesNothing) {
    start_as_white();
    for (const char* const text : {"B002W", "B000W", "B000Z", "B999Z", "B-05W", "B", "Bxyz"}) {
        run({sends(text), hears("K0"), hears_nothing(20)});
        EXPECT_EQ(game.history_count, 2) << text;
        EXPECT_EQ(game.history_last, 2);
        EXPECT_EQ(clock_state.clock_moves, 1);
    }
}

TEST_F(FollowerTest, TakingBackInMidSearchBeginsTheSearchAnew) {
    start_as_white();
    script.hold = true;
    ASSERT_TRUE(peer_send(peer, move_message_text(19, 23)));
    wait_within_search();
    script.think = answer_with("33-29");
    const std::jthread releases = release_next_search();
    run({sends("B001W"), hears("K0"), hears(move_message_text(33, 29)), hears_nothing(50)});
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(FollowerTest, AnswersAndChatAreOnlyShown) {
    start_as_white();
    run({sends("K0"), sends("K1"), sends("Chello\tthere"), sends("C"), hears_nothing(50)});
    EXPECT_EQ(count_lines("> K0") + count_lines("> K1") + count_lines("> Chello\tthere") + count_lines("> C"),
              4);
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(FollowerTest, AnAcceptanceIsOnlyShown) {
    start_as_black();
    for (const char code : {'0', '1'})
        run({sends(game_acceptance_text("Somebody", code)), hears_nothing(30)});
    EXPECT_STREQ(dxp_state.opponent_name, "Peer");
    EXPECT_EQ(dxp_state.phase, DXP_PLAYING);
    EXPECT_TRUE(clock_state.clock_running);
}

TEST_F(FollowerTest, WhatComesWithoutAGameIsOnlyShown) {
    serve({sends(move_message_text(32, 28)), sends("B001W"), sends(game_acceptance_text("Somebody")),
           hears_nothing(50)});
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(count_lines("> B001W"), 1);
    script.value = -4000;
    run({sends(request_from_start('W')), hears(ACCEPTED), hears("E30"), sends(move_message_text(19, 23)),
         sends("B001W"), hears_nothing(50)});
    EXPECT_EQ(game.history_count, 2) << "nor behind a claim";
}
