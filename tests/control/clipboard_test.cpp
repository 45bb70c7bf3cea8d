#include "control/clipboard.h"

#include "records/pdn_write.h"
#include "tests/control/record_fixture.h"

namespace {

class Clipboard : public RecordTest {
  protected:
    static void paste(const std::string& text) {
        clipboard = text;
        paste_command();
    }
};

constexpr const char* START_FEN =
    "W:W31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47,48,49,50:"
    "B1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20";

}  // namespace

TEST_F(Clipboard, PastesAPosition) {
    play("32-28");
    set_game_header(game.headers, "Event", "mine");
    game.headers.result = RESULT_DRAW;
    clear_events();
    paste(" b:w31,k32:b1 and whatever");
    EXPECT_EQ(fen_now(), "B:W31,K32:B1");
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    EXPECT_STREQ(game.headers.event.data(), "mine") << "headers stay";
    EXPECT_EQ(game.headers.result, RESULT_DRAW);
    EXPECT_EQ(drawn_game_text, "FEN\n");
    EXPECT_EQ(count_events("board B:W31,K32:B1"), 1);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_EQ(events_of("side").back(), "side B");
}

TEST_F(Clipboard, TheInitialPositionIsNoSetPosition) {
    paste(START_FEN);
    EXPECT_EQ(game.game_history[0].setup_flag, 0);
    EXPECT_EQ(drawn_game_text, "");
}

TEST_F(Clipboard, ANoteThatBeginsWithWhiteIsAPosition) {
    paste("White wins on 28 soon");
    EXPECT_EQ(fen_now(), "W:W:B");
    paste("  \"B:W10:B:\"");
    EXPECT_EQ(fen_now(), "B:W10:B");
}

TEST_F(Clipboard, PastesTheFirstGame) {
    set_game_header(game.headers, "Event", "mine");
    const std::string text = "[Event \"other\"] 1. 32-28 19-23 2. 28x19 14x23 1-0 [Event \"next\"] 31-27 *";
    paste(text);
    expect_game(entries_of(text));
    EXPECT_EQ(game.history_count, 5);
    EXPECT_STREQ(game.headers.event.data(), "mine");
    EXPECT_EQ(drawn_game_text, "1. 32-28  19-23  \n2. 28x19  14x23\n");
}

TEST_F(Clipboard, ATagAloneIsAGameWithoutMoves) {
    set_position("B:W31:B1");
    paste("[Event \"x\"]");
    EXPECT_EQ(fen_now(), START_FEN);
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(game.game_history[0].setup_flag, 0);
}

TEST_F(Clipboard, AFenTagIsAGame) {
    paste("[FEN \"B:W31:B1\"]\r\n*\r\n");
    EXPECT_EQ(fen_now(), "B:W31:B1");
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
}

TEST_F(Clipboard, WhatIsNeitherChangesNothing) {
    play("32-28");
    finish_search();
    const std::string before = fen_now();
    const int count = game.history_count;
    for (const char* text : {"", " \r\n", "*", "1. 2. 3.", " 1-0 0-2 "}) {
        paste(text);
        EXPECT_EQ(fen_now(), before) << text;
        EXPECT_EQ(game.history_count, count) << text;
    }
    clipboard_empty = true;
    paste("W:W31:B1");
    EXPECT_EQ(fen_now(), before);
    EXPECT_EQ(count_events("box"), 0);
}

TEST_F(Clipboard, ABrokenGameShowsItsLastPositionTwice) {
    const std::string text = "32-28 20-15 37-32";
    paste(text);
    expect_game(entries_of(text));
    EXPECT_EQ(game.history_last, 3);
    EXPECT_EQ(drawn_game_text, "1. 32-28  \n");
    paste("32-28 19-23 31-32");
    EXPECT_EQ(game.history_last, 4);
    EXPECT_EQ(drawn_game_text, "1. 32-28  19-23  \n2. ");
}

TEST_F(Clipboard, ATextIsCutAt19999Bytes) {
    ASSERT_EQ(CLIPBOARD_TEXT_SIZE, 20000u);
    const std::string game_text = "32-28 19-23";
    for (const size_t length : {19999u, 20000u, 20001u}) {
        paste(std::string(length - game_text.size(), ' ') + game_text);
        // One byte short the last move reads 19-2 and two short 19-, which is no move at all.
        const std::string moves = game_text.substr(0, game_text.size() - (length - 19999));
        expect_game(entries_of(moves));
        EXPECT_EQ(game.history_last, length == 20001 ? 2 : 3) << length;
    }
    paste(std::string(19999, ' ') + "W:W31:B1");
    EXPECT_EQ(game.history_last, 2) << "nothing but blanks is left";
    paste(std::string(19998, ' ') + "W:W31:B1");
    EXPECT_EQ(fen_now(), "W:W:B");
}

TEST_F(Clipboard, TheReaderBoundsTheTextAndEndsIt) {
    clipboard = std::string(30000, 'x');
    std::vector<char> buffer(CLIPBOARD_TEXT_SIZE + 1, '#');
    EXPECT_TRUE(clipboard_read_text(buffer.data()));
    EXPECT_EQ(std::string(buffer.data()), std::string(19999, 'x'));
    EXPECT_EQ(buffer.back(), '#');
    clipboard_empty = true;
    buffer[0] = '!';
    EXPECT_FALSE(clipboard_read_text(buffer.data()));
    EXPECT_EQ(buffer[0], '!');
}

TEST_F(Clipboard, PasteStopsTheSearchAndResetsTheClock) {
    script.hold = true;
    clock_start_command();
    play("32-28");
    wait_until_held();
    paste("W:W31:B1");
    EXPECT_EQ(fen_now(), "W:W31:B1");
    EXPECT_FALSE(search_thread.searching);
    EXPECT_EQ(events_of("menu").back().substr(7, 1), "1") << "the clock can be started";
    timer_tick();
    EXPECT_EQ(fen_now(), "W:W31:B1") << "the result of the search is thrown away";
    EXPECT_EQ(game.highlight_count, 0);
}

TEST_F(Clipboard, NoPasteInDxp) {
    set_gui_mode(DXP_MODE);
    paste("W:W31:B1");
    EXPECT_EQ(fen_now(), START_FEN);
}

TEST_F(Clipboard, CopiesThePosition) {
    set_position("B:W31,K46:B1");
    clear_events();
    copy_position_command();
    EXPECT_EQ(clipboard, "[FEN \"B:W31,K46:B1\"]\r\n*\r\n");
    EXPECT_EQ(events().back(), "box Position to clipboard: [FEN \"B:W31,K46:B1\"]\r\n*\r\n");
}

TEST_F(Clipboard, CopiesTheGame) {
    paste("32-28 19-23");
    game.headers = GameHeaders{};
    set_game_header(game.headers, "White", "me");
    game.headers.result = RESULT_BLACK_WINS;
    back_command();
    copy_game_command();
    const std::string expected =
        "[Event \"\"]\r\n[Date \"\"]\r\n[White \"me\"]\r\n[Black \"\"]\r\n[Result \"0-2\"]\r\n"
        "1. 32-28 19-23 *\r\n\r\n";
    EXPECT_EQ(clipboard, expected) << "moves ahead of the board belong to the game";
    EXPECT_EQ(events().back(), "box Game to clipboard: " + expected);
}

TEST_F(Clipboard, ABusyClipboardIsNotTold) {
    ui.write_clipboard = [](const char*) { return false; };
    EXPECT_FALSE(clipboard_write_text("x"));
    clear_events();
    copy_position_command();
    EXPECT_EQ(count_events("box Position to clipboard"), 1) << "the text is shown all the same";
    EXPECT_EQ(events().size(), 1u);
}

TEST_F(Clipboard, CopyingStopsNoSearch) {
    script.hold = true;
    play("32-28");
    wait_until_held();
    set_gui_mode(DXP_MODE);
    copy_game_command();
    copy_position_command();
    EXPECT_TRUE(search_thread.searching);
    EXPECT_EQ(count_events("box"), 2);
    set_gui_mode(NORMAL_MODE);
}

TEST_F(Clipboard, APositionCopiedAndPastedIsTheSame) {
    std::mt19937 random(31);
    for (int i = 0; i < 500; ++i) {
        const Position position = random_position(random, 20, 1 + i % 7);
        set_board(position, position.side);
        restart_history(position, position.side);
        copy_position_command();
        new_game_command();
        paste_command();
        expect_game({ReplayState{game.game_history[0].setup_flag, position.side, position}});
        if (HasFailure()) return;
    }
}

TEST_F(Clipboard, AGameCopiedAndPastedIsTheSame) {
    std::mt19937 random(32);
    int set_within = 0, black_first = 0, paths = 0;
    for (int i = 0; i < 200; ++i) {
        const std::vector<ReplayState> entries = random_game(random, 50, i % 3 != 0);
        set_game(entries);
        copy_game_command();
        new_game_command();
        paste_command();
        expect_game(entries);
        if (HasFailure()) return;
        for (size_t entry = 1; entry < entries.size(); ++entry) set_within += entries[entry].setup_flag;
        black_first += entries[0].side == BLACK;
        for (size_t at = clipboard.find('x'); at != std::string::npos; at = clipboard.find('x', at + 1))
            paths += clipboard[clipboard.find_first_not_of("0123456789", at + 1)] == 'x';
    }
    EXPECT_GT(set_within, 50);
    EXPECT_GT(black_first, 30);
    EXPECT_GT(paths, 30);
}

// Positions that are set up take more room than moves.
TEST_F(Clipboard, AGameOfManySetPositionsIsCopiedWhole) {
    const ReplayState start = state_of("W:W31-50:B1-20", 1), moved = state_of("B:W28,31,33-50:B1-20", 0);
    std::vector<ReplayState> entries{ReplayState{}, moved};
    while (entries.size() < 300) entries.insert(entries.end(), {start, moved});
    set_game(entries);
    copy_game_command();
    EXPECT_GT(clipboard.size(), GAME_TEXT_SIZE);
    EXPECT_TRUE(clipboard.ends_with(" *\r\n\r\n")) << clipboard;
}

TEST_F(Clipboard, A800EntryGameIsCopiedWithinItsBuffer) {
    set_position("W:WK47:BK15");
    const char* const moves[] = {"47-36", "15-10", "36-47", "10-15"};
    std::string text = "[FEN \"W:WK47:BK15\"]";
    for (int i = 0; i < 810; ++i) text += std::string(" ") + moves[i % 4];
    for (const int steps : {798, 799, 800}) {
        // The tag and the steps, each with its blank.
        paste(text.substr(0, 20 + static_cast<size_t>(steps) * 6));
        EXPECT_EQ(game.history_last, std::min(steps + 1, 800)) << steps;
        const std::string shown = fen_now();
        copy_game_command();
        EXPECT_LT(clipboard.size(), GAME_TEXT_SIZE);
        EXPECT_TRUE(clipboard.ends_with(" *\r\n\r\n"));
        paste_command();
        EXPECT_EQ(game.history_last, std::min(steps + 1, 800));
        EXPECT_EQ(fen_now() == shown, steps < 800) << "what was not recorded is not copied";
    }
}
