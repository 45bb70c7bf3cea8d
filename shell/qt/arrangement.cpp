#include "shell/qt/arrangement.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "shell/board_geometry.h"

namespace {

constexpr int BOARD_SQUARES = 10;
// The game's pane stays this much higher than wide titles and a few lines need.
constexpr int MIN_GAME_HEIGHT = 90;

struct Rows {
    int upper_height = 0;  // ponder and clock
    bool upper_shown = false;
    bool lower_shown = false;  // protocol
};

Rows rows_of(const ArrangementInput& input) {
    Rows rows;
    rows.upper_height = std::max(input.heights[PONDER_WINDOW], input.heights[CLOCK_WINDOW]);
    rows.upper_shown = input.visible[PONDER_WINDOW] || input.visible[CLOCK_WINDOW];
    rows.lower_shown = input.visible[DXP_WINDOW];
    return rows;
}

int column_right_of(const ArrangementInput& input) { return input.column_width + WINDOW_GAP; }

// What the rows below the board take of the height.
int height_below(const ArrangementInput& input, const Rows& rows) {
    int height = 0;
    if (rows.upper_shown) height += rows.upper_height + WINDOW_GAP;
    if (rows.lower_shown) height += input.heights[DXP_WINDOW] + WINDOW_GAP;
    return height;
}

int fitting_square(const ArrangementInput& input, const Rows& rows) {
    const int width =
        input.room.width() - 2 * WINDOW_GAP - column_right_of(input) - input.board_frame.width();
    const int height =
        input.room.height() - 2 * WINDOW_GAP - height_below(input, rows) - input.board_frame.height();
    const int fitting = std::min(width, height) / BOARD_SQUARES;
    return std::clamp(fitting, MIN_SQUARE_SIZE, std::max(input.square_size, MIN_SQUARE_SIZE));
}

// The column beside the board is as high as the board, but not so low that nothing of the game is seen.
void place_column(const ArrangementInput& input, Arrangement& result) {
    const int x = result.board.right() + 1 + WINDOW_GAP;
    const int status_height = input.heights[STATUS_WINDOW];
    const int game_height = std::max(result.board.height() - status_height - WINDOW_GAP, MIN_GAME_HEIGHT);
    const int top = result.board.top();
    result.panes[GAME_WINDOW] = QRect(x, top, input.column_width, game_height);
    result.panes[STATUS_WINDOW] = QRect(x, top + game_height + WINDOW_GAP, input.column_width, status_height);
}

int place_upper_row(const ArrangementInput& input, const Rows& rows, int y, Arrangement& result) {
    const QRect& column = result.panes[GAME_WINDOW];
    result.panes[PONDER_WINDOW] =
        QRect(result.board.left(), y, column.left() - WINDOW_GAP - result.board.left(), rows.upper_height);
    result.panes[CLOCK_WINDOW] = QRect(column.left(), y, input.column_width, rows.upper_height);
    return y + rows.upper_height + WINDOW_GAP;
}

int place_lower_row(const ArrangementInput& input, int y, Arrangement& result) {
    const int width = result.panes[GAME_WINDOW].right() + 1 - result.board.left();
    result.panes[DXP_WINDOW] = QRect(result.board.left(), y, width, input.heights[DXP_WINDOW]);
    return y + input.heights[DXP_WINDOW] + WINDOW_GAP;
}

}  // namespace

Arrangement arrange_windows(const ArrangementInput& input) {
    const Rows rows = rows_of(input);
    Arrangement result;
    result.square_size = fitting_square(input, rows);
    const int extent = result.square_size * BOARD_SQUARES;
    result.board = QRect(QPoint(WINDOW_GAP, WINDOW_GAP), QSize(extent, extent) + input.board_frame);
    place_column(input, result);
    int y = std::max(result.board.bottom(), result.panes[STATUS_WINDOW].bottom()) + 1 + WINDOW_GAP;
    int bottom = y;
    // A hidden row comes behind the one that is shown.
    if (rows.lower_shown && !rows.upper_shown) {
        bottom = place_lower_row(input, y, result);
        place_upper_row(input, rows, bottom, result);
    } else {
        y = place_upper_row(input, rows, y, result);
        if (rows.upper_shown) bottom = y;
        y = place_lower_row(input, y, result);
        if (rows.lower_shown) bottom = y;
    }
    result.area = QSize(result.panes[GAME_WINDOW].right() + 1 + WINDOW_GAP, bottom);
    return result;
}

QRect free_place(const QSize& wanted, int least_width, const QSize& shown, const QSize& room,
                 std::span<const QRect> others) {
    std::vector<int> columns = {WINDOW_GAP}, rows = {WINDOW_GAP};
    for (const QRect& other : others) {
        columns.push_back(std::max(other.right() + 1, 0) + WINDOW_GAP);
        rows.push_back(std::max(other.bottom() + 1, 0) + WINDOW_GAP);
    }
    QRect best;
    int64_t best_area = std::numeric_limits<int64_t>::max();
    const auto consider = [&](const QRect& place) {
        const QSize needed(place.right() + 1 + WINDOW_GAP, place.bottom() + 1 + WINDOW_GAP);
        if (needed.boundedTo(room) != needed || place.width() < std::min(wanted.width(), least_width)) return;
        for (const QRect& other : others)
            if (other.intersects(place)) return;
        const QSize grown = needed.expandedTo(shown);
        const int64_t area = int64_t{grown.width()} * grown.height();
        if (area < best_area) best_area = area, best = place;
    };
    for (const int x : columns)
        for (const int y : rows)
            for (const int end : {room.width(), shown.width()})
                consider({x, y, std::min(wanted.width(), end - WINDOW_GAP - x), wanted.height()});
    return best;
}
