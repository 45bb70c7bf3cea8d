// The keys of the board: squares that are typed, and a cursor.
#include <QKeyEvent>
#include <algorithm>
#include <charconv>
#include <system_error>
#include <vector>

#include "control/game.h"
#include "control/game_flow.h"
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

// The numbers of the text; what is no square is 0.
std::vector<int32_t> squares_of(const std::string& text) {
    std::vector<int32_t> squares;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data();;) {
        at = std::find_if(at, end, is_digit);
        if (at == end) return squares;
        int32_t square = 0;
        const auto [behind, error] = std::from_chars(at, end, square);
        at = behind;
        squares.push_back(error == std::errc() && square <= SQUARES ? square : 0);
    }
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

void Board::show_typed() { Q_EMIT typing_changed(QString::fromStdString(typed)); }

void Board::click_typed(bool right) {
    const std::vector<int32_t> squares = squares_of(typed);
    forget_typed();
    if (game.gui_mode != SETUP_MODE) return type_squares(squares);
    for (const int32_t square : squares) click(square, right);
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

void Board::forget_typed() {
    typed.clear();
    show_typed();
}

void Board::forget_keys() {
    forget_typed();
    scene.cursor = 0;
    update();
}
