// The window of the board: whole squares, a square shape, and no way to close it.
#include "shell/qt/board_window.h"

#include <QMdiArea>

#include "tests/gui/board_fixture.h"

namespace {

class BoardFrame : public BoardGameTest {
  protected:
    void SetUp() override {
        BoardGameTest::SetUp();
        program_paths.program_folder = PROJECT_FOLDER "/data/";
        settings.square_size = 44;
        area = std::make_unique<QMdiArea>();
        area->resize(1600, 1500);
        window = new BoardWindow;
        area->addSubWindow(window);
        area->show();
        window->show();
        QApplication::processEvents();
    }
    void TearDown() override {
        BoardGameTest::TearDown();
        area.reset();
        program_paths = ProgramPaths{};
    }
    Board& board() const { return window->board(); }
    void expect_squares_of(int size) const {
        EXPECT_EQ(settings.square_size, size);
        EXPECT_EQ(board().size(), QSize(10 * size, 10 * size));
        EXPECT_EQ(board().square_size(), size);
    }
    void settle() const {
        EXPECT_TRUE(QTest::qWaitFor([this] { return window->is_settled(); }, 120000));
    }
    // What the window is larger than the board.
    QSize frame() const { return window->size() - board().size(); }

    void send(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons buttons) const {
        QMouseEvent event(type, at, window->mapToGlobal(QPointF(at)), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(window, &event);
    }
    // Drags the window from a point of its frame.
    void drag_frame(QPoint from, QPoint by) const {
        // Qt learns where the borders are only some time after a change of the size.
        QTest::qWait(300);
        const QPoint start = window->pos();
        send(QEvent::MouseMove, from, Qt::NoButton, Qt::NoButton);
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        for (int part = 1; part <= 4; ++part) {
            const QPoint to = start + from + by * part / 4;
            send(QEvent::MouseMove, to - window->pos(), Qt::NoButton, Qt::LeftButton);
            EXPECT_EQ(board().width(), board().height()) << "square while it is dragged";
        }
        send(QEvent::MouseButtonRelease, start + from + by - window->pos(), Qt::LeftButton, Qt::NoButton);
    }

    std::unique_ptr<QMdiArea> area;
    BoardWindow* window = nullptr;
};

// The menu of the right button has its release, and the window may be sized by keys.
TEST_F(BoardFrame, TheRightButtonHoldsNoBorder) {
    settle();
    send(QEvent::MouseButtonPress, QPoint(window->width() / 2, 8), Qt::RightButton, Qt::RightButton);
    window->resize(window->size() + QSize(37, 91));
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->is_settled(); }, 5000));
    expect_squares_of(48);
}

// A box has the release of the button.
TEST_F(BoardFrame, ABorderThatIsLetGoSettles) {
    settle();
    send(QEvent::MouseButtonPress, QPoint(window->width() / 2, 8), Qt::LeftButton, Qt::LeftButton);
    window->resize(window->size() + QSize(37, 91));
    window->let_go();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->is_settled(); }, 5000));
    expect_squares_of(48);
}

TEST_F(BoardFrame, HoldsTenSquaresAndItsFrame) {
    expect_squares_of(44);
    EXPECT_GT(frame().height(), 0);
    EXPECT_FALSE(window->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(window->windowFlags() & Qt::WindowMaximizeButtonHint);
    EXPECT_FALSE(window->windowFlags() & Qt::WindowMinimizeButtonHint);
}

TEST_F(BoardFrame, CannotBeClosed) {
    window->close();
    area->closeAllSubWindows();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(area->subWindowList().size(), 1);
}

TEST_F(BoardFrame, StaysAsItIsWhenTheAreaMaximizes) {
    window->showMaximized();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window->isMaximized(); }, 20000));
    settle();
    EXPECT_EQ(board().width(), 10 * settings.square_size);
    EXPECT_EQ(board().height(), 10 * settings.square_size);
}

TEST_F(BoardFrame, SettlesOnWholeSquares) {
    const QSize around = frame();
    window->resize(QSize(463, 463) + around);
    settle();
    expect_squares_of(46);
    window->resize(QSize(465, 465) + around);
    settle();
    expect_squares_of(47);
    window->resize(QSize(474, 474) + around);
    settle();
    expect_squares_of(47);
    EXPECT_EQ(frame(), around);
}

TEST_F(BoardFrame, OneExtentTakesTheOtherAlong) {
    const QSize around = frame();
    window->resize(QSize(600, 440) + around);
    settle();
    expect_squares_of(60);
    window->resize(QSize(600, 312) + around);
    settle();
    expect_squares_of(31);
    window->resize(QSize(500, 400) + around);
    settle();
    expect_squares_of(40);
}

TEST_F(BoardFrame, SizesHaveLimits) {
    window->resize(20, 20);
    settle();
    expect_squares_of(MIN_SQUARE_SIZE);
    window->resize(5000, 5000);
    settle();
    expect_squares_of(MAX_SQUARE_SIZE);
}

TEST_F(BoardFrame, FollowsTheSetting) {
    settings.square_size = 57;
    window->follow_square_size();
    QApplication::processEvents();
    expect_squares_of(57);
    for (const int32_t wrong : {0, -3, INT32_MIN}) {
        settings.square_size = wrong;
        window->follow_square_size();
        expect_squares_of(MIN_SQUARE_SIZE);
    }
    settings.square_size = INT32_MAX;
    window->follow_square_size();
    expect_squares_of(MAX_SQUARE_SIZE);
    settle();
    expect_squares_of(MAX_SQUARE_SIZE);
}

TEST_F(BoardFrame, DraggedBordersKeepItSquare) {
    window->move(200, 200);
    const QRect start = window->geometry();
    const QPoint right(start.width() - 1, start.height() / 2);
    drag_frame(right, {103, 0});
    EXPECT_EQ(board().width(), 540);
    expect_squares_of(54);
    EXPECT_EQ(window->pos(), start.topLeft());
    const QRect second = window->geometry();
    drag_frame({0, second.height() / 2}, {-97, 0});
    expect_squares_of(64);
    EXPECT_EQ(window->geometry().top(), second.top());
    const QRect third = window->geometry();
    drag_frame({third.width() - 1, third.height() - 1}, {-200, -210});
    expect_squares_of(44);
    EXPECT_EQ(window->pos(), third.topLeft());
}

TEST_F(BoardFrame, SettlesWhenTheBorderIsLetGo) {
    QTest::qWait(300);  // as above
    const QPoint from(window->width() - 1, window->height() / 2);
    const QPoint to = from + QPoint(13, 0);
    send(QEvent::MouseMove, from, Qt::NoButton, Qt::NoButton);
    send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(board().width(), 453);
    QTest::qWait(400);
    EXPECT_EQ(board().width(), 453) << "the hand rests";
    send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    expect_squares_of(45);
}

TEST_F(BoardFrame, CanBeMoved) {
    window->move(100, 100);
    const QSize before = window->size();
    drag_frame({before.width() / 2, 10}, {60, 40});
    EXPECT_EQ(window->size(), before);
    EXPECT_EQ(window->pos(), QPoint(160, 140));
    expect_squares_of(44);
}

TEST_F(BoardFrame, ClicksReachTheBoard) {
    Board& inside = board();
    inside.show_slides(false);
    QTest::mouseClick(&inside, Qt::LeftButton, Qt::NoModifier, QPoint(3 * 44 + 20, 6 * 44 + 20));
    EXPECT_EQ(marks_now(), std::vector<int32_t>{32});
    EXPECT_EQ(settings.square_size, 44);
}

}  // namespace
