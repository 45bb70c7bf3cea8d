#include "control/game.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "control/game_clock.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/ui.h"
#include "records/game_pane.h"
#include "search/score.h"

Game game;

namespace {

constexpr int32_t INCREMENTAL_MOVES = 130;
constexpr int32_t SURE_VALUE = 2000;      // a value beyond it decides a game that reached its last move
constexpr int32_t SEARCHED_VALUE = 1500;  // the same when it was searched for
constexpr int MAX_DRAW_PIECES = 16;
constexpr int32_t DRAWISH_VALUES = 6;

GameResult win_for(int winner, int side) { return winner == side ? GAME_WIN : GAME_LOSS; }

// The number of moves after which a game is judged by its value.
int64_t adjudication_limit() {
    return settings2.match_incremental ? INCREMENTAL_MOVES : int64_t{settings.clock_moves_limit} - 1;
}

// The winner by a value at the last move of a game; -1 if it decides nothing.
int adjudicated_winner(int32_t value, bool real_search) {
    if (value > SURE_VALUE || (real_search && value >= SEARCHED_VALUE)) return BLACK;
    if (value < -SURE_VALUE || (real_search && value < -(SEARCHED_VALUE - 1))) return WHITE;
    return -1;
}

bool is_drawish(int32_t value) { return value % 2 != 0 && std::abs(value) < 8; }

GameResult drawn_or_going_on() { return game.draw_counter < DRAWISH_VALUES ? GAME_GOES_ON : GAME_DRAW; }

void put_back_kept_game() {
    if (game.kept_last == 0) return;
    game.game_history = game.kept_history;
    game.history_last = std::exchange(game.kept_last, 0);
    move_in_game_history(std::min(game.history_count, game.history_last));
    game_text_update();
}

}  // namespace

void reset_game() { game = Game{}; }

std::string today_text() {
    const std::time_t now = std::time(nullptr);
    const std::tm* const day = std::localtime(&now);
    char text[40] = "";
    if (day)
        std::snprintf(text, sizeof text, "%d.%02d.%02d", day->tm_year + 1900, day->tm_mon + 1, day->tm_mday);
    return text;
}

void set_board(const Position& position, int side) {
    game.board = position_after(move_to(position), side);
    game.board_side = side;
    ui.set_side_button(side);
}

void new_game() {
    set_board(START_POSITION, WHITE);
    restart_from_board();
    game.headers = GameHeaders{};
    std::snprintf(game.headers.date.data(), game.headers.date.size(), "%s", today_text().c_str());
}

void restart_history(const Position& position, int side) {
    ReplayState& first = game.game_history[0];
    first = {0, side, position_after(move_to(position), side)};
    first.setup_flag = !is_initial_state(first);
    game.history_count = 1;
    game.history_last = 1;
    ++game.games_begun;
    game.kept_last = 0;
    game.draw_counter = 0;
}

void restart_from_board() {
    restart_history(game.board, game.board_side);
    game_text_update();
}

void keep_game() {
    game.kept_history = game.game_history;
    game.kept_last = game.history_last;
}

void addto_game_history(const Position& position, int side, int32_t setup_flag) {
    if (game.history_count >= MAX_HISTORY) return;
    game.game_history[static_cast<size_t>(game.history_count)] = {setup_flag, side,
                                                                  position_after(move_to(position), side)};
    game.history_last = ++game.history_count;
}

int move_in_game_history(int n) {
    if (n < 1 || n > game.history_last) return 1;
    game.history_count = n;
    const ReplayState& entry = game.game_history[static_cast<size_t>(n - 1)];
    set_board(entry.position, entry.side);
    ui.redraw_board();
    return 0;
}

std::span<const ReplayState> played_history() {
    return std::span(game.game_history).first(static_cast<size_t>(game.history_count));
}

std::span<const ReplayState> whole_history() {
    return std::span(game.game_history).first(static_cast<size_t>(game.history_last));
}

std::span<const ReplayState> users_history() {
    if (game.kept_last == 0) return whole_history();
    return std::span(game.kept_history).first(static_cast<size_t>(game.kept_last));
}

void game_text_update() {
    std::array<char, GAME_PANE_SIZE> text;
    TextRange current;
    game_pane_text(text.data(), text.size(), whole_history(), game.history_count, current);
    ui.set_game_text(text.data(), current.begin, current.end);
}

void clear_highlights() { game.highlight_count = 0; }

void clear_marks() {
    if (game.highlight_count == 0) return;
    clear_highlights();
    ui.redraw_board();
}

void add_highlight(int square) {
    if (square < 1 || square > SQUARES || game.highlight_count >= MAX_HIGHLIGHTS) return;
    game.highlights[static_cast<size_t>(game.highlight_count++)] = square;
}

void set_gui_mode(int32_t mode) {
    if (mode == SETUP_MODE) {
        restart_from_board();
        show_status(TEXT_SETUP_HINT);
    } else if (game.gui_mode == SETUP_MODE) {
        restart_from_board();
        show_status("");
    }
    if (is_analyze_mode(game.gui_mode) && !is_analyze_mode(mode)) put_back_kept_game();
    if (mode != NORMAL_MODE) search_thread.ponder_done = false;
    game.gui_mode = mode;
    update_menu();
    update_title();
}

GameResult game_result(const Position& position, int side, int32_t value, bool real_search) {
    if (!position.black) return win_for(WHITE, side);
    if (!position.white) return win_for(BLACK, side);
    if (value >= MATE_SCORE - 1) return win_for(BLACK, side);
    if (value <= -(MATE_SCORE - 1)) return win_for(WHITE, side);
    if (clock_state.clock_moves >= adjudication_limit()) {
        const int winner = adjudicated_winner(value, real_search);
        if (winner >= 0) return win_for(winner, side);
    }
    if (bit_count(position.black | position.white) <= MAX_DRAW_PIECES) {
        if (!real_search) return drawn_or_going_on();
        if (is_drawish(value)) {
            ++game.draw_counter;
            return drawn_or_going_on();
        }
    }
    game.draw_counter = 0;
    return GAME_GOES_ON;
}
