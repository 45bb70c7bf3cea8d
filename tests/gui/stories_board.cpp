#include "tests/gui/stories_board.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <tuple>
#include <vector>

#include "shell/board_geometry.h"
#include "shell/qt/board_paint.h"

namespace {

constexpr int SMALLEST_SQUARE = 16;
constexpr int LARGEST_SQUARE = 120;  // that the display of the stories has room for
constexpr int USUAL_SQUARE = 44;
constexpr int PREFIX_PIXELS = 12;
// Rounding apart the pixels are the same.
constexpr int TOLERANCE = 3;

constexpr uint64_t ALL_SQUARES = BOARD_MASK;

// What can stand on a square: nothing, nothing on a square of the last move, and the four pieces.
constexpr size_t KINDS = 6;
constexpr std::array<Position, KINDS> FULL_BOARDS = {
    Position{},
    Position{},
    Position{ALL_SQUARES, 0, 0},
    Position{0, ALL_SQUARES, 0},
    Position{ALL_SQUARES, 0, ALL_SQUARES},
    Position{0, ALL_SQUARES, ALL_SQUARES},
};
constexpr size_t LAST_MOVE_KIND = 1;

QImage painted(BoardScene scene, int size, int scale) {
    const int extent = size * BOARD_ROWS * scale;
    QImage image(extent, extent, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    scene.square_size = size;
    QPainter painter(&image);
    paint_board(painter, scene);
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

QRect square_rect(int square, int extent, bool inverted) {
    const BoardPlace place = place_of_square(square, inverted);
    return {place.column * extent, place.row * extent, extent, extent};
}

// An empty board all of whose dark squares are marked as those of a last move are.
QImage painted_last_moves(int size, int scale) {
    QImage image = painted({}, size, scale);
    QPainter painter(&image);
    for (int square = 1; square <= SQUARES; ++square) {
        BoardScene scene;
        scene.last_from = scene.last_to = square;
        const QRect rect = square_rect(square - 1, size * scale, false);
        painter.drawImage(rect.topLeft(), painted(scene, size, scale), rect);
    }
    return image;
}

using KindImages = std::array<QImage, KINDS>;

const KindImages& kind_images(int size, int scale) {
    static std::map<std::tuple<int, int>, KindImages> known;
    KindImages& images = known[{size, scale}];
    if (!images[0].isNull()) return images;
    for (size_t kind = 0; kind < KINDS; ++kind) {
        BoardScene scene;
        scene.position = FULL_BOARDS[kind];
        images[kind] = kind == LAST_MOVE_KIND ? painted_last_moves(size, scale) : painted(scene, size, scale);
    }
    return images;
}

bool same_colour(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= TOLERANCE && std::abs(qGreen(a) - qGreen(b)) <= TOLERANCE &&
           std::abs(qBlue(a) - qBlue(b)) <= TOLERANCE;
}

// The pixels of a part of the board are on the screen as they are painted.
bool shows_part(const QImage& seen, QPoint corner, const QImage& wanted, const QRect& part) {
    if (!seen.rect().contains(part.translated(corner))) return false;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (!same_colour(seen.pixel(corner + QPoint(x, y)), wanted.pixel(x, y))) return false;
    return true;
}

bool is_board_at(const QImage& seen, QPoint corner, const QImage& empty_board, int extent) {
    for (int row = 0; row < BOARD_ROWS; ++row)
        for (int column = row % 2; column < BOARD_ROWS; column += 2)
            if (!shows_part(seen, corner, empty_board, {column * extent, row * extent, extent, extent}))
                return false;
    return true;
}

// The first pixels of the board, which begins with a light square, are looked for in every line.
std::optional<QPoint> find_board_of(const QImage& seen, const QImage& empty_board, int extent) {
    const auto* const wanted = reinterpret_cast<const QRgb*>(empty_board.constScanLine(0));
    for (int y = 0; y + 10 * extent <= seen.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(seen.constScanLine(y));
        for (int x = 0; x + 10 * extent <= seen.width(); ++x) {
            if (!std::equal(wanted, wanted + PREFIX_PIXELS, line + x, same_colour)) continue;
            if (is_board_at(seen, {x, y}, empty_board, extent)) return QPoint(x, y);
        }
    }
    return std::nullopt;
}

std::vector<int> sizes_to_try() {
    std::vector<int> sizes = {USUAL_SQUARE};
    for (int size = SMALLEST_SQUARE; size <= LARGEST_SQUARE; ++size)
        if (size != USUAL_SQUARE) sizes.push_back(size);
    return sizes;
}

const QImage& empty_board(int size, int scale) {
    static std::map<std::tuple<int, int>, QImage> known;
    QImage& image = known[{size, scale}];
    if (image.isNull()) image = painted({}, size, scale);
    return image;
}

// A part of the square that shows what stands on it and that neither numbers nor frames reach.
QRect telling_part(const QRect& square) {
    const int edge = square.width() / 4;
    return {square.topLeft() + QPoint(edge, edge), QSize(1, 1) * (square.width() * 3 / 5 - edge)};
}

// The kind of what is seen on the square, or KINDS.
size_t kind_on_square(const QImage& seen, const BoardPlaceOnScreen& place, int square, bool inverted) {
    const QRect part = telling_part(square_rect(square, place.square_size * place.scale, inverted));
    const KindImages& images = kind_images(place.square_size, place.scale);
    for (size_t kind = 0; kind < KINDS; ++kind)
        if (shows_part(seen, place.corner, images[kind], part)) return kind;
    return KINDS;
}

}  // namespace

BoardPlaceOnScreen find_board(const Desk& desk, int scale) {
    const QImage seen = look(*desk.screen);
    if (seen.isNull()) return {};
    static const std::vector<int> SIZES = sizes_to_try();
    for (const int size : SIZES) {
        const int extent = size * scale;
        if (10 * extent > std::min(seen.width(), seen.height())) continue;
        if (const auto corner = find_board_of(seen, empty_board(size, scale), extent))
            return {*corner, size, scale};
    }
    return {};
}

std::optional<Position> read_board(const Desk& desk, const BoardPlaceOnScreen& place, bool inverted) {
    const QImage seen = look(*desk.screen);
    Position position;
    for (int square = 0; square < SQUARES; ++square) {
        const size_t kind = kind_on_square(seen, place, square, inverted);
        if (kind == KINDS) return std::nullopt;
        const uint64_t mask = mask_of_square[static_cast<size_t>(square)];
        position.black |= FULL_BOARDS[kind].black & mask;
        position.white |= FULL_BOARDS[kind].white & mask;
        position.king |= FULL_BOARDS[kind].king & mask;
    }
    return position;
}

bool wait_for_position(const Desk& desk, const BoardPlaceOnScreen& place, const Position& wanted,
                       bool inverted) {
    return wait_until([&] {
        const std::optional<Position> seen = read_board(desk, place, inverted);
        return seen && same_pieces(*seen, wanted);
    });
}

QPoint middle_of_square(const BoardPlaceOnScreen& place, int square, bool inverted) {
    return place.corner + square_rect(square - 1, place.square_size * place.scale, inverted).center();
}

void click_square(const Desk& desk, const BoardPlaceOnScreen& place, int square, int button, bool inverted) {
    const QPoint at = middle_of_square(place, square, inverted);
    xdotool(desk, {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
                   QStringLiteral("click"), QString::number(button)});
    take_mouse_away(desk);
}

void take_mouse_away(const Desk& desk) {
    xdotool(desk, {QStringLiteral("mousemove"), QString::number(desk.screen->size.width() - 1),
                   QString::number(desk.screen->size.height() - 1)});
}
