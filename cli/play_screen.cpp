#include "cli/play_screen.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "base/text.h"
#include "cli/console.h"
#include "control/game.h"
#include "control/search_thread.h"
#include "control/text_ids.h"
#include "core/movegen.h"
#include "core/notation.h"
#include "records/fen.h"

PlayScreen play_screen;

namespace {

constexpr int BOARD_ROWS = 10;
constexpr int ROW_SQUARES = 5;
constexpr int LISTED_GAMES = 50;

char piece_letter(int square) {
    const uint64_t mask = set_of_square(square);
    const bool king = (game.board.king & mask) != 0;
    if (game.board.white & mask) return king ? 'W' : 'w';
    if (game.board.black & mask) return king ? 'B' : 'b';
    return '.';
}

std::string board_text() {
    std::string text;
    for (int row = 0; row < BOARD_ROWS; ++row) {
        const int first = row * ROW_SQUARES + 1;
        text += row % 2 ? " " : "   ";
        for (int i = 0; i < ROW_SQUARES; ++i) {
            text += piece_letter(first + i);
            if (i + 1 < ROW_SQUARES) text += "   ";
        }
        char numbers[24];
        std::snprintf(numbers, sizeof numbers, "%s%2d-%2d\n", row % 2 ? "     " : "   ", first,
                      first + ROW_SQUARES - 1);
        text += numbers;
    }
    return text;
}

// Takes the prompt and the line of progress away.
void begin_output() {
    show_progress("");
    if (play_screen.prompt_shown) std::fputs("\r\033[K", stdout);
    play_screen.prompt_shown = false;
}

void show_message(const char* text, const char* title, MessageIcon icon) {
    if (icon == ICON_ERROR || icon == ICON_WARNING)
        complain("%s", text);
    else
        say("%s: %s", title, text);
}

bool choose_file(const char*, std::string& path) {
    path = play_screen.chosen_file;
    return true;
}

int choose_game(const char* text, const PdnOffsets& offsets, int count, int) {
    if (play_screen.chosen_game >= 0 || count <= 1) {
        const int chosen = play_screen.chosen_game < 0 ? 0 : play_screen.chosen_game;
        if (chosen < count) return chosen;
        complain("there are %d games", count);
        return -1;
    }
    for (int i = 0; i < count && i < LISTED_GAMES; ++i) {
        char line[GAME_LINE_SIZE];
        pdn_game_line(text, offsets, i, line);
        say("%5d %.100s", i + 1, line);
    }
    say("%d games; choose one by its number behind the file", count);
    return -1;
}

bool read_clipboard(char* buffer, size_t size) {
    std::snprintf(buffer, size, "%s", play_screen.clipboard.c_str());
    return true;
}

bool write_clipboard(const char* text) {
    play_screen.clipboard = text;
    return true;
}

bool is_text(const char* shown, int text_id) {
    char text[CONTROL_TEXT_SIZE];
    get_text(text_id, text, sizeof text);
    return std::strcmp(shown, text) == 0;
}

// What a search tells passes by; how a game of the engine against itself ends stays.
void show_status_text(const char* text) {
    if (real_search_runs()) {
        if (play_screen.terminal) show_progress(text);
    } else if (is_text(text, TEXT_GAME_OVER) || is_text(text, TEXT_DRAW_DECLARED)) {
        play_screen.end = text;
    }
}

void tell_of_file(const char* path) { say("written to %s", path); }

}  // namespace

Ui make_play_screen() {
    Ui screen = no_ui();
    screen.redraw_board = [] { play_screen.board_changed = true; };
    screen.set_side_button = [](int) { play_screen.board_changed = true; };
    screen.set_status_text = show_status_text;
    screen.set_game_text = [](const char* text, int, int) { play_screen.game_text = text; };
    screen.message_box = show_message;
    screen.choose_load_file = choose_file;
    screen.choose_save_file = choose_file;
    screen.choose_game = choose_game;
    // Unseen, what a dialog would offer is not taken.
    screen.edit_headers = [](GameHeaders& headers) {
        headers = game.headers;
        return true;
    };
    screen.read_clipboard = read_clipboard;
    screen.write_clipboard = write_clipboard;
    screen.open_file = tell_of_file;
    return screen;
}

void say(const char* format, ...) {
    begin_output();
    va_list arguments;
    va_start(arguments, format);
    print_line(format, arguments);
    va_end(arguments);
}

void complain(const char* format, ...) {
    begin_output();
    va_list arguments;
    va_start(arguments, format);
    print_error(format, arguments);
    va_end(arguments);
    if (!play_screen.terminal) set_exit_status(EXIT_BAD_INPUT);
}

std::string path_of_user(const std::string& path) {
    return (std::filesystem::path(play_screen.start_folder) / path).string();
}

void print_board() {
    play_screen.board_changed = false;
    const std::string board = board_text();
    MoveList list;
    const char* const mover = game.board_side == WHITE ? "white" : "black";
    begin_output();
    std::printf("\n%s%s to move\n", board.c_str(), mover);
    // Where a square holds both colours, as a position that was set up may, nothing can move.
    if (is_legal_setup(game.board) && generate_moves(game.board, list, game.board_side) == 0)
        std::printf("%s has no move: %s wins\n", mover, game.board_side == WHITE ? "black" : "white");
    std::fflush(stdout);
    char fen[FEN_TEXT_SIZE];
    position_to_fen(game.board, game.board_side, fen);
    play_screen.printed_board = fen;
}

void print_changed_board() {
    if (!play_screen.board_changed) return;
    char fen[FEN_TEXT_SIZE];
    position_to_fen(game.board, game.board_side, fen);
    play_screen.board_changed = false;
    if (!play_screen.quiet && play_screen.printed_board != fen) print_board();
}

void print_legal_moves() {
    MoveList list;
    if (is_legal_setup(game.board)) generate_moves(game.board, list, game.board_side);
    std::string text;
    for (const Move& move : list) {
        char one[MOVE_TEXT_SIZE];
        full_move_text(game.board, move, game.board_side, one);
        text.append(text.empty() ? "" : " ").append(one);
    }
    say("%s", text.empty() ? "no moves" : text.c_str());
}

void print_engine_moves(int behind) {
    const auto history = played_history();
    for (size_t i = static_cast<size_t>(behind); i < history.size(); ++i) {
        const ReplayState& before = history[i - 1];
        char move[MOVE_TEXT_SIZE];
        full_move_text(before.position, move_to(history[i].position), before.side, move);
        say("engine %s", move);
    }
}
