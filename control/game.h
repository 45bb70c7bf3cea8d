// The one game of the program: the position on the board, the record of the positions that led to it, and
// what else is kept of it. The interface thread owns all of it; the search has a copy of the position.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "control/modes.h"
#include "core/board.h"
#include "records/game_headers.h"
#include "records/pdn_replay.h"

constexpr int MAX_HISTORY = 800;
constexpr int MAX_HIGHLIGHTS = 30;

// What `game_result` answers, for the side that was searched for.
enum GameResult : int32_t { GAME_DRAW = 0, GAME_WIN = 1, GAME_LOSS = 2, GAME_GOES_ON = 3 };

struct Game {
    Position board = START_POSITION;  // the three sets; the side to move is `board_side`
    int32_t board_side = WHITE;

    // Entry 0 is where the game began; its setup flag is set if that was not the initial position with white
    // to move. In a later entry it is set if the position was set up within the game.
    std::array<ReplayState, MAX_HISTORY> game_history{};
    int32_t history_count = 0;  // number of the entry on the board, from 1; the entry stands one before it
    int32_t history_last = 0;   // number of the last entry that can be reached by stepping forward
    uint32_t games_begun = 0;   // how often the history began anew: tells a game from the one before

    // The game that an analysis plays anew on the board, as it was; `kept_last` is 0 without one.
    std::array<ReplayState, MAX_HISTORY> kept_history{};
    int32_t kept_last = 0;

    std::array<int32_t, MAX_HIGHLIGHTS> highlights{};  // marked squares, 1 to 50
    int32_t highlight_count = 0;

    int32_t gui_mode = NORMAL_MODE;
    GameHeaders headers{};
    int32_t game_result_code = GAME_GOES_ON;  // after the last searched move
    int32_t draw_counter = 0;                 // drawish values in a row
};
extern Game game;

// The game as at the start of the program, before `new_game`. Shows nothing.
void reset_game();

// Today as "2024.07.31", the form of the headers.
std::string today_text();

// Puts a position on the board, without a change of the history. The button of the side to move follows.
void set_board(const Position& position, int side);

// The initial position, a history of it alone, and headers that are empty but for today's date.
void new_game();

// The history becomes this position alone, and the row of drawish values begins anew. A kept game is
// forgotten.
void restart_history(const Position& position, int side);

// The same with what is on the board, as one that is set up has no history. The game's text follows.
void restart_from_board();

// Keeps the whole game, to be put back when the mode that analyses it is left.
void keep_game();

// Adds an entry behind the one on the board; those that were to be reached by stepping forward are dropped.
// Does nothing when the game has MAX_HISTORY entries: further moves are played but not recorded.
void addto_game_history(const Position& position, int side, int32_t setup_flag);

// Puts entry `n`, from 1, on the board and redraws it: 0. 1 if there is none, and nothing changes.
int move_in_game_history(int n);

// The entries up to the one on the board, and up to the last that can be reached.
std::span<const ReplayState> played_history();
std::span<const ReplayState> whole_history();
// The user's game, whole: the kept one while it is analysed.
std::span<const ReplayState> users_history();

// Shows the game's text, with the step that led to the board coloured. After every change of the history or
// of the entry on the board.
void game_text_update();

void clear_highlights();
// The same, and the board is redrawn if there were any.
void clear_marks();
// Marks one more square; a full list ignores it, and 0, which is no square.
void add_highlight(int square);

// Takes the mode with all that follows from it. Entering or leaving SETUP_MODE restarts the history from the
// board; any mode but NORMAL_MODE gives up the result of a ponder search. A kept game is back when the modes
// that analyse games are left: the entry on the board stays, and what follows it can be reached again.
void set_gui_mode(int32_t mode);

// Judges the game after a search for `side`: by its value, positive when good for black, by the number of
// moves on the clock, and by a row of drawish values, which it counts. `real_search` is false for a forced
// move, whose value says little.
GameResult game_result(const Position& position, int side, int32_t value, bool real_search);
