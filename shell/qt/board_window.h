// The board and the child window of the frame that it stands in. The board draws the position of `game` with
// its marks, and turns clicks, drags and keys into `board_left_click` and `board_right_click`. Its window is
// square, holds whole squares and cannot be closed. `settings.square_size` is the size of a square in pixels
// before the screen's scale. Interface thread only.
#pragma once

#include <QMdiSubWindow>
#include <QWidget>

class Board : public QWidget {
    Q_OBJECT

  public:
    explicit Board(QWidget* parent = nullptr);

    // Draws the board as `game` is now, before the call returns where the board is visible.
    void redraw();
};

class BoardWindow : public QMdiSubWindow {
    Q_OBJECT

  public:
    explicit BoardWindow(QWidget* parent = nullptr);

    Board& board();
    // Takes over `settings.square_size`.
    void follow_square_size();
};
