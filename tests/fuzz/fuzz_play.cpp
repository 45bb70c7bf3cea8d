// Any text pasted from the clipboard, and any commands behind it, as a user at the board gives them. What the
// game holds stays a game: each entry is a legal step from the one before, a set position, or the repeated
// end of a game that broke. What is shown of it is a text with the step to the board in its place, and what
// is copied comes back by a paste.
//
// The input is the text up to its first NUL and then a byte for each command.
#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "check_game.h"
#include "cli/typed_move.h"
#include "control/clipboard.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/settings.h"
#include "control/ui.h"
#include "core/capture_lines.h"
#include "core/notation.h"
#include "records/fen.h"
#include "records/game_pane.h"
#include "records/pdn_write.h"

namespace {

struct Screen {
    std::string clipboard;
    std::string game_text;
    TextRange current;
    int side = -1;  // of the button
};
Screen screen;

void set_screen() {
    screen = Screen{};
    ui = no_ui();
    ui.read_clipboard = [](char* buffer, size_t size) {
        const size_t length = std::min(screen.clipboard.size(), size - 1);
        std::memcpy(buffer, screen.clipboard.data(), length);
        buffer[length] = '\0';
        return true;
    };
    ui.write_clipboard = [](const char* text) {
        screen.clipboard = text;
        return true;
    };
    ui.set_game_text = [](const char* text, int begin, int end) {
        screen.game_text = text;
        screen.current = {begin, end};
    };
    ui.set_side_button = [](int side) { screen.side = side; };
}

bool same_state(const ReplayState& a, const ReplayState& b) {
    return a.side == b.side && a.setup_flag == b.setup_flag && same_pieces(a.position, b.position);
}

// What the pane shows of the step to the entry on the board: its end is the move, or "FEN".
std::string shown_step() {
    const size_t begin = static_cast<size_t>(screen.current.begin);
    const size_t end = static_cast<size_t>(screen.current.end);
    FUZZ_CHECK(begin <= end && end <= screen.game_text.size());
    const std::string step = screen.game_text.substr(begin, end - begin);
    return step.substr(0, step.find_last_not_of(" \n") + 1);
}

void check_pane() {
    FUZZ_CHECK(screen.game_text.size() < GAME_PANE_SIZE);
    const std::string step = shown_step();
    if (screen.game_text.size() + 1 >= GAME_PANE_SIZE) return;  // cut
    const auto history = played_history();
    if (history.back().setup_flag) {
        FUZZ_CHECK(step == "FEN");
    } else if (history.size() == 1) {
        FUZZ_CHECK(step.empty());
    } else {
        const ReplayState& before = history[history.size() - 2];
        const int index = step_index(before, history.back());
        char move[MOVE_TEXT_SIZE] = "";
        if (index >= 0) full_move_text(before.position, move_to(history.back().position), before.side, move);
        FUZZ_CHECK(step.ends_with(move));
    }
}

void check_all() {
    check_history();
    check_board();
    FUZZ_CHECK(screen.side == game.board_side);
    check_pane();
}

// A move as the user types it is that move.
void check_typed(int index, const MoveList& list) {
    char text[MOVE_TEXT_SIZE];
    full_move_text(game.board, list[index], game.board_side, text);
    std::string problem;
    const int typed = find_typed_move(text, game.board, game.board_side, problem);
    FUZZ_CHECK(typed == (is_legal_setup(game.board) ? index : -1));
}

void play_move(uint8_t number) {
    MoveList list;
    if (has_both_colours(game.board) || generate_moves(game.board, list, game.board_side) == 0) return;
    const int index = number % list.count;
    check_typed(index, list);
    const int32_t entries = std::min(game.history_count + 1, MAX_HISTORY);
    FUZZ_CHECK(make_user_move(index) == 0 && game.history_last == entries);
    if (entries == MAX_HISTORY) new_game_command();  // what is not recorded is on the board alone
}

void copy_and_paste_game() {
    const std::vector<ReplayState> before(whole_history().begin(), whole_history().end());
    copy_game_command();
    const std::string text = screen.clipboard;
    FUZZ_CHECK(text.ends_with(" *\r\n\r\n"));
    for (size_t i = 0; i < before.size(); ++i) {
        if (has_both_colours(before[i].position)) return;  // no FEN, and no moves
        if (i > 0 && !before[i].setup_flag && step_index(before[i - 1], before[i]) < 0) return;
    }
    if (text.size() >= CLIPBOARD_TEXT_SIZE) return;
    paste_command();
    const auto after = whole_history();
    FUZZ_CHECK(std::equal(before.begin(), before.end(), after.begin(), after.end(), same_state));
}

void copy_and_paste_position() {
    if (has_both_colours(game.board)) return;
    const Position board = game.board;
    const int side = game.board_side;
    copy_position_command();
    paste_command();
    FUZZ_CHECK(same_pieces(game.board, board) && game.board_side == side && game.history_last == 1);
}

void step_to_every_entry() {
    const int32_t entries = game.history_last;
    back_to_start_command();
    check_all();
    for (int32_t i = 1; i < entries; ++i) {
        const int begin = screen.current.begin;
        forward_command();
        FUZZ_CHECK(game.history_count == i + 1 && screen.current.begin >= begin);
        check_all();
    }
}

void run_command(uint8_t command) {
    switch (command % 16) {
        case 0:
            return back_command();
        case 1:
            return forward_command();
        case 2:
            return back_to_start_command();
        case 3:
            return forward_to_end_command();
        case 4:
            return change_side_command();
        case 5:
            return copy_and_paste_game();
        case 6:
            return copy_and_paste_position();
        case 7:
            return step_to_every_entry();
        case 8:
            setup_command();
            return two_players_command();
        default:
            return play_move(static_cast<uint8_t>(command / 16));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view text = input.substr(0, input.find('\0'));
    set_screen();
    settings = make_default_settings({});
    reset_game();
    new_game();
    two_players_command();
    const Game before = game;
    screen.clipboard = text;
    paste_command();
    PdnTable games;
    const bool pasted =
        begins_like_fen(screen.clipboard.c_str()) ||
        (pdn_parse_games(screen.clipboard.substr(0, CLIPBOARD_TEXT_SIZE - 1).c_str(), games) == 0 &&
         pdn_game_count(games) > 0);
    if (!pasted) {
        FUZZ_CHECK(game.history_last == before.history_last && same_pieces(game.board, before.board));
    }
    check_all();
    for (const char command : input.substr(std::min(text.size() + 1, size))) {
        run_command(static_cast<uint8_t>(command));
        check_all();
    }
    return 0;
}
