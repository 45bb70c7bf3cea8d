// How the board shows moves: the mark of the last one, and pieces that slide and fade.
#include "control/game_flow.h"
#include "tests/gui/board_fixture.h"

namespace {

class BoardMoves : public BoardWidgetTest {
  protected:
    // The corner of a square, where no piece reaches, is as it is without a last move.
    bool is_tinted(int square) const {
        const QImage drawn = drawn_square(square);
        QImage plain(drawn.size(), QImage::Format_RGB32);
        for (int lay = 0; lay < TILE_LAYS; ++lay) {
            QPainter painter(&plain);
            painter.drawPixmap(0, 0, board_tile(Tile::Bsquare, drawn.width(), 1, lay));
            painter.end();
            if (plain.copy(0, 0, 4, 4) == drawn.copy(0, 0, 4, 4)) return false;
        }
        return true;
    }
    std::vector<int> tinted() const {
        std::vector<int> found;
        for (int square = 1; square <= SQUARES; ++square)
            if (is_tinted(square)) found.push_back(square);
        return found;
    }
    void play(int from, int to) const {
        click(from);
        if (game.board_side == before_side) click(to);
        before_side ^= 1;
    }
    mutable int before_side = WHITE;
};

using Squares = std::vector<int>;

TEST_F(BoardMoves, LastMoveIsMarked) {
    EXPECT_EQ(tinted(), Squares{});
    play(32, 28);
    EXPECT_EQ(tinted(), (Squares{28, 32}));
    play(19, 23);
    EXPECT_EQ(tinted(), (Squares{19, 23}));
    settings.board_inverted = 1;
    board->redraw();
    EXPECT_EQ(tinted(), (Squares{19, 23}));
    move_in_game_history(2);
    EXPECT_EQ(tinted(), (Squares{28, 32})) << "a step back shows the move before";
    move_in_game_history(1);
    EXPECT_EQ(tinted(), Squares{});
}

TEST_F(BoardMoves, NoLastMoveIsMarkedWhereThereIsNone) {
    play(32, 28);
    set_gui_mode(SETUP_MODE);
    board->redraw();
    EXPECT_EQ(tinted(), Squares{});
    set_gui_mode(TWO_PLAYERS_MODE);
    board->redraw();
    EXPECT_EQ(tinted(), Squares{}) << "a new game began with what was set up";
    Position after = game.board;
    after.black &= ~mask_of_square[0];
    addto_game_history(after, BLACK, 1);
    set_board(after, BLACK);
    board->redraw();
    EXPECT_EQ(tinted(), Squares{}) << "a position set up within the game";
    set_board(START_POSITION, WHITE);
    board->redraw();
    EXPECT_EQ(tinted(), Squares{}) << "the board is not what the history says";
}

TEST_F(BoardMoves, FullHistoryMarksNothingWrong) {
    play(32, 28);
    game.history_count = game.history_last = MAX_HISTORY;
    board->redraw();
    EXPECT_EQ(tinted(), Squares{});
}

TEST_F(BoardMoves, CaptureMarksStartAndEnd) {
    set_position("W:W32:B28,19,1");
    click(32);
    EXPECT_EQ(tinted(), (Squares{14, 32}));
}

// Taken all round, the square it began on is marked as any other that a piece has come to.
TEST_F(BoardMoves, ASquareThatAMoveBeginsAndEndsOnIsMarkedOnce) {
    const auto corner = [this](int square) { return drawn_square(square).copy(0, 0, 4, 4); };
    set_position("W:W48:B1");
    click(48);
    click(43);
    ASSERT_EQ(tinted(), (Squares{43, 48}));
    const QImage arrived = corner(43);
    set_position("W:W43:B1,28,29,38,39");
    click(43);
    ASSERT_EQ(fen_now(), "B:W43:B1");
    EXPECT_EQ(tinted(), Squares{43});
    EXPECT_EQ(corner(43), arrived);
}

TEST_F(BoardMoves, TheMarkLiesBelowThePiece) {
    const auto middle_of = [this](int square) {
        const QImage drawn = drawn_square(square);
        return drawn.pixel(drawn.width() / 2, drawn.height() / 2);
    };
    set_position("W:W48:B1");
    board->redraw();
    const QRgb piece = middle_of(48);
    click(48);
    click(43);
    ASSERT_EQ(tinted(), (Squares{43, 48}));
    EXPECT_EQ(middle_of(43), piece);
}

// ---- slides ----

TEST_F(BoardMoves, PieceSlidesAndArrives) {
    board->show_slides(true);
    set_position("W:W32:B1");
    board->redraw();
    EXPECT_FALSE(board->is_sliding()) << "a position of its own";
    click(32);
    click(28);
    ASSERT_EQ(game.history_count, 2);
    ASSERT_TRUE(board->is_sliding());
    const QImage early = drawn_square(32);
    let_pass(FIRST_SLIDE_MS);
    EXPECT_FALSE(board->is_sliding());
    const QImage late = drawn_square(32);
    EXPECT_NE(early, late) << "the piece was still near its start";
    board->show_slides(false);
    board->redraw();
    EXPECT_EQ(late, drawn_square(32));
}

TEST_F(BoardMoves, PieceIsHalfWayAfterHalfTheTime) {
    for (const int inverted : {0, 1}) {
        settings.board_inverted = inverted;
        set_position("W:W32:B1");
        board->show_slides(false);
        board->redraw();
        board->show_slides(true);
        click(32);
        click(28);
        ASSERT_TRUE(board->is_sliding());
        const QPoint half_way = (middle(32) + middle(28)) / 2;
        const auto drawn_around = [this](QPoint at) {
            return drawn_at(QRect(at - QPoint(5, 5), QSize(10, 10)));
        };
        let_pass(FIRST_SLIDE_MS / 2);
        const QImage there = drawn_around(half_way), start = drawn_around(middle(32));
        let_pass(FIRST_SLIDE_MS);
        ASSERT_FALSE(board->is_sliding());
        EXPECT_NE(drawn_around(half_way), there) << inverted;
        EXPECT_EQ(drawn_around(middle(32)), start) << inverted;
    }
}

TEST_F(BoardMoves, TakenPiecesFade) {
    board->show_slides(true);
    set_position("W:W32:B28,19,1");
    board->redraw();
    const QImage before = drawn_square(19);
    click(32);
    ASSERT_EQ(game.history_count, 2);
    ASSERT_TRUE(board->is_sliding());
    EXPECT_EQ(drawn_square(19), before) << "not passed yet";
    let_pass(FIRST_SLIDE_MS + FURTHER_SLIDE_MS + FADE_MS);
    EXPECT_FALSE(board->is_sliding());
    EXPECT_NE(drawn_square(19), before);
}

TEST_F(BoardMoves, GameNeverWaitsForASlide) {
    board->show_slides(true);
    board->redraw();
    click(32);
    click(28);
    ASSERT_TRUE(board->is_sliding());
    click(19);
    click(23);
    EXPECT_EQ(game.history_count, 3);
    EXPECT_TRUE(board->is_sliding()) << "now the second move slides";
    const QImage arrived = drawn_square(28);
    board->show_slides(false);
    board->redraw();
    EXPECT_EQ(drawn_square(28), arrived) << "and the first stands where it ended";
}

TEST_F(BoardMoves, OtherMarksDoNotDisturbASlide) {
    board->show_slides(true);
    board->redraw();
    click(32);
    click(28);
    ASSERT_TRUE(board->is_sliding());
    clear_highlights();
    board->redraw();
    EXPECT_TRUE(board->is_sliding());
}

TEST_F(BoardMoves, StepBackSlidesBack) {
    board->show_slides(true);
    board->redraw();
    click(32);
    click(28);
    let_pass(FIRST_SLIDE_MS);
    ASSERT_FALSE(board->is_sliding());
    move_in_game_history(1);
    EXPECT_TRUE(board->is_sliding());
    move_in_game_history(2);
    EXPECT_TRUE(board->is_sliding());
}

TEST_F(BoardMoves, MoreThanOneMoveDoesNotSlide) {
    board->show_slides(true);
    board->redraw();
    click(32);
    click(28);
    click(19);
    click(23);
    move_in_game_history(1);
    EXPECT_FALSE(board->is_sliding()) << "two moves back";
    move_in_game_history(3);
    EXPECT_FALSE(board->is_sliding()) << "two moves forward";
    set_gui_mode(SETUP_MODE);
    set_board(START_POSITION, WHITE);
    board->redraw();
    Position after = START_POSITION;
    after.white = (after.white & ~mask_of_square[32]) | mask_of_square[28];
    set_board(after, BLACK);
    board->redraw();
    EXPECT_FALSE(board->is_sliding()) << "what is set up does not slide, though 33-29 is a move";
}

TEST_F(BoardMoves, SlidesCanBeSwitchedOff) {
    click(32);
    click(28);
    EXPECT_FALSE(board->is_sliding());
    board->show_slides(true);
    click(19);
    click(23);
    ASSERT_TRUE(board->is_sliding());
    board->show_slides(false);
    EXPECT_FALSE(board->is_sliding());
}

TEST_F(BoardMoves, DraggedPieceDoesNotSlideAgain) {
    board->show_slides(true);
    board->redraw();
    drag(32, 28);
    ASSERT_EQ(game.history_count, 2);
    const QImage target = drawn_square(28);
    board->show_slides(false);
    board->redraw();
    EXPECT_EQ(drawn_square(28), target);
}

}  // namespace
