#include "shell/qt/art_plain.h"

#include <QPainter>
#include <QPolygonF>

namespace {

const QColor DARK_SQUARE(0x8a, 0x5a, 0x36);
const QColor LIGHT_SQUARE(0xe9, 0xd3, 0xa8);
const QColor BLACK_PIECE(0x26, 0x24, 0x26);
const QColor WHITE_PIECE(0xf4, 0xec, 0xd8);
const QColor ARROW(0x3f, 0x7f, 0xbf);
const QColor STOP(0xc6, 0x3a, 0x2e);
const QColor GO(0x2f, 0x97, 0x4b);

// Coordinates from 0 to 1 over the whole picture.
void begin_plain(QPainter& painter, const QImage& picture) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(picture.width(), picture.height());
}

void draw_disc(QPainter& painter, QPointF centre, double radius, bool black) {
    painter.setBrush(black ? BLACK_PIECE : WHITE_PIECE);
    painter.setPen(QPen(black ? WHITE_PIECE : BLACK_PIECE, 0.03));
    painter.drawEllipse(centre, radius, radius);
}

void draw_plain_piece(QPainter& painter, bool black, bool king) {
    if (!king) return draw_disc(painter, {0.5, 0.5}, 0.4, black);
    draw_disc(painter, {0.5, 0.56}, 0.38, black);
    draw_disc(painter, {0.5, 0.42}, 0.38, black);
    draw_disc(painter, {0.5, 0.42}, 0.16, black);
}

// A triangle that points to the right, or to the left when `left`.
void draw_arrow(QPainter& painter, double begin, double end, bool left) {
    const double base = left ? end : begin;
    const double tip = left ? begin : end;
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF({{base, 0.15}, {tip, 0.5}, {base, 0.85}}));
}

}  // namespace

void draw_plain_tile(Tile tile, QImage& picture) {
    if (tile == Tile::Bsquare || tile == Tile::Wsquare) {
        picture.fill(tile == Tile::Bsquare ? DARK_SQUARE : LIGHT_SQUARE);
        return;
    }
    QPainter painter(&picture);
    begin_plain(painter, picture);
    draw_plain_piece(painter, tile == Tile::Bcheck || tile == Tile::Bking,
                     tile == Tile::Bking || tile == Tile::Wking);
}

void draw_plain_button(int number, QImage& picture) {
    QPainter painter(&picture);
    begin_plain(painter, picture);
    const bool left = number <= 2;
    painter.setBrush(number == 7 ? STOP : number == 8 ? GO : ARROW);
    painter.setPen(Qt::NoPen);
    switch (number) {
        case 1:
        case 4:
            painter.drawRect(QRectF(left ? 0.1 : 0.75, 0.15, 0.15, 0.7));
            return draw_arrow(painter, left ? 0.3 : 0.1, left ? 0.9 : 0.7, left);
        case 5:
        case 6:
            return draw_disc(painter, {0.5, 0.5}, 0.38, number == 5);
        case 7:
            painter.drawRect(QRectF(0.18, 0.18, 0.64, 0.64));
            return;
        default:
            return draw_arrow(painter, 0.2, 0.8, left);
    }
}

void draw_plain_icon(QImage& picture) {
    picture.fill(DARK_SQUARE);
    QPainter painter(&picture);
    begin_plain(painter, picture);
    draw_plain_piece(painter, false, true);
}
