// Where squares stand on the drawn board. Squares of `square_size` pixels in ten rows of ten; row 0 is at the
// top and column 0 at the left unless the board is inverted.
#pragma once

struct BoardPlace {
    int column;
    int row;
};

// The index of the dark square at the pixel, 0 to 49, which is the player's number less 1; -1 for a light
// square and beside the board.
int square_at_pixel(int x, int y, int square_size, bool inverted);

// Where the square of the index, 0 to 49, is drawn.
BoardPlace place_of_square(int square, bool inverted);

// The size of the squares of a board that is `width` or `height` pixels wide: the nearest whole one.
int square_size_for(int extent);

// The height of the squares' numbers in pixels.
int number_height(int square_size);
