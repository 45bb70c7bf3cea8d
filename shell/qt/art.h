// The pictures of the program, drawn from vector files in the folder "art" beside the program: the six tiles
// of the board, the strip of the toolbar and the icon. What is rendered is kept. Interface thread only.
#pragma once

#include <QIcon>
#include <QPixmap>

// Names of the tiles, after their files. The pieces are transparent around their edge and are drawn over
// Bsquare, the dark square.
enum class Tile { Bcheck, Wcheck, Bking, Wking, Bsquare, Wsquare };
constexpr int TILE_COUNT = 6;

// The ways to lay a square, so that neighbours do not show the same grain: as drawn, and mirrored from left
// to right, from top to bottom, and both.
constexpr int TILE_LAYS = 4;

// A tile of `size` pixels on a screen of `scale` device pixels a pixel. Where its file is missing a plain
// picture that shows as much is drawn.
QPixmap board_tile(Tile tile, int size, double scale, int lay = 0);

// A picture of the toolbar by its number, 1 to 8: back to start, back, forward, forward to end, black to
// move, white to move, stop searching, start searching.
QIcon toolbar_picture(int number);

QIcon program_icon();

// Forgets what was rendered, so that the files are read again.
void forget_art();
// How many tiles are kept; never more than MAX_KEPT_TILES.
int kept_tiles();
constexpr int MAX_KEPT_TILES = 72;
