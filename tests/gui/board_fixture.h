// A board on a window of its own that draws what `ui` asks for, and the means to look at it and to click it.
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include "base/program_paths.h"
#include "shell/board_geometry.h"
#include "shell/qt/board.h"
#include "tests/shell/board_screen.h"

class BoardWidgetTest : public BoardGameTest {
  protected:
    static constexpr int SIZE = 44;

    void SetUp() override {
        BoardGameTest::SetUp();
        program_paths.program_folder = PROJECT_FOLDER "/data/";
        forget_art();
        settings.square_size = SIZE;
        settings.board_inverted = 0;
        settings.square_numbers = 0;
        slide_clock = [] { return passed_ms; };
        board = std::make_unique<Board>();
        board->show_slides(false);
        board->resize(SIZE * BOARD_ROWS, SIZE * BOARD_ROWS);
        shown_board = board.get();
        ui.redraw_board = [] {
            ++screen.redraws;
            shown_board->redraw();
        };
        board->show();
        QApplication::processEvents();
    }
    void TearDown() override {
        BoardGameTest::TearDown();
        board.reset();
        shown_board = nullptr;
        forget_art();
        program_paths = ProgramPaths{};
        slide_clock = former_clock;
    }

    // Where a square of the number is on the board, in pixels of the widget.
    QRect square_rect(int square) const {
        const BoardPlace place = place_of_square(square - 1, settings.board_inverted != 0);
        const int size = board->square_size();
        return {place.column * size, place.row * size, size, size};
    }
    QPoint middle(int square) const { return square_rect(square).center(); }

    // What is drawn there.
    QImage drawn_at(const QRect& rect) const {
        const QImage whole = board->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const double scale = whole.devicePixelRatio();
        QImage part = whole.copy(QRectF(rect.topLeft() * scale, QSizeF(rect.size()) * scale).toRect());
        part.setDevicePixelRatio(1);
        return part;
    }
    QImage drawn_square(int square) const { return drawn_at(square_rect(square)); }

    void press(QPoint at) const { send(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton); }
    void move_mouse(QPoint at) const { send(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton); }
    void release(QPoint at) const { send(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton); }
    void double_click(int square) const {
        click(square);
        send(QEvent::MouseButtonDblClick, middle(square), Qt::LeftButton, Qt::LeftButton);
        release(square);
    }
    void press(int square) const { press(middle(square)); }
    void move_mouse(int square) const { move_mouse(middle(square)); }
    void release(int square) const { release(middle(square)); }
    void drag(int from, int to) const {
        press(from);
        move_mouse((middle(from) + middle(to)) / 2);
        move_mouse(to);
        release(to);
    }
    void click(int square, Qt::MouseButton button = Qt::LeftButton) const {
        QTest::mouseClick(board.get(), button, Qt::NoModifier, middle(square));
    }

    // Lets time pass for pieces that slide.
    void let_pass(int milliseconds) const {
        passed_ms += milliseconds;
        board->repaint();
    }

    std::unique_ptr<Board> board;

  private:
    void send(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons buttons) const {
        QMouseEvent event(type, at, board->mapToGlobal(QPointF(at)), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(board.get(), &event);
    }
    static inline Board* shown_board = nullptr;
    static inline int64_t passed_ms = 0;
    int64_t (*const former_clock)() = slide_clock;
};
