// How the board is drawn: what is to be seen as a record, and the drawing of it from the tiles that are kept.
#pragma once

#include <QPainter>
#include <QPointF>
#include <array>
#include <vector>

#include "control/game.h"
#include "core/board.h"
#include "shell/qt/art.h"

// A piece that does not stand on a square.
struct LoosePiece {
    Tile tile = Tile::Wcheck;
    QPointF corner;  // upper left, in pixels of the board
    double opacity = 1;
};

struct BoardScene {
    Position position;
    uint64_t lifted = 0;  // squares whose piece is not drawn on them
    std::vector<LoosePiece> loose_pieces;
    std::array<int32_t, MAX_HIGHLIGHTS> marks{};  // squares, 1 to 50
    int mark_count = 0;
    int last_from = 0;  // the squares of the last move; 0 for none
    int last_to = 0;
    int cursor = 0;  // the square that keys are at; 0 for none
    int square_size = 44;
    bool inverted = false;
    bool numbers = false;
};

// The tile of what stands on the square of the index, 0 to 49: Bsquare if nothing does.
Tile tile_on(const Position& position, int square);

// The upper left corner of the square of the index, in pixels of the board.
QPoint corner_of(const BoardScene& scene, int square);

// Draws all 100 squares from the painter's origin on.
void paint_board(QPainter& painter, const BoardScene& scene);
