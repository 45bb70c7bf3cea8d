// Whole games through the timer alone: the engine against itself, a user against the engine, and commands at
// random in all modes.
#include <array>
#include <random>
#include <string>
#include <vector>

#include "control/game_clock.h"
#include "control/time_control.h"
#include "core/notation.h"
#include "search/search_state.h"
#include "search/threads.h"
#include "tests/control/game_fixture.h"

namespace {

using Random = std::mt19937;

Random game_random(1);

int below(Random& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(std::max(limit, 1)));
}

// Of the search thread alone.
int random_move(const Position&, int, const MoveList& list) { return below(game_random, list.count); }

class WholeGame : public GameTest {
  protected:
    // The entry before the last is the position that was searched, the last one a legal move away.
    static void expect_legal_step() {
        const std::span<const ReplayState> history = played_history();
        ASSERT_GE(history.size(), 2u);
        const ReplayState& before = history[history.size() - 2];
        const ReplayState& after = history.back();
        ASSERT_EQ(after.side, before.side ^ 1);
        MoveList list;
        generate_moves(before.position, list, before.side);
        ASSERT_GE(find_move(list, move_to(after.position)), 0);
        ASSERT_TRUE(same_pieces(game.board, after.position));
        ASSERT_EQ(game.board_side, after.side);
    }
    // What is to be seen of the engine's move that now stands on the board, from the tick that found it on.
    static void expect_engine_move_shown(const std::string& before_fen, const std::string& text,
                                         const Events& rest) {
        int side = WHITE;
        const Position before = position_from(before_fen, side);
        char move[MOVE_TEXT_SIZE];
        move_text(move, before, move_to(game.board));
        std::string marks = move;
        for (char& c : marks)
            if (c == '-' || c == 'x') c = ' ';
        const std::string board = "board " + fen_now() + " [";
        Events told{"picture 8"};
        if (panes_before != text) told.push_back("status " + text);
        told.push_back(game.board_side == WHITE ? "side W" : "side B");
        for (const Events& some : {Events{board + marks + "]"}, rest, Events{"pause 500", board + "]"}})
            told.insert(told.end(), some.begin(), some.end());
        Events seen;
        for (const std::string& event : events())
            if (!event.starts_with("game") && !event.starts_with("pane")) seen.push_back(event);
        if (seen.size() > told.size()) seen.resize(told.size());
        ASSERT_EQ(seen, told);
    }
    static std::string panes_before;

    // One search of a playing mode, from its end to what the tick made of it.
    static void finish_engine_move(const Events& rest = {}) {
        ASSERT_TRUE(wait_for_search());
        const std::string before = fen_now();
        const int count = game.history_count;
        const std::string text = search_text();
        panes_before = panes.shown_status;
        clear_events();
        timer_tick();
        if (game.history_count == count) return;
        ASSERT_EQ(game.history_count, count + 1);
        expect_legal_step();
        expect_engine_move_shown(before, text, rest);
    }
};

std::string WholeGame::panes_before;

// Whole games of the engine with itself, their moves and their ends compared with what is told.
void check_autoplay_end(int plies) {
    MoveList list;
    const int replies = generate_moves(game.board, list, game.board_side);
    const int pieces = bit_count(game.board.black | game.board.white);
    if (game.gui_mode == AUTOPLAY_MODE) {
        EXPECT_GT(replies, 0) << plies;
        EXPECT_FALSE(game.game_result_code == GAME_DRAW && pieces < 7) << plies;
        EXPECT_EQ(search_thread.searching + search_thread.search_finished, 1);
        return;
    }
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(search_thread.searching, 0);
    if (replies == 0) {
        EXPECT_EQ(panes.shown_status, "Game over");
    } else {
        EXPECT_EQ(panes.shown_status, "Draw declared");
        EXPECT_LT(pieces, 7);
        EXPECT_EQ(game.game_result_code, GAME_DRAW);
    }
}

}  // namespace

TEST_F(WholeGame, TheEnginePlaysItselfToTheEnd) {
    for (const auto think : {search_really, random_move}) {
        SCOPED_TRACE(think == random_move ? "at random" : "by search");
        game_random.seed(7);
        for (int n = 0; n < 6; ++n) {
            new_game_command();
            timer_tick();
            script.think = think;
            script.value = n % 2 ? 1 : 10;
            autoplay_command();
            for (int plies = 0; game.gui_mode == AUTOPLAY_MODE && plies < 400; ++plies) {
                ASSERT_NO_FATAL_FAILURE(finish_engine_move());
                check_autoplay_end(plies);
            }
            EXPECT_EQ(game.gui_mode, NORMAL_MODE);
            discard_search();
            timer_tick();
        }
    }
}

TEST_F(WholeGame, AutoplayAgreesOnADrawOnlyWithFewPieces) {
    // Kings without an aim: the values say draw from the first move on, and seven pieces play on.
    set_position("W:WK46,K47,K48,K49:BK1,K2,K3");
    script.think = [](const Position& position, int, const MoveList& list) {
        for (int i = 0; i < list.count; ++i) {
            MoveList replies;
            const Position after = position_after(list[i], position.side ^ 1);
            if (generate_captures(after, replies, position.side ^ 1) == 0) return i;
        }
        return 0;
    };
    script.value = 1;
    autoplay_command();
    for (int plies = 0; plies < 30 && game.gui_mode == AUTOPLAY_MODE; ++plies) {
        finish_search();
        check_autoplay_end(plies);
        if (bit_count(game.board.black | game.board.white) == 7) {
            EXPECT_EQ(game.gui_mode, AUTOPLAY_MODE);
        }
    }
}

// In a game against the engine nothing is said but the engine's text, and the mode stays.
void expect_nothing_else_said() {
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_EQ(count_events("title"), 0);
    EXPECT_EQ(count_events("sound"), 0);
    for (const std::string& status : events_of("status"))
        EXPECT_TRUE(status == "status New game" || status.starts_with("status book ") ||
                    status == "status Thinking..." || status == "status no moves")
            << status;
    // The clock starts with the first search and shows that in the menu.
    for (const std::string& menu : events_of("menu"))
        EXPECT_TRUE(menu == "menu 1000 40053" || menu == "menu 1010 40053") << menu;
    clear_events();
}

// A user who plays at random against the engine, with each kind of answer to a ponder search.
TEST_F(WholeGame, AUserPlaysTheEngineWithPondering) {
    Random random(3);
    int hits_running = 0, hits_after = 0, misses_running = 0, misses_after = 0, unseen = 0;
    script.think = random_move;
    script.predict = [](const Position&, int, const MoveList& list) { return list.count - 1; };
    settings.pondering_on = 1;
    for (int n = 0; n < 10; ++n) {
        game_random.seed(static_cast<unsigned>(n));
        new_game_command();
        timer_tick();
        for (int plies = 0; plies < 120; ++plies) {
            MoveList list;
            const int count = generate_moves(game.board, list, game.board_side);
            if (count == 0) break;
            const bool ponders = search_thread.pondering != 0 && plies > 0;
            const bool ended = ponders && below(random, 2) == 0;
            const bool seen = ended && below(random, 3) != 0;
            if (ended) {
                script.hold = false;
                ASSERT_TRUE(wait_for_search());
                if (seen) timer_tick();
            }
            if (plies > 0) {
                ASSERT_EQ(search_thread.ponder_done, seen);
            }
            const int choice = below(random, 2) ? count - 1 : below(random, count);
            const bool hit = ponders && choice == count - 1;
            const int searches = script.searches;
            script.hold = false;
            if (ponders && !ended) script.hold = true;
            const int entries = game.history_count;
            const bool answered_at_once = hit && seen;
            if (answered_at_once) script.hold = true;  // for the next ponder search
            ASSERT_EQ(make_user_move(choice), 0);
            if (hit && !ended) {
                ++hits_running;
                ASSERT_EQ(script.searches, searches) << "the ponder search goes on";
                ASSERT_EQ(search_thread.pondering, 0);
            } else if (hit && seen) {
                ++hits_after;
                MoveList answers;
                if (generate_moves(search_thread.search_position, answers, search_thread.search_side) == 0)
                    break;
                ASSERT_EQ(game.history_count, entries + 2) << "the answer came at once";
            } else if (ponders) {
                ++(ended ? seen ? misses_after : unseen : misses_running);
                ASSERT_EQ(search_thread.searching + search_thread.search_finished, 1);
                ASSERT_TRUE(same_pieces(search_thread.search_position, game.board));
            }
            if (!answered_at_once) {
                script.hold = false;
                ASSERT_TRUE(wait_for_search());
                script.hold = true;
                timer_tick();
            }
            if (search_thread.searching) wait_until_held();
            if (game.history_count == entries + 1) break;  // the engine has no move
            ASSERT_EQ(game.history_count, entries + 2);
            expect_legal_step();
            ASSERT_EQ(game.history_last, game.history_count);
        }
        script.hold = false;
        expect_nothing_else_said();
    }
    EXPECT_GT(hits_running, 20);
    EXPECT_GT(hits_after, 20);
    EXPECT_GT(misses_running, 20);
    EXPECT_GT(misses_after, 20);
    EXPECT_GT(unseen, 20);
}

TEST_F(WholeGame, AUserAsksForHintsAndStopsTheEngine) {
    Random random(9);
    script.think = random_move;
    for (int n = 0; n < 8; ++n) {
        new_game_command();
        timer_tick();
        for (int plies = 0; plies < 60; ++plies) {
            script.hold = true;
            MoveList list;
            if (generate_moves(game.board, list, game.board_side) == 0) break;
            const int entries = game.history_count;
            if (below(random, 3) == 0) {
                // The engine plays the user's move too.
                search_button_command();
            } else {
                ASSERT_EQ(make_user_move(below(random, list.count)), 0);
                if (generate_moves(game.board, list, game.board_side) == 0) break;
            }
            wait_until_held();
            ASSERT_FALSE(user_may_move());
            search_button_command();
            ASSERT_TRUE(wait_for_search());
            timer_tick();
            ASSERT_GT(game.history_count, entries);
            expect_legal_step();
            if (below(random, 4) == 0) back_command();
        }
        expect_nothing_else_said();
        discard_search();
        timer_tick();
    }
}

namespace {

// Everything that a user can do, at random, and what must hold whatever he does.
class RandomWalk : public WholeGame {
  protected:
    Random random{11};
    bool hold_searches = true;
    std::array<int, 11> visits{};  // of each mode
    int mid_search = 0;            // steps that found a search running

    void expect_wide_walk() const {
        for (size_t mode = 0; mode < visits.size(); ++mode) EXPECT_GT(visits[mode], 10) << mode;
        EXPECT_GT(mid_search, 100);
        EXPECT_GT(script.searches, 100);
    }

    void step() {
        ++visits[static_cast<size_t>(game.gui_mode)];
        mid_search += search_thread.searching;
        const int kind = below(random, 10);
        if (kind < 3) {
            for (int i = below(random, 6); i >= 0; --i) timer_tick();
        } else if (kind < 6) {
            move_on_board();
        } else if (kind < 7) {
            edit_or_release();
        } else {
            run_command();
        }
    }
    void move_on_board() {
        if (!user_may_move() || game.gui_mode == SETUP_MODE) return;
        MoveList list;
        const int count = generate_moves(game.board, list, game.board_side);
        if (count > 0) make_user_move(below(random, count));
    }
    void edit_or_release() {
        if (game.gui_mode == SETUP_MODE) {
            set_square(below(random, 50) + 1, below(random, 3));
        } else if (below(random, 2) == 0) {
            script.hold = false;
            if (search_thread.searching) {
                ASSERT_TRUE(wait_for_search());
            }
            script.hold = hold_searches;
        } else {
            settings.pondering_on = below(random, 3) != 0;
            settings.sound_on = below(random, 2);
            script.value = below(random, 5) ? below(random, 40) - 20 : 3999;
        }
    }
    static void set_square(int square, int colour) {
        const uint64_t mask = set_of_square(square);
        game.board.black &= ~mask;
        game.board.white &= ~mask;
        game.board.king &= ~mask;
        if (colour == 1) game.board.black |= mask;
        if (colour == 2) game.board.white |= mask;
        const uint64_t promoted =
            (game.board.black & BLACK_PROMOTION_ROW) | (game.board.white & WHITE_PROMOTION_ROW);
        game.board.king |= promoted & mask;
    }
    void run_command() {
        static const char* const TEXTS[] = {"W:WK46,35:BK15,6",
                                            "B:W31-50:B1-20",
                                            "1. 32-28 19-23 2. 28x19 14x23 *",
                                            "1. 31-27 /FEN \"W:W31,32:B11,12\"/ 31-26 *",
                                            "nothing",
                                            "W:W:B1",
                                            "B:WK1,K2,K3:BK48,K49"};
        static const int32_t IDS[] = {40004, 40022, 40022, 40022, 40023, 40024, 40024, 40025, 40025, 40026,
                                      40027, 40030, 40031, 40039, 40040, 40041, 40053, 40053, 40054, 40055,
                                      40056, 40081, 40082, 40083, 40084, 40112, 40113, 40006, 40020, 40021};
        const int number = below(random, 40);
        if (number < 30) {
            clipboard = TEXTS[below(random, 7)];
            run_game_command(IDS[number]);
        } else if (number < 32) {
            // What the network and the analysis of games do.
            discard_search();
            set_gui_mode(number == 30 ? int32_t{DXP_MODE} : ANALYZE_GAME_MODE + below(random, 4));
            start_search();
        } else if (number < 34 && game.gui_mode == DXP_MODE) {
            discard_search();
            set_gui_mode(NORMAL_MODE);
        } else if (number == 34) {
            set_time_control(TIME_GAME_CLOCK);
            settings.clock_minutes = below(random, 90) + 1;
            settings.clock_moves_limit = below(random, 80) + 1;
        } else if (number == 35) {
            start_search();
        }
    }
    void check(int count) {
        ASSERT_TRUE(is_legal_setup(game.board)) << count << " " << fen_now();
        ASSERT_TRUE(game.board_side == WHITE || game.board_side == BLACK);
        ASSERT_GE(game.history_count, 1);
        ASSERT_LE(game.history_count, game.history_last);
        ASSERT_LE(game.history_last, MAX_HISTORY);
        ASSERT_GE(game.gui_mode, 0);
        ASSERT_LE(game.gui_mode, 10);
        ASSERT_LE(game.highlight_count, MAX_HIGHLIGHTS);
        ASSERT_GE(clock_state.clock_moves, 0);
        if (search_thread.searching && search_thread.pondering) {
            ASSERT_TRUE(game.gui_mode == NORMAL_MODE || game.gui_mode == DXP_MODE) << count;
        }
        // Wherever the history is, the board stands at its end, unless it is edited or the history is full.
        if (game.gui_mode != SETUP_MODE && game.history_count < MAX_HISTORY) {
            ASSERT_TRUE(same_pieces(game.board, played_history().back().position)) << count;
            ASSERT_EQ(game.board_side, played_history().back().side) << count;
        }
        // The only errors are those of a search in a mode without an engine.
        for (const std::string& box : events_of("box Error"))
            ASSERT_TRUE(box == "box Error: start_search() called in TWO_PLAYERS_MODE" ||
                        box == "box Error: start_search() called in SETUP_MODE")
                << box;
        clear_events();
    }
};

}  // namespace

TEST_F(RandomWalk, TenThousandCommandsWithHeldSearches) {
    script.think = random_move;
    script.predict = [](const Position& position, int, const MoveList& list) {
        return bit_count(position.black * 0x9e3779b97f4a7c15u) % list.count;
    };
    script.hold = true;
    for (int count = 0; count < 10000; ++count) {
        ASSERT_NO_FATAL_FAILURE(step());
        ASSERT_NO_FATAL_FAILURE(check(count));
    }
    expect_wide_walk();
}

TEST_F(RandomWalk, ThousandsOfCommandsWithSearchesThatEndAtOnce) {
    script.think = random_move;
    hold_searches = false;
    random.seed(12);
    for (int count = 0; count < 5000; ++count) {
        ASSERT_NO_FATAL_FAILURE(step());
        ASSERT_NO_FATAL_FAILURE(check(count));
    }
    expect_wide_walk();
}

TEST_F(RandomWalk, CommandsDuringSearchesOfTheEngineItself) {
    script.think = search_really;
    script.predict = search_really;
    hold_searches = false;
    random.seed(13);
    settings.search_threads = 2;
    threads_init(2);
    search_state.depth_limit = 7;
    for (int count = 0; count < 2000; ++count) {
        ASSERT_NO_FATAL_FAILURE(step());
        ASSERT_NO_FATAL_FAILURE(check(count));
    }
    expect_wide_walk();
}

TEST_F(RandomWalk, ManyShortGamesWithPonderingAtRandomMoments) {
    script.think = search_really;
    script.predict = search_really;
    settings.pondering_on = 1;
    for (int n = 0; n < 40; ++n) {
        new_game_command();
        for (int plies = 0; plies < 30; ++plies) {
            timer_tick();
            MoveList list;
            const int count = generate_moves(game.board, list, game.board_side);
            if (count == 0) break;
            if (user_may_move()) make_user_move(below(random, count));
            if (below(random, 3) == 0) {
                ASSERT_TRUE(wait_for_search());
            }
            if (below(random, 40) == 0) run_command();
            if (game.gui_mode == SETUP_MODE || game.gui_mode == DXP_MODE) {
                discard_search();
                set_gui_mode(NORMAL_MODE);
            }
            ASSERT_NO_FATAL_FAILURE(check(plies));
        }
    }
}
