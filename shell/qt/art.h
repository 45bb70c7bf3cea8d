// The pictures of the program, drawn from vector files beside the program: the six tiles of the board, the
// strip of the toolbar and the icon. Tiles are rendered once a size and kept. Interface thread only.
#pragma once

#include <QIcon>
#include <QPixmap>

// Names of the tiles, after their files.
enum class Tile { Bcheck, Wcheck, Bking, Wking, Bsquare, Wsquare };

// A tile of `size` pixels on a screen of `scale` device pixels a pixel. Where its file is missing a plain
// picture that shows as much is drawn.
const QPixmap& board_tile(Tile tile, int size, double scale);

// A picture of the toolbar by its number, 1 to 8: back to start, back, forward, forward to end, black to
// move, white to move, stop searching, start searching.
QIcon toolbar_picture(int number);

QIcon program_icon();
