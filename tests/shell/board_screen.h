// A screen that counts what the tests of the board ask for, and a game without an engine to play on.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control/game.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/ui.h"
#include "records/fen.h"

struct BoardScreen {
    int redraws = 0;
    std::vector<int32_t> marks;  // at the last redraw that had any
    std::string status;
};
inline BoardScreen screen;

inline std::vector<int32_t> marks_now() {
    return {game.highlights.begin(), game.highlights.begin() + game.highlight_count};
}

class BoardGameTest : public testing::Test {
  protected:
    void SetUp() override {
        screen = {};
        ui = no_ui();
        ui.redraw_board = [] {
            ++screen.redraws;
            if (game.highlight_count) screen.marks = marks_now();
        };
        ui.set_status_text = [](const char* text) { screen.status = text; };
        settings = make_default_settings({});
        settings2 = make_default_settings2();
        reset_panes();
        reset_game();
        new_game();
        set_gui_mode(TWO_PLAYERS_MODE);
        screen.redraws = 0;
    }
    void TearDown() override {
        ui = no_ui();
        search_thread.searching = 0;
        search_thread.pondering = 0;
        search_thread.search_finished = 0;
        reset_game();
    }
    // Sets the position up as one that the game began with.
    static void set_position(const Position& position, int side) {
        set_board(position, side);
        restart_history(game.board, side);
        clear_highlights();
    }
    static void set_position(const std::string& fen) {
        Position position;
        int side = WHITE;
        ASSERT_EQ(fen_to_position(fen.c_str(), position, side), 0) << fen;
        set_position(position, side);
    }
    static std::string fen_now() {
        char text[FEN_TEXT_SIZE];
        position_to_fen(game.board, game.board_side, text);
        return text;
    }
};
