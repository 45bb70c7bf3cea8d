// Plain pictures in place of those whose files are missing. They cover the whole of the picture they are
// drawn into.
#pragma once

#include <QImage>

#include "shell/qt/art.h"

void draw_plain_tile(Tile tile, QImage& picture);
void draw_plain_button(int number, QImage& picture);
void draw_plain_icon(QImage& picture);
