// What the board shows, and what clicks and drags on it do.
#include "shell/qt/board.h"

#include "control/game_flow.h"
#include "shell/board_clicks.h"
#include "tests/gui/board_fixture.h"

namespace {

using Marks = std::vector<int32_t>;

class BoardView : public BoardWidgetTest {
  protected:
    // The tile on a square of this kind of wood, laid as one of the ways allows.
    QImage tile_picture(Tile tile, Tile wood, int lay) const {
        const double scale = board->devicePixelRatioF();
        QImage picture(QSize(SIZE, SIZE) * scale, QImage::Format_RGB32);
        picture.setDevicePixelRatio(scale);
        QPainter painter(&picture);
        painter.drawPixmap(0, 0, board_tile(wood, SIZE, scale, lay));
        if (tile != wood) painter.drawPixmap(0, 0, board_tile(tile, SIZE, scale));
        painter.end();
        picture.setDevicePixelRatio(1);
        return picture;
    }
    bool shows(const QImage& picture, Tile tile, Tile wood) const {
        for (int lay = 0; lay < TILE_LAYS; ++lay)
            if (picture == tile_picture(tile, wood, lay)) return true;
        return false;
    }
    void expect_whole_board(const std::string& where) const {
        for (int square = 1; square <= SQUARES; ++square)
            EXPECT_TRUE(shows(drawn_square(square), tile_on(game.board, square - 1), Tile::Bsquare))
                << where << " " << square;
        for (int row = 0; row < BOARD_ROWS; ++row)
            for (int column = row % 2; column < BOARD_ROWS; column += 2)
                EXPECT_TRUE(
                    shows(drawn_at({column * SIZE, row * SIZE, SIZE, SIZE}), Tile::Wsquare, Tile::Wsquare))
                    << where << " " << column << " " << row;
    }
};

TEST_F(BoardView, ShowsEveryPieceInItsPlace) {
    board->redraw();
    expect_whole_board("start");
    set_position("W:W1,K32,33,K50:B2,K3,20,K46,45");
    board->redraw();
    expect_whole_board("kings");
    settings.board_inverted = 1;
    board->redraw();
    expect_whole_board("inverted");
}

TEST_F(BoardView, TilesDiffer) {
    const std::vector<Tile> pieces = {Tile::Bcheck, Tile::Wcheck, Tile::Bking, Tile::Wking, Tile::Bsquare};
    for (const Tile a : pieces)
        for (const Tile b : pieces)
            EXPECT_EQ(tile_picture(a, Tile::Bsquare, 0) == tile_picture(b, Tile::Bsquare, 0), a == b);
}

TEST_F(BoardView, KingIsTestedBeforeTheMan) {
    set_position("W:W31,K32:B1,K2");
    EXPECT_EQ(tile_on(game.board, 0), Tile::Bcheck);
    EXPECT_EQ(tile_on(game.board, 1), Tile::Bking);
    EXPECT_EQ(tile_on(game.board, 30), Tile::Wcheck);
    EXPECT_EQ(tile_on(game.board, 31), Tile::Wking);
    EXPECT_EQ(tile_on(game.board, 3), Tile::Bsquare);
}

// The smallest rectangle that has all differences of two pictures; empty if they are equal.
QRect difference(const QImage& a, const QImage& b) {
    QRect found;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y)) found |= QRect(x, y, 1, 1);
    return found;
}

TEST_F(BoardView, NumbersStandInTheLowerRightCornerOfDarkSquares) {
    for (const int inverted : {0, 1}) {
        settings.board_inverted = inverted;
        settings.square_numbers = 0;
        board->redraw();
        std::vector<QImage> plain;
        for (int square = 1; square <= SQUARES; ++square) plain.push_back(drawn_square(square));
        settings.square_numbers = 1;
        board->redraw();
        for (int square = 1; square <= SQUARES; ++square) {
            const QImage numbered = drawn_square(square);
            const QRect changed = difference(plain[static_cast<size_t>(square - 1)], numbered);
            ASSERT_FALSE(changed.isEmpty()) << square;
            EXPECT_GE(changed.left(), numbered.width() / 2) << square;
            EXPECT_GE(changed.top(), numbered.height() / 2) << square;
            int white = 0;
            for (int y = changed.top(); y <= changed.bottom(); ++y)
                for (int x = changed.left(); x <= changed.right(); ++x)
                    white += qGray(numbered.pixel(x, y)) > 160;
            EXPECT_GT(white, 0) << square;
        }
        // The same number is wider than another of fewer digits, whichever way the board stands.
        const QRect one = difference(plain[0], drawn_square(1));
        const QRect fifty = difference(plain[49], drawn_square(50));
        EXPECT_LT(one.width(), fifty.width());
    }
}

// The shadow to the lower right is there on every square, the one all around only where it is needed.
TEST_F(BoardView, NumbersHaveAShadowAllAroundWhereTheyLieOnAWhitePiece) {
    const auto number_of = [this](const char* fen) {
        set_position(fen);
        settings.square_numbers = 0;
        board->redraw();
        const QImage plain = drawn_square(27);
        settings.square_numbers = 1;
        board->redraw();
        return difference(plain, drawn_square(27));
    };
    for (const int size : {30, 60}) {
        board->resize(size * BOARD_ROWS, size * BOARD_ROWS);
        const QRect on_black = number_of("W:W31:B27"), on_white = number_of("W:W27:B1");
        ASSERT_FALSE(on_black.isEmpty());
        EXPECT_EQ(on_white.top() < on_black.top(), size == 30) << size;
        EXPECT_EQ(on_white.left() < on_black.left(), size == 30) << size;
    }
}

TEST_F(BoardView, MarksAreTwoNestedWhiteFrames) {
    set_position("W:W32:B1");
    add_highlight(27);
    board->redraw();
    const QImage marked = drawn_square(27);
    const int lines = static_cast<int>(2 * board->devicePixelRatioF());
    const int last = marked.width() - 1;
    for (int i = 0; i <= last; ++i)
        for (int depth = 0; depth < lines; ++depth) {
            if (i < depth || i > last - depth) continue;
            EXPECT_EQ(marked.pixel(i, depth), qRgb(255, 255, 255));
            EXPECT_EQ(marked.pixel(i, last - depth), qRgb(255, 255, 255));
            EXPECT_EQ(marked.pixel(depth, i), qRgb(255, 255, 255));
            EXPECT_EQ(marked.pixel(last - depth, i), qRgb(255, 255, 255));
        }
    EXPECT_NE(marked.pixel(lines, lines), qRgb(255, 255, 255));
    clear_highlights();
    board->redraw();
    expect_whole_board("without marks");
}

// Counts how often a widget is painted.
class PaintCounter : public QObject {
  public:
    explicit PaintCounter(QWidget& watched) { watched.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

TEST_F(BoardView, RedrawPaintsBeforeItReturns) {
    PaintCounter counter(*board);
    board->redraw();
    EXPECT_EQ(counter.paints, 1);
    board->show_slides(true);
    set_position("W:W32:B1");
    board->redraw();
    ASSERT_EQ(make_user_move(0), 0);
    EXPECT_TRUE(board->is_sliding());
    const int before = counter.paints;
    board->redraw();
    EXPECT_EQ(counter.paints, before + 1) << "while a piece slides";
    board->hide();
    const int hidden = counter.paints;
    board->redraw();
    EXPECT_EQ(counter.paints, hidden);
}

TEST_F(BoardView, ClickFindsTheSquareThatIsDrawnThere) {
    for (const int inverted : {0, 1}) {
        settings.board_inverted = inverted;
        set_position("W:W32,33:B1");
        board->redraw();
        click(33);
        EXPECT_EQ(marks_now(), Marks{33});
        click(29);
        EXPECT_EQ(fen_now(), "B:W29,32:B1");
    }
}

TEST_F(BoardView, LightSquareUnderTheMouseEndsTheSelection) {
    click(32);
    EXPECT_EQ(marks_now(), Marks{32});
    QTest::mouseClick(board.get(), Qt::LeftButton, Qt::NoModifier, QPoint(SIZE / 2, SIZE / 2));
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardView, PlainClickCountsWhenTheButtonGoesDown) {
    set_position("W:W36,47:B1");
    press(36);
    EXPECT_EQ(game.history_count, 2);
    release(36);
    EXPECT_EQ(game.history_count, 2);
}

// A fine screen tells fractions of a pixel.
TEST_F(BoardView, TheEdgeOfASquareIsItsOwn) {
    const QPointF edge = QPointF(square_rect(32).topLeft()) + QPointF(SIZE - 0.5, SIZE - 0.5);
    QMouseEvent event(QEvent::MouseButtonPress, edge, board->mapToGlobal(edge), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(board.get(), &event);
    EXPECT_EQ(game.highlight_count, 1);
    EXPECT_EQ(game.highlights[0], 32);
}

TEST_F(BoardView, IsDescribedToThoseWhoDoNotSeeIt) {
    board->redraw();
    EXPECT_TRUE(board->accessibleDescription().startsWith(QStringLiteral("W:W31,")));
    ASSERT_EQ(make_user_move(0), 0);
    board->redraw();
    EXPECT_TRUE(board->accessibleDescription().startsWith(QStringLiteral("B:W")));
    EXPECT_EQ(board->accessibleDescription().toStdString(), fen_now());
}

TEST_F(BoardView, ButtonsSetUpPieces) {
    set_position("W:W32:B1");
    set_gui_mode(SETUP_MODE);
    click(20);
    EXPECT_EQ(fen_now(), "W:W32:B1,20");
    click(20, Qt::RightButton);
    EXPECT_EQ(fen_now(), "W:W20,32:B1");
    EXPECT_TRUE(shows(drawn_square(20), Tile::Wcheck, Tile::Bsquare));
    drag(20, 25);
    EXPECT_EQ(fen_now(), "W:W32:B1,20") << "nothing is dragged, the press alone counts";
    click(20, Qt::MiddleButton);
    EXPECT_EQ(fen_now(), "W:W32:B1,20");
}

TEST_F(BoardView, DragPlaysTheMove) {
    drag(32, 28);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_FALSE(game.board.white & mask_of_square[31]);
    EXPECT_TRUE(game.board.white & mask_of_square[27]);
}

TEST_F(BoardView, DraggedPieceFollowsTheMouse) {
    press(32);
    EXPECT_TRUE(shows(drawn_square(33), Tile::Wcheck, Tile::Bsquare));
    move_mouse(27);
    clear_highlights();
    add_highlight(32);
    const QImage left = drawn_square(32);
    const int inner = left.width() / 2;
    EXPECT_LT(qGray(left.pixel(inner, inner)), 150) << "the square it left is empty";
    EXPECT_GT(qGray(drawn_square(27).pixel(inner, inner)), 170) << "the piece is at the mouse";
    release(28);
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(BoardView, DragThatLeadsNowhereIsTakenBack) {
    drag(32, 29);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
    set_position("W:W32,35:B1");
    drag(32, 30);
    EXPECT_EQ(game.history_count, 1) << "the move of another piece to that square is not played";
    EXPECT_EQ(marks_now(), Marks{});
    press(32);
    move_mouse(QPoint(-40, 900));
    release(QPoint(-40, 900));
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
    expect_whole_board("after drags that led nowhere");
}

TEST_F(BoardView, DragBackToItsSquareIsAClick) {
    press(32);
    move_mouse(28);
    move_mouse(32);
    release(32);
    EXPECT_EQ(marks_now(), Marks{32});
    click(28);
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(BoardView, AHandThatShakesDragsNothing) {
    // Two pixels from the square that is pressed to the light one beside it.
    const QPoint edge(square_rect(32).right(), middle(32).y());
    press(edge);
    move_mouse(edge + QPoint(2, 0));
    release(edge + QPoint(2, 0));
    EXPECT_EQ(marks_now(), Marks{32});
}

TEST_F(BoardView, DragEndsWhenTheBoardChangesItsSize) {
    press(32);
    move_mouse(28);
    board->resize(SIZE * BOARD_ROWS / 2, SIZE * BOARD_ROWS / 2);
    move_mouse(28);
    release(28);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{32});
}

TEST_F(BoardView, PressThatPlayedMakesNoSecondClickAtTheRelease) {
    set_position("W:W36,47:B1,6");
    drag(36, 6);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(fen_now(), "B:W31,47:B1,6") << "6 would be black's only other man to click";
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardView, SecondPressOfADoubleClickPlaysNothing) {
    // Black takes back to 36 at once, so that a second press there would play it.
    set_position("W:W36,47:B27,1");
    double_click(36);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(fen_now(), "B:W31,47:B1,27");
    click(36);
    EXPECT_EQ(game.history_count, 3);
    // Where the first press played nothing the second counts.
    set_position("W:W32,33:B1");
    double_click(32);
    EXPECT_EQ(marks_now(), (Marks{32, 32}));
}

TEST_F(BoardView, DragEndsWhenItsClickIsTakenBack) {
    press(32);
    move_mouse(28);
    drop_clicks();
    release(28);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardView, EngineToMoveTakesNoClicks) {
    game.gui_mode = NORMAL_MODE;
    search_thread.searching = 1;
    drag(32, 28);
    click(35);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
}

// Where pixels of the board are no whole ones of the screen there must be no gaps between squares.
TEST_F(BoardView, NoGapsAtAnyScale) {
    for (const double scale : {1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 3.0})
        for (const int size : {20, 31, 44, 45}) {
            const int extent = static_cast<int>(size * BOARD_ROWS * scale);
            QImage picture(extent, extent, QImage::Format_RGB32);
            picture.fill(Qt::magenta);
            picture.setDevicePixelRatio(scale);
            BoardScene scene;
            scene.position = START_POSITION;
            scene.square_size = size;
            QPainter painter(&picture);
            paint_board(painter, scene);
            painter.end();
            int bare = 0;
            for (int y = 0; y < extent; ++y)
                for (int x = 0; x < extent; ++x)
                    bare += qGreen(picture.pixel(x, y)) + 60 < qBlue(picture.pixel(x, y));
            EXPECT_EQ(bare, 0) << scale << " " << size;
        }
}

TEST_F(BoardView, OtherSizesAreDrawnWhole) {
    board->resize(463, 470);
    EXPECT_EQ(board->square_size(), 46);
    board->redraw();
    EXPECT_EQ(board->grab().size() / board->devicePixelRatioF(), QSize(463, 470));
    // The board is in the middle of the room it has.
    const QPoint middle_of_28(1 + 46 * 4 + 23, 5 + 46 * 5 + 23);
    QTest::mouseClick(board.get(), Qt::LeftButton, Qt::NoModifier, middle_of_28);
    EXPECT_EQ(marks_now(), Marks{28});
    for (const QSize& size : {QSize(620, 470), QSize(470, 620)}) {
        drop_clicks();
        board->resize(size);
        const QPoint corner((size.width() - 470) / 2, (size.height() - 470) / 2);
        QTest::mouseClick(board.get(), Qt::LeftButton, Qt::NoModifier,
                          corner + QPoint(47 * 4 + 23, 47 * 5 + 23));
        EXPECT_EQ(marks_now(), Marks{28}) << size.width();
    }
}

}  // namespace
