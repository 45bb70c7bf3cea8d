// The game's own operations: the history, the highlights, the change of modes, the judging of a result.
#include "control/game.h"

#include <ctime>
#include <random>
#include <set>

#include "base/text.h"
#include "control/game_clock.h"
#include "tests/control/game_fixture.h"

namespace {

class GameState : public GameTest {
  protected:
    static void add_entries(int count) {
        for (int i = 0; i < count; ++i) {
            const int side = game.board_side ^ 1;
            set_board(game.board, side);
            addto_game_history(game.board, side, 0);
        }
    }
};

Position pieces(int black, int white) {
    Position position;
    for (int i = 0; i < black; ++i) position.black |= mask_of_square[static_cast<size_t>(i)];
    for (int i = 0; i < white; ++i) position.white |= mask_of_square[static_cast<size_t>(49 - i)];
    return position;
}

// The rule as it is told, case by case, with the counter handed in and out.
int told_result(const Position& p, int side, int value, bool real, int clock_moves, int limit, int& counter) {
    if (p.black == 0) return side == BLACK ? 2 : 1;
    if (p.white == 0) return side == WHITE ? 2 : 1;
    if (value >= 3999) return side == BLACK ? 1 : 2;
    if (value < -3998) return side == WHITE ? 1 : 2;
    if (clock_moves >= limit) {
        if (value > 2000) return side == BLACK ? 1 : 2;
        if (value < -2000) return side == WHITE ? 1 : 2;
        if (real && value >= 1500) return side == BLACK ? 1 : 2;
        if (real && value < -1499) return side == WHITE ? 1 : 2;
    }
    if (bit_count(p.black | p.white) < 17) {
        if (!real) return counter < 6 ? 3 : 0;
        if ((value & 1) && value > -8 && value < 8) {
            ++counter;
            return counter < 6 ? 3 : 0;
        }
    }
    counter = 0;
    return 3;
}

constexpr char SETUP_TEXT[] =
    "status Setup mode: use left mouse button for black pieces, right button for white.";

}  // namespace

TEST_F(GameState, ANewGameIsTheStartWithTodaysHeaders) {
    set_position("B:W31,K7:B1");
    addto_game_history(game.board, WHITE, 0);
    std::snprintf(game.headers.event.data(), game.headers.event.size(), "an event");
    game.headers.result = RESULT_DRAW;
    new_game();
    EXPECT_TRUE(same_pieces(game.board, START_POSITION));
    EXPECT_EQ(game.board.black, 0x1ffbffu);
    EXPECT_EQ(game.board.white, 0x3ff7fe00000000u);
    EXPECT_EQ(game.board_side, WHITE);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(game.game_history[0].setup_flag, 0);
    EXPECT_EQ(game.game_history[0].side, WHITE);
    EXPECT_STREQ(game.headers.event.data(), "");
    EXPECT_EQ(game.headers.result, RESULT_UNKNOWN);
    const std::time_t now = std::time(nullptr);
    char date[40];
    std::strftime(date, sizeof date, "%Y.%m.%d", std::localtime(&now));
    EXPECT_STREQ(game.headers.date.data(), date);
    EXPECT_EQ(drawn_game_text, "");
}

TEST_F(GameState, OnlyTheStartWithWhiteToMoveIsNoSetup) {
    restart_history(START_POSITION, WHITE);
    EXPECT_EQ(game.game_history[0].setup_flag, 0);
    restart_history(START_POSITION, BLACK);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    Position other = START_POSITION;
    other.king = mask_of_square[0];
    restart_history(other, WHITE);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    EXPECT_EQ(game.game_history[0].position.king, mask_of_square[0]);
}

TEST_F(GameState, TheHistoryHoldsEightHundredEntries) {
    add_entries(798);
    EXPECT_EQ(game.history_count, 799);
    add_entries(1);
    EXPECT_EQ(game.history_count, 800);
    EXPECT_EQ(game.history_last, 800);
    const ReplayState last = game.game_history[799];
    set_board(pieces(3, 3), WHITE);
    addto_game_history(game.board, WHITE, 1);
    EXPECT_EQ(game.history_count, 800);
    EXPECT_EQ(game.history_last, 800);
    EXPECT_TRUE(same_pieces(game.game_history[799].position, last.position));
    EXPECT_EQ(game.game_history[799].setup_flag, last.setup_flag);
    EXPECT_TRUE(same_pieces(game.board, pieces(3, 3)));
}

TEST_F(GameState, BackJumpsOverMovesThatAreNotRecorded) {
    set_gui_mode(TWO_PLAYERS_MODE);
    set_position("W:WK46,45:BK5,6");
    while (game.history_count < MAX_HISTORY) {
        const Position before = game.board;
        make_user_move(0);
        set_board(before, game.board_side);
        game.game_history[static_cast<size_t>(game.history_count - 1)].position = before;
    }
    make_user_move(0);
    make_user_move(0);
    EXPECT_EQ(game.history_count, MAX_HISTORY);
    EXPECT_FALSE(same_pieces(game.board, game.game_history[799].position));
    back_command();
    EXPECT_EQ(game.history_count, MAX_HISTORY - 1);
    EXPECT_TRUE(same_pieces(game.board, game.game_history[798].position));
}

TEST_F(GameState, MovingInTheHistoryTakesItsEntryAndRefusesOthers) {
    add_entries(5);
    const std::string board = fen_now();
    clear_events();
    for (const int bad : {0, -1, 7, 801, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(move_in_game_history(bad), 1);
        EXPECT_EQ(fen_now(), board);
        EXPECT_EQ(game.history_count, 6);
    }
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(move_in_game_history(2), 0);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.history_last, 6);
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(events(), (Events{"side B", "board " + fen_now() + " []"}));
    EXPECT_EQ(move_in_game_history(6), 0);
    EXPECT_EQ(fen_now(), board);
}

TEST_F(GameState, ANewEntryDropsTheForwardOnes) {
    add_entries(5);
    move_in_game_history(3);
    add_entries(1);
    EXPECT_EQ(game.history_count, 4);
    EXPECT_EQ(game.history_last, 4);
    EXPECT_EQ(move_in_game_history(5), 1);
}

TEST_F(GameState, ThirtySquaresCanBeMarked) {
    for (int square = 1; square <= 40; ++square) add_highlight(square);
    EXPECT_EQ(game.highlight_count, MAX_HIGHLIGHTS);
    EXPECT_EQ(game.highlights[29], 30);
    clear_highlights();
    EXPECT_EQ(game.highlight_count, 0);
    add_highlight(0);
    add_highlight(51);
    EXPECT_EQ(game.highlight_count, 0);
}

TEST_F(GameState, SetupRestartsTheHistoryOnItsWayInAndOut) {
    add_entries(5);
    clear_events();
    set_gui_mode(SETUP_MODE);
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(events(), (Events{"game 0-4", SETUP_TEXT, "menu 0011 0", "title the program"}));
    set_board(pieces(2, 2), BLACK);
    clear_events();
    set_gui_mode(TWO_PLAYERS_MODE);
    EXPECT_EQ(game.history_last, 1);
    EXPECT_TRUE(same_pieces(game.game_history[0].position, pieces(2, 2)));
    EXPECT_EQ(game.game_history[0].side, BLACK);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    EXPECT_EQ(events(), (Events{"game 0-4", "status ", "menu 1010 40055", "title the program"}));
}

TEST_F(GameState, NoOtherChangeOfModeTouchesTheHistory) {
    add_entries(5);
    for (int32_t from = 0; from <= 10; ++from)
        for (int32_t to = 0; to <= 10; ++to) {
            if (from == SETUP_MODE || to == SETUP_MODE) continue;
            game.gui_mode = from;
            set_gui_mode(to);
            ASSERT_EQ(game.history_count, 6);
            ASSERT_EQ(game.gui_mode, to);
        }
}

TEST_F(GameState, EveryModeButNormalGivesUpThePonderResult) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        game.gui_mode = NORMAL_MODE;
        search_thread.ponder_done = true;
        set_gui_mode(mode);
        EXPECT_EQ(search_thread.ponder_done, mode == NORMAL_MODE) << mode;
    }
    search_thread.ponder_done = true;
    set_gui_mode(NORMAL_MODE);
    EXPECT_TRUE(search_thread.ponder_done);
}

TEST_F(GameState, TheMenuFollowsTheMode) {
    const std::string told[] = {"10", "10", "10", "10", "10", "00", "00", "01", "01", "01", "01"};
    const int ticks[] = {40053, 40055, 40054, 40112, 40056, 0, 0, 0, 0, 0, 0};
    for (int32_t mode = 0; mode <= 10; ++mode) {
        const MenuState state = menu_state(mode, false);
        const std::string text =
            std::to_string(state.analyze_enabled) + std::to_string(state.cancel_analyze_enabled);
        EXPECT_EQ(text, told[mode]) << mode;
        EXPECT_EQ(state.ticked_mode_command, ticks[mode]) << mode;
        EXPECT_EQ(state.setup_ticked, mode == SETUP_MODE);
        EXPECT_TRUE(state.clock_start_enabled);
        EXPECT_FALSE(menu_state(mode, true).clock_start_enabled);
    }
}

TEST_F(GameState, ModesHaveTheirTexts) {
    const char* const told[] = {"Normal",
                                "2-Player",
                                "Analysis",
                                "Analysis allscores",
                                "Autoplay",
                                "Setup",
                                "Dxp Initiator",
                                "Analyze game",
                                "Analyze PDN",
                                "Analyze game allscores",
                                "Analyze PDN allscores"};
    char text[100];
    for (int32_t mode = 0; mode <= 10; ++mode) {
        mode_text(mode, false, text, sizeof text);
        EXPECT_STREQ(text, told[mode]);
        mode_text(mode, true, text, sizeof text);
        EXPECT_STREQ(text, mode == DXP_MODE ? "Dxp Follower" : told[mode]);
    }
    for (const int32_t mode : {-1, 11, INT32_MAX, INT32_MIN}) {
        mode_text(mode, false, text, sizeof text);
        EXPECT_STREQ(text, "Unknown");
    }
    text_source = [](int id, char* buffer, size_t size) { std::snprintf(buffer, size, "id %d", id); };
    std::set<std::string> different;
    for (int32_t mode = 0; mode <= 11; ++mode) {
        mode_text(mode, false, text, sizeof text);
        different.insert(text);
    }
    EXPECT_EQ(different.size(), 12u);
    mode_text(DXP_MODE, true, text, 4);
    EXPECT_STREQ(text, "id ");
}

TEST_F(GameState, TheTitleIsTheMatchsInDxpModeAlone) {
    mode_hooks.dxp_title = [](char* buffer, size_t size) {
        std::snprintf(buffer, size, "%s vs %s:  %d wins, %d losses, %d draws, %d unknowns", "A", "B", 1, 2, 3,
                      4);
    };
    clear_events();
    set_gui_mode(DXP_MODE);
    EXPECT_EQ(events_of("title"), Events{"title A vs B:  1 wins, 2 losses, 3 draws, 4 unknowns"});
    clear_events();
    set_gui_mode(NORMAL_MODE);
    EXPECT_EQ(events_of("title"), Events{"title the program"});
}

TEST_F(GameState, ASideWithoutPiecesHasLost) {
    EXPECT_EQ(game_result(pieces(0, 3), BLACK, 100, true), GAME_LOSS);
    EXPECT_EQ(game_result(pieces(0, 3), WHITE, 100, true), GAME_WIN);
    EXPECT_EQ(game_result(pieces(3, 0), BLACK, -100, true), GAME_WIN);
    EXPECT_EQ(game_result(pieces(3, 0), WHITE, -100, true), GAME_LOSS);
}

TEST_F(GameState, AValueOfAWonGameEndsIt) {
    EXPECT_EQ(game_result(START_POSITION, BLACK, 3999, false), GAME_WIN);
    EXPECT_EQ(game_result(START_POSITION, BLACK, 3998, false), GAME_GOES_ON);
    EXPECT_EQ(game_result(START_POSITION, WHITE, 4000, true), GAME_LOSS);
    EXPECT_EQ(game_result(START_POSITION, BLACK, -3999, true), GAME_LOSS);
    EXPECT_EQ(game_result(START_POSITION, BLACK, -3998, true), GAME_GOES_ON);
    EXPECT_EQ(game_result(START_POSITION, WHITE, -4000, true), GAME_WIN);
}

TEST_F(GameState, SixDrawishValuesInARowMakeADraw) {
    const Position few = pieces(8, 8);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(game_result(few, BLACK, i % 2 ? 7 : -7, true), GAME_GOES_ON);
    EXPECT_EQ(game_result(few, BLACK, 3, false), GAME_GOES_ON) << "counts nothing";
    EXPECT_EQ(game_result(few, BLACK, 1, true), GAME_DRAW);
    EXPECT_EQ(game_result(few, BLACK, 500, false), GAME_DRAW) << "a forced move says nothing new";
    EXPECT_EQ(game_result(few, BLACK, 8, true), GAME_GOES_ON);
    EXPECT_EQ(game.draw_counter, 0);
}

TEST_F(GameState, WhatIsNotDrawishBreaksTheRow) {
    const Position few = pieces(8, 8);
    for (const int breaker : {0, 2, -6, 9, -9, 100}) {
        game.draw_counter = 5;
        EXPECT_EQ(game_result(few, WHITE, breaker, true), GAME_GOES_ON);
        EXPECT_EQ(game.draw_counter, 0) << breaker;
    }
    game.draw_counter = 5;
    EXPECT_EQ(game_result(pieces(9, 8), WHITE, 1, true), GAME_GOES_ON) << "17 pieces";
    EXPECT_EQ(game.draw_counter, 0);
    game.draw_counter = 5;
    restart_history(few, WHITE);
    EXPECT_EQ(game_result(few, WHITE, 1, true), GAME_GOES_ON) << "another game";
}

TEST_F(GameState, ResultsAreAsToldForAllValues) {
    std::mt19937 random(5);
    const int limits[] = {0, 1, 2, 75, 90, INT32_MIN};
    const int edges[] = {0,    1,    7,     8,     -7,   -8,   1499,  1500,  1501, -1498, -1499, -1500, -1501,
                         2000, 2001, -2000, -2001, 3998, 3999, -3998, -3999, 4000, -4000, 5,     -3};
    int counter = 0;
    for (int i = 0; i < 20000; ++i) {
        settings.clock_moves_limit = limits[random() % 6];
        settings2.match_incremental = random() % 4 == 0;
        clock_state.clock_moves = static_cast<int32_t>(random() % 140);
        const int64_t limit = settings2.match_incremental ? 130 : int64_t{settings.clock_moves_limit} - 1;
        const Position p = pieces(static_cast<int>(random() % 12), static_cast<int>(random() % 12));
        const int side = static_cast<int>(random() % 2);
        const int value = edges[random() % std::size(edges)];
        const bool real = random() % 3 != 0;
        const int told = told_result(p, side, value, real, clock_state.clock_moves,
                                     static_cast<int>(std::max<int64_t>(limit, -1)), counter);
        ASSERT_EQ(game_result(p, side, value, real), told)
            << "value " << value << " side " << side << " real " << real;
        ASSERT_EQ(game.draw_counter, counter);
    }
}
