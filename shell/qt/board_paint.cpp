#include "shell/qt/board_paint.h"

#include <QPaintDevice>
#include <array>

#include "shell/board_geometry.h"

namespace {

const QColor LAST_MOVE(255, 226, 120, 70);
const QColor LAST_MOVE_EDGE(255, 226, 120, 120);
const QColor NUMBER_SHADOW(0, 0, 0, 170);
const QColor CURSOR(120, 200, 255);
constexpr int FRAME_LINES = 2;

// On smaller squares the numbers lie on the pieces.
constexpr int CROWDED_BELOW = 40;

bool is_dark(int column, int row) { return (column + row) % 2 != 0; }

uint64_t mask_of(int square) { return mask_of_square[static_cast<size_t>(square)]; }

QRect square_rect(const BoardScene& scene, int square) {
    return {corner_of(scene, square), QSize(scene.square_size, scene.square_size)};
}

// A frame of one pixel just inside the rectangle.
void draw_frame(QPainter& painter, const QRect& rect, const QColor& color) {
    painter.fillRect(QRect(rect.left(), rect.top(), rect.width(), 1), color);
    painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), color);
    painter.fillRect(QRect(rect.left(), rect.top() + 1, 1, rect.height() - 2), color);
    painter.fillRect(QRect(rect.right(), rect.top() + 1, 1, rect.height() - 2), color);
}

// The wood stays in its place when the board is turned; only what stands on it goes round.
void draw_squares(QPainter& painter, const BoardScene& scene, double scale) {
    const int size = scene.square_size;
    for (int row = 0; row < BOARD_ROWS; ++row)
        for (int column = 0; column < BOARD_ROWS; ++column) {
            const Tile tile = is_dark(column, row) ? Tile::Bsquare : Tile::Wsquare;
            const int lay = (column / 2 + row * 3 / 2) % TILE_LAYS;
            painter.drawPixmap(column * size, row * size, board_tile(tile, size, scale, lay));
        }
}

void draw_last_move(QPainter& painter, const BoardScene& scene) {
    for (const int square : {scene.last_from, scene.last_to}) {
        if (!square) continue;
        painter.fillRect(square_rect(scene, square - 1), LAST_MOVE);
        draw_frame(painter, square_rect(scene, square - 1), LAST_MOVE_EDGE);
        if (scene.last_from == scene.last_to) break;
    }
}

void draw_pieces(QPainter& painter, const BoardScene& scene, double scale) {
    for (int square = 0; square < SQUARES; ++square) {
        const Tile tile = tile_on(scene.position, square);
        if (tile == Tile::Bsquare || (scene.lifted & mask_of(square))) continue;
        painter.drawPixmap(corner_of(scene, square), board_tile(tile, scene.square_size, scale));
    }
}

// White pieces reach into the corner; the shadow sets the number off from them. Where the number lies on the
// piece it needs one all around.
void draw_number_shadow(QPainter& painter, const QRect& place, const QString& number, bool on_white_piece) {
    constexpr std::array<QPoint, 4> AROUND = {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)};
    painter.setPen(NUMBER_SHADOW);
    painter.drawText(place.translated(1, 1), Qt::AlignRight | Qt::AlignBottom, number);
    if (!on_white_piece) return;
    for (const QPoint& way : AROUND)
        painter.drawText(place.translated(way), Qt::AlignRight | Qt::AlignBottom, number);
}

void draw_numbers(QPainter& painter, const BoardScene& scene) {
    QFont font(QStringLiteral("Times New Roman"));
    font.setPixelSize(number_height(scene.square_size));
    painter.setFont(font);
    const bool crowded = scene.square_size < CROWDED_BELOW;
    for (int square = 0; square < SQUARES; ++square) {
        const QRect place = square_rect(scene, square).adjusted(0, 0, -2, 0);
        const QString number = QString::number(square + 1);
        const bool white_piece = (scene.position.white & ~scene.lifted & mask_of(square)) != 0;
        draw_number_shadow(painter, place, number, crowded && white_piece);
        painter.setPen(Qt::white);
        painter.drawText(place, Qt::AlignRight | Qt::AlignBottom, number);
    }
}

void draw_marks(QPainter& painter, const BoardScene& scene) {
    for (int i = 0; i < scene.mark_count; ++i) {
        QRect frame = square_rect(scene, scene.marks[static_cast<size_t>(i)] - 1);
        for (int line = 0; line < FRAME_LINES; ++line, frame.adjust(1, 1, -1, -1))
            draw_frame(painter, frame, Qt::white);
    }
}

void draw_cursor(QPainter& painter, const BoardScene& scene) {
    if (!scene.cursor) return;
    QRect frame = square_rect(scene, scene.cursor - 1).adjusted(3, 3, -3, -3);
    for (int line = 0; line < FRAME_LINES; ++line, frame.adjust(1, 1, -1, -1))
        draw_frame(painter, frame, CURSOR);
}

void draw_loose_pieces(QPainter& painter, const BoardScene& scene, double scale) {
    for (const LoosePiece& piece : scene.loose_pieces) {
        if (piece.opacity <= 0) continue;
        painter.setOpacity(piece.opacity);
        painter.drawPixmap(piece.corner, board_tile(piece.tile, scene.square_size, scale));
    }
    painter.setOpacity(1);
}

}  // namespace

Tile tile_on(const Position& position, int square) {
    const uint64_t mask = mask_of(square);
    if (position.black & position.king & mask) return Tile::Bking;
    if (position.black & mask) return Tile::Bcheck;
    if (position.white & position.king & mask) return Tile::Wking;
    if (position.white & mask) return Tile::Wcheck;
    return Tile::Bsquare;
}

QPoint corner_of(const BoardScene& scene, int square) {
    const BoardPlace place = place_of_square(square, scene.inverted);
    return {place.column * scene.square_size, place.row * scene.square_size};
}

void paint_board(QPainter& painter, const BoardScene& scene) {
    const double scale = painter.device()->devicePixelRatioF();
    draw_squares(painter, scene, scale);
    draw_last_move(painter, scene);
    draw_pieces(painter, scene, scale);
    if (scene.numbers) draw_numbers(painter, scene);
    draw_marks(painter, scene);
    draw_cursor(painter, scene);
    draw_loose_pieces(painter, scene, scale);
}
