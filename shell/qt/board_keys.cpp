// The keys of the board: squares that are typed, and a cursor.
#include <QKeyEvent>
#include <charconv>
#include <system_error>

#include "control/game.h"
#include "control/game_flow.h"
#include "control/panes.h"
#include "control/settings.h"
#include "shell/board_clicks.h"
#include "shell/board_geometry.h"
#include "shell/qt/board.h"

namespace {

constexpr size_t MAX_TYPED = 60;  // characters
constexpr int FIRST_CURSOR = 28;  // in the middle of the board

void click(int square, bool right) {
    if (right)
        board_right_click(square);
    else
        board_left_click(square);
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The next number of the text from `at` on, which goes behind it; 0 when there is none. A number that is no
// square is 0 too.
int next_square(const std::string& text, size_t& at) {
    while (at < text.size() && !is_digit(text[at])) ++at;
    int square = 0;
    const char* const begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), square);
    at += static_cast<size_t>(end - begin);
    return error == std::errc() && square >= 1 && square <= SQUARES ? square : 0;
}

}  // namespace

void Board::keyPressEvent(QKeyEvent* event) {
    const bool may_click = user_may_move();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool control = event->modifiers() & Qt::ControlModifier;
    // The right button has no meaning but when the board is set up.
    const bool right = shift && game.gui_mode == SETUP_MODE;
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (may_click && !typed.empty()) return click_typed(right);
            break;
        case Qt::Key_Space:
            if (may_click && !typed.empty() && !shift && type_character(QLatin1Char(' '))) return;
            if (may_click && scene.cursor && typed.empty()) return click_cursor(right);
            break;
        case Qt::Key_Escape:
            forget_keys();
            return drop_clicks();
        case Qt::Key_Backspace:
            if (typed.empty()) break;
            typed.pop_back();
            return show_typed();
        default:
            if (move_cursor(event->key(), control)) return;
            if (may_click && !control && event->text().size() == 1 && type_character(event->text().front()))
                return;
            break;
    }
    event->ignore();
}

bool Board::type_character(QChar character) {
    const char c = character.toLatin1();
    const bool separates = c == ' ' || c == '-' || c == 'x';
    if (!is_digit(c) && !(separates && !typed.empty())) return false;
    if (typed.size() < MAX_TYPED) typed += c;
    show_typed();
    return true;
}

void Board::show_typed() { show_status(typed.c_str()); }

void Board::click_typed(bool right) {
    const std::string text = typed;
    typed.clear();
    show_typed();
    const bool sets_up = game.gui_mode == SETUP_MODE;
    const Position before = game.board;
    bool first = true;
    for (size_t at = 0; at < text.size();) {
        const int square = next_square(text, at);
        if (!square) continue;
        // What was typed is one move; a square that does not belong to it must not begin another.
        if (!sets_up && !first && !click_fits(square)) return drop_clicks();
        click(square, right);
        if (!sets_up && !same_pieces(before, game.board)) return;
        first = false;
    }
}

bool Board::move_cursor(int key, bool with_control) {
    const bool upright = key == Qt::Key_Up || key == Qt::Key_Down;
    const bool sideways = key == Qt::Key_Left || key == Qt::Key_Right;
    if (!upright && !(sideways && with_control)) return false;
    if (!scene.cursor) {
        scene.cursor = FIRST_CURSOR;
    } else {
        BoardPlace place = place_of_square(scene.cursor - 1, scene.inverted);
        if (sideways) {
            place.column += key == Qt::Key_Left ? -2 : 2;
        } else {
            place.row += key == Qt::Key_Up ? -1 : 1;
            // Dark squares of neighbouring rows are one column apart, now to this side and now to that.
            place.column += place.row % 2 != 0 ? -1 : 1;
        }
        const int square = square_at_place(place, scene.inverted);
        if (square >= 0) scene.cursor = square + 1;
    }
    update();
    return true;
}

void Board::click_cursor(bool right) { click(scene.cursor, right); }

void Board::forget_keys() {
    if (!typed.empty()) {
        typed.clear();
        show_typed();
    }
    scene.cursor = 0;
    update();
}
