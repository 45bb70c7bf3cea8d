#include "shell/qt/board.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QStyleHints>
#include <QtMath>
#include <algorithm>
#include <utility>

#include "base/clock.h"
#include "control/game_flow.h"
#include "control/settings.h"
#include "records/fen.h"
#include "shell/board_clicks.h"
#include "shell/board_geometry.h"

namespace {

constexpr int SLIDE_FRAME_MS = 15;

bool is_marked(int square) {
    const auto end = game.highlights.begin() + game.highlight_count;
    return std::find(game.highlights.begin(), end, square) != end;
}

// The entry of the history before the one on the board; null if the board is not what the history says.
const ReplayState* entry_before_board() {
    if (game.history_count < 2) return nullptr;
    const ReplayState* const entry = &game.game_history[static_cast<size_t>(game.history_count - 1)];
    if (entry->setup_flag || !same_pieces(entry->position, game.board)) return nullptr;
    return entry - 1;
}

// The pixel that the point is in, of which a fine screen tells the fraction.
QPoint pixel_at(const QPointF& at) { return {qFloor(at.x()), qFloor(at.y())}; }

}  // namespace

int64_t (*slide_clock)() = clock_ms;

Board::Board(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(MIN_SQUARE_SIZE * BOARD_ROWS, MIN_SQUARE_SIZE * BOARD_ROWS);
    slide_timer.setInterval(SLIDE_FRAME_MS);
    connect(&slide_timer, &QTimer::timeout, this, [this] {
        if (!is_sliding()) slide_timer.stop();
        update();
    });
    take_over_game();
}

void Board::redraw() {
    take_over_game();
    if (isVisible())
        repaint();
    else
        update();
}

void Board::show_slides(bool on) {
    slides = on;
    if (!on) slide.running = false;
}

int64_t Board::slid_ms() const { return slide_clock() - slide_start; }

bool Board::is_sliding() const { return slide.running && slid_ms() < slide_duration(slide.move); }

int Board::square_size() const {
    return std::clamp(std::min(width(), height()) / BOARD_ROWS, 1, MAX_SQUARE_SIZE);
}

QSize Board::sizeHint() const {
    const int extent = usable_square_size(settings.square_size) * BOARD_ROWS;
    return {extent, extent};
}

QPoint Board::origin() const {
    const int extent = square_size() * BOARD_ROWS;
    return {(width() - extent) / 2, (height() - extent) / 2};
}

int Board::square_at(QPoint at) const {
    const QPoint on_board = at - origin();
    return square_at_pixel(on_board.x(), on_board.y(), square_size(), settings.board_inverted != 0) + 1;
}

void Board::take_over_game() {
    const Position now = position_after(move_to(game.board), game.board_side);
    const bool another = !shown.known || !same_pieces(shown.position, now);
    // It was for another position, or meant something else in the mode before.
    if (another || shown.mode != game.gui_mode) forget_typed();
    if (another) begin_slide(now, game.board_side);
    if (another || shown.side != game.board_side) describe(now, game.board_side);
    shown = {now, game.board_side, game.gui_mode, true};
    scene.position = now;
    scene.marks = game.highlights;
    scene.mark_count = std::clamp(game.highlight_count, 0, MAX_HIGHLIGHTS);
    scene.inverted = settings.board_inverted != 0;
    scene.numbers = settings.square_numbers != 0;
    mark_last_move();
    if (drag_is_over()) drag = {};
}

void Board::begin_slide(const Position& now, int side) {
    slide.running = false;
    if (!slides || !shown.known || !isVisible() || game.gui_mode == SETUP_MODE) return;
    if (move_between(shown.position, now, shown.side, slide.move)) {
        slide.before = shown.position;
        slide.backward = false;
    } else if (move_between(now, shown.position, side, slide.move)) {
        slide.before = now;
        slide.backward = true;
    } else {
        return;
    }
    slide.by_hand = std::exchange(dropping, false);  // a reply that is ready slides
    slide.running = true;
    slide_start = slide_clock();
    slide_timer.start();
}

void Board::mark_last_move() {
    scene.last_from = scene.last_to = 0;
    const ReplayState* const before = game.gui_mode == SETUP_MODE ? nullptr : entry_before_board();
    BoardMove move;
    if (!before || !move_between(before->position, game.board, before->side, move)) return;
    scene.last_from = move.from();
    scene.last_to = move.to();
}

void Board::add_slide(BoardScene& drawn) const {
    if (!is_sliding()) return;
    const double elapsed = static_cast<double>(slid_ms());
    const double at = slide.backward ? slide_duration(slide.move) - elapsed : elapsed;
    const SlideFrame frame = slide_frame(slide.move, at);
    for (int jump = 0; jump < slide.move.jumps; ++jump) {
        const int square = slide.move.taken[static_cast<size_t>(jump)];
        drawn.lifted |= set_of_square(square);
        drawn.loose_pieces.push_back({tile_on(slide.before, square - 1),
                                      QPointF(corner_of(drawn, square - 1)),
                                      frame.left[static_cast<size_t>(jump)]});
    }
    const bool arrived = slide.by_hand || frame.arrived;
    if (arrived) return;
    drawn.lifted |= set_of_square(slide.move.to()) | set_of_square(slide.move.from());
    const double last = BOARD_ROWS - 1;
    const QPointF place =
        drawn.inverted ? QPointF(last - frame.column, last - frame.row) : QPointF(frame.column, frame.row);
    drawn.loose_pieces.push_back(
        {tile_on(slide.before, slide.move.from() - 1), place * drawn.square_size, 1});
}

void Board::add_drag(BoardScene& drawn) const {
    if (!drag.moving) return;
    const QPointF half(drawn.square_size / 2.0, drawn.square_size / 2.0);
    drawn.lifted |= set_of_square(drag.square);
    drawn.loose_pieces.push_back(
        {tile_on(drawn.position, drag.square - 1), QPointF(drag.at - origin()) - half, 1});
}

void Board::paintEvent(QPaintEvent*) {
    BoardScene drawn = scene;
    drawn.square_size = square_size();
    add_slide(drawn);
    add_drag(drawn);
    QPainter painter(this);
    const QRect board_rect(origin(), QSize(1, 1) * drawn.square_size * BOARD_ROWS);
    if (board_rect != rect()) painter.fillRect(rect(), palette().window());
    painter.translate(board_rect.topLeft());
    paint_board(painter, drawn);
}

void Board::press(QPoint at, Qt::MouseButton button) {
    press_played = false;
    drag = {};
    forget_keys();
    if (user_may_move()) setFocus(Qt::MouseFocusReason);
    const int square = square_at(at);
    if (button == Qt::RightButton) return board_right_click(square);
    if (button != Qt::LeftButton) return;
    const Position before = game.board;
    board_left_click(square);
    press_played = game.gui_mode != SETUP_MODE && !same_pieces(before, game.board);
    if (!press_played) begin_drag(square, at);
}

// For screen readers.
void Board::describe(const Position& position, int side) {
    char fen[FEN_TEXT_SIZE];
    position_to_fen(position, side, fen);
    setAccessibleDescription(QString::fromLatin1(fen));
}

void Board::begin_drag(int square, QPoint at) {
    if (!square_can_move(square) || !is_marked(square)) return;
    drag = {square, at, at, false};
}

void Board::let_go() {
    drag = {};
    update();
}

// Something else than the mouse has taken the click back, or moved.
bool Board::drag_is_over() const { return drag.square && !(is_marked(drag.square) && user_may_move()); }

void Board::end_drag(int square) {
    const Drag ended = drag;
    drag = {};
    if (!ended.moving) return;
    if (square == ended.square) return update();
    dropping = true;
    if (click_fits(square))
        board_left_click(square);
    else
        drop_clicks();
    dropping = false;
}

void Board::mousePressEvent(QMouseEvent* event) { press(pixel_at(event->position()), event->button()); }

void Board::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second press of a double click is no move of its own.
    if (press_played)
        press_played = false;
    else
        mousePressEvent(event);
}

void Board::mouseMoveEvent(QMouseEvent* event) {
    if (!drag.square || !(event->buttons() & Qt::LeftButton)) return;
    if (drag_is_over()) {
        drag = {};
        return update();
    }
    drag.at = pixel_at(event->position());
    const int way = (drag.at - drag.pressed).manhattanLength();
    if (way >= QGuiApplication::styleHints()->startDragDistance()) drag.moving = true;
    if (drag.moving) update();
}

void Board::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) end_drag(square_at(pixel_at(event->position())));
}

void Board::resizeEvent(QResizeEvent*) { drag = {}; }
