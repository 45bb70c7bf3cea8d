// The child window of the frame that the board stands in. It is square, holds whole squares and cannot be
// closed. `settings.square_size` is the size of a square in pixels before the screen's scale; it follows when
// the user changes the size of the window. Interface thread only.
#pragma once

#include <QMdiSubWindow>
#include <QTimer>

#include "shell/qt/board.h"

class BoardWindow : public QMdiSubWindow {
    Q_OBJECT

  public:
    explicit BoardWindow(QWidget* parent = nullptr);

    Board& board();
    // Takes over `settings.square_size`.
    void follow_square_size();
    // Nothing is dragged any more, no piece and no border.
    void let_go();
    // No change of the size is still to be brought to whole squares.
    bool is_settled() const;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    QSize frame_extents() const;
    void settle();

    Board* held;
    QTimer settle_timer;
    bool border_held = false;
};
