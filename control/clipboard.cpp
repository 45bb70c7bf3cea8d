#include "control/clipboard.h"

#include <cstdio>
#include <vector>

#include "control/game.h"
#include "control/load_save.h"
#include "control/ui.h"
#include "records/fen.h"
#include "records/pdn_game.h"

namespace {

// The first game of the text.
void paste_game(const char* text) {
    PdnTable table;
    if (pdn_parse_games(text, table) != 0 || pdn_game_count(table) == 0) return;
    take_over_game(table.front().get());
}

void write_and_show(const char* text, const char* title) {
    clipboard_write_text(text);
    ui.message_box(text, title, ICON_NONE);
}

}  // namespace

bool clipboard_read_text(char* out_buffer) { return ui.read_clipboard(out_buffer, CLIPBOARD_TEXT_SIZE); }

bool clipboard_write_text(const char* text) { return ui.write_clipboard(text); }

void paste_from_clipboard() {
    // Without a text in the clipboard an empty one is pasted.
    std::vector<char> text(CLIPBOARD_TEXT_SIZE, '\0');
    clipboard_read_text(text.data());
    Position position;
    int side = WHITE;
    if (fen_to_position(text.data(), position, side) == 0) {
        set_board(position, side);
        restart_history(position, side);
    } else {
        paste_game(text.data());
    }
    game_text_update();
    ui.redraw_board();
}

void copy_game_to_clipboard() {
    const std::vector<char> text = users_game_text("\r\n");
    write_and_show(text.data(), "Game to clipboard");
}

void copy_position_to_clipboard() {
    char text[FEN_TAG_TEXT_SIZE + 4];
    const int length = fen_tag_text(game.board, game.board_side, text, "\r\n");
    std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "*\r\n");
    write_and_show(text, "Position to clipboard");
}
