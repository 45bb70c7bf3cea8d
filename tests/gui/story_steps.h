// What happens in many stories.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/gui/stories.h"
#include "tests/gui/stories_board.h"

// The commands of the Time menu that stories choose.
constexpr int32_t TIME_ONE_SECOND = 40006;
constexpr int32_t TIME_ONE_MINUTE = 40014;

class Story : public testing::Test {
  protected:
    // Skips where programs are missing; fails where the screen did not come up.
    void SetUp() override;
};

// The positions of a game in their order, from its start.
using Positions = std::vector<Position>;

// The legal moves as positions after them, with the other side to move.
Positions successors(const Position& position);

// The squares, 1 to 50, that a move leaves and comes to.
int square_left(const Position& before, const Position& after);
int square_reached(const Position& before, const Position& after);

// Clicks a move until it is made. The squares that it leaves and reaches must tell it from the others.
void click_move(const Desk& desk, const BoardPlaceOnScreen& board, const Position& before,
                const Position& after);

// A move that two clicks can make; `number` chooses among them.
Position clickable_move(const Position& before, size_t number);

// Waits until the board shows a legal move from the last position and adds that. False if none comes.
bool wait_for_move(const Desk& desk, const BoardPlaceOnScreen& board, Positions& game);

// The commands with their dialogs.
bool save_game(const Desk& desk, const QString& path);
bool load_game(const Desk& desk, const QString& path, int index);

// The positions of the game with that index in a file, by replay; empty if there is none.
Positions game_in_file(const QString& path, int index = 0);
// Headers of the same.
std::string file_text(const QString& path);
bool write_text(const QString& path, const std::string& text);

bool same_games(const Positions& a, const Positions& b);
