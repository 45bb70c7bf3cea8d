// The board: draws the position of `game` with its marks, the last move and the numbers of the squares as
// `settings` want them, and turns clicks, drags and keys into `board_left_click` and `board_right_click`.
// Interface thread only.
//
// A click counts when the button goes down. A piece can also be dragged: a drag clicks the square it began on
// and the square it ends on, or, where no move leads there, takes the click back.
//
// Keys: digits name squares, with a blank, "-" or "x" between them ("32-28"); they are shown in the status
// line, Enter plays the move that they are, or marks them where several begin so, Backspace takes back the
// last character. The up and down keys, and Ctrl with any of the four arrows, move a cursor over the dark
// squares; Space clicks its square. In SETUP_MODE Shift with Enter or Space is the right button. Escape
// forgets what was typed and the marks.
//
// A move slides and what it takes fades, without delaying the game: a change of the position shows the one
// before as it ended.
#pragma once

#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <string>

#include "shell/board_slide.h"
#include "shell/qt/board_paint.h"

// Milliseconds since some moment: how far a slide is. Tests put their own in its place.
extern int64_t (*slide_clock)();

class Board : public QWidget {
    Q_OBJECT

  public:
    explicit Board(QWidget* parent = nullptr);

    // Draws the board as `game` is now, before the call returns where the board is visible.
    void redraw();

    // What was typed is not to be played any more.
    void forget_typed();

    // A piece that is being dragged goes back: the release of the button will not come.
    void let_go();

    // Off: a move is shown as it ended, at once.
    void show_slides(bool on);
    bool is_sliding() const;

    // Pixels of a square: the largest that may be and that the widget has room for.
    int square_size() const;

    QSize sizeHint() const override;

  Q_SIGNALS:
    // The squares that are typed, to be shown; empty when they are played or forgotten.
    void typing_changed(const QString& text);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    // What is shown, so that the next change can be told from it.
    struct Shown {
        Position position;
        int side = WHITE;
        int32_t mode = NORMAL_MODE;
        bool known = false;
    };
    // A move on its way. `before` has the pieces as they were; `backward` when the move is taken back.
    struct Slide {
        BoardMove move;
        Position before;
        bool backward = false;
        bool by_hand = false;  // the piece has been dragged; only what it took is still to be shown
        bool running = false;
    };
    // A piece that was pressed on, and follows the mouse once that has moved away.
    struct Drag {
        int square = 0;  // 0 for none
        QPoint pressed;
        QPoint at;
        bool moving = false;
    };

    QPoint origin() const;
    int square_at(QPoint at) const;  // 1 to 50, or 0
    void take_over_game();
    void describe(const Position& position, int side);
    void begin_slide(const Position& now, int side);
    void mark_last_move();
    int64_t slid_ms() const;
    void add_slide(BoardScene& drawn) const;
    void add_drag(BoardScene& drawn) const;
    void press(QPoint at, Qt::MouseButton button);
    void begin_drag(int square, QPoint at);
    void end_drag(int square);
    bool drag_is_over() const;
    bool type_character(QChar character);
    void click_typed(bool right);
    void show_typed();
    bool move_cursor(int key, bool with_control);
    void click_cursor(bool right);
    void forget_keys();

    BoardScene scene;
    Shown shown;
    Slide slide;
    Drag drag;
    int64_t slide_start = 0;
    QTimer slide_timer;
    std::string typed;
    bool slides = true;
    bool dropping = false;      // a click that ends a drag is being followed
    bool press_played = false;  // the last press of a button made a move
};
