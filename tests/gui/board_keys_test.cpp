// Moves by the keyboard alone.
#include "control/game_flow.h"
#include "tests/gui/board_fixture.h"

namespace {

using Marks = std::vector<int32_t>;

class BoardKeys : public BoardWidgetTest {
  protected:
    void SetUp() override {
        BoardWidgetTest::SetUp();
        QObject::connect(board.get(), &Board::typing_changed, board.get(),
                         [this](const QString& text) { typing = text.toStdString(); });
        board->setFocus();
    }
    void type(const char* text) const { QTest::keyClicks(board.get(), QString::fromLatin1(text)); }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QTest::keyClick(board.get(), which, modifiers);
    }

    std::string typing;  // as the board shows it
};

TEST_F(BoardKeys, TypedSquaresPlayAMove) {
    type("32 28");
    EXPECT_EQ(typing, "32 28");
    EXPECT_EQ(game.history_count, 1);
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_TRUE(game.board.white & mask_of_square[27]);
    type("19-23");
    EXPECT_EQ(typing, "19-23");
    key(Qt::Key_Enter);
    EXPECT_EQ(game.history_count, 3);
    type("28x19");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 4);
    EXPECT_EQ(typing, "");
}

TEST_F(BoardKeys, OneSquareIsAClick) {
    type("32");
    key(Qt::Key_Return);
    EXPECT_EQ(marks_now(), Marks{32});
    type("28");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 2);
    type("0005");
    key(Qt::Key_Return);
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardKeys, AllThatIsTypedIsOneMove) {
    for (const char* const text : {"36 31 6", "36-41", "36-0", "36-99", "35-31"}) {
        set_position("W:W35,36,47:B1");
        type(text);
        key(Qt::Key_Return);
        EXPECT_EQ(game.history_count, 1) << text << ": 36-31 or 35-30 is not what was typed";
        EXPECT_EQ(marks_now(), Marks{});
    }
}

TEST_F(BoardKeys, SquareThatDoesNotFollowEndsTheMove) {
    set_position("W:W32,35:B1");
    type("32-30");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 1) << "35-30 is not what was typed";
    EXPECT_EQ(marks_now(), Marks{});
}

TEST_F(BoardKeys, WhatIsNoSquareIsNotClicked) {
    type("99 0 123456789012345678901234567890 51");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
    EXPECT_EQ(typing, "");
    for (int i = 0; i < 300; ++i) type("1");
    EXPECT_LT(typing.size(), 100u);
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(BoardKeys, TypingCanBeCorrected) {
    type("33");
    key(Qt::Key_Backspace);
    EXPECT_EQ(typing, "3");
    type("2");
    key(Qt::Key_Return);
    EXPECT_EQ(marks_now(), Marks{32});
}

TEST_F(BoardKeys, TypingEndsWithTheMode) {
    type("32");
    set_gui_mode(SETUP_MODE);
    board->redraw();
    EXPECT_EQ(typing, "") << "there it would put a man";
}

TEST_F(BoardKeys, TypingEndsWithThePositionAndWithAClick) {
    type("28");
    ASSERT_EQ(make_user_move(0), 0);
    board->redraw();
    type("20-24");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 3) << "28 was for the position before";
    type("32");
    ASSERT_EQ(move_in_game_history(2), 0);
    EXPECT_EQ(typing, "") << "what is forgotten is not shown";
    new_game();
    board->redraw();
    type("32");
    QTest::mouseClick(board.get(), Qt::LeftButton, Qt::NoModifier, QPoint(1, 1));
    EXPECT_EQ(typing, "");
    type("28");
    key(Qt::Key_Return);
    EXPECT_EQ(marks_now(), Marks{28}) << "not 3228";
}

TEST_F(BoardKeys, EscapeForgetsTypingAndMarks) {
    type("32");
    key(Qt::Key_Return);
    type("2");
    key(Qt::Key_Escape);
    EXPECT_EQ(typing, "");
    EXPECT_EQ(marks_now(), Marks{});
    type("8");
    key(Qt::Key_Return);
    EXPECT_EQ(game.history_count, 1) << "not 28";
}

TEST_F(BoardKeys, LettersAndSeparatorsAloneAreLeftToOthers) {
    QWidget* const widget = board.get();
    for (const char c : {'a', '-', 'x', ' ', '+'}) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(QLatin1Char(c)));
        QApplication::sendEvent(widget, &event);
        EXPECT_FALSE(event.isAccepted()) << c;
    }
    for (const Qt::Key which : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_Return}) {
        QKeyEvent event(QEvent::KeyPress, which, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
        EXPECT_FALSE(event.isAccepted()) << which;
    }
}

TEST_F(BoardKeys, CursorClicksSquares) {
    const QImage before = drawn_square(28);
    key(Qt::Key_Space);
    EXPECT_EQ(marks_now(), Marks{}) << "there is no cursor yet";
    key(Qt::Key_Down);
    EXPECT_NE(drawn_square(28), before) << "the cursor comes to 28";
    key(Qt::Key_Down);
    EXPECT_EQ(drawn_square(28), before);
    key(Qt::Key_Space);
    EXPECT_EQ(marks_now(), Marks{33});
    key(Qt::Key_Right, Qt::ControlModifier);
    key(Qt::Key_Space);
    EXPECT_EQ(marks_now(), Marks{34});
    key(Qt::Key_Up, Qt::ControlModifier);
    key(Qt::Key_Space);
    EXPECT_EQ(game.history_count, 2);
    EXPECT_TRUE(game.board.white & mask_of_square[28]) << "34-29";
    click(20);
    board->redraw();
    EXPECT_EQ(drawn_square(28), before) << "the mouse puts the cursor away";
}

TEST_F(BoardKeys, CursorStaysOnTheBoardAndFollowsItsTurn) {
    for (const int inverted : {0, 1}) {
        settings.board_inverted = inverted;
        board->redraw();
        set_position("W:W50:BK1");
        for (int i = 0; i < 12; ++i) key(Qt::Key_Up);
        for (int i = 0; i < 12; ++i) key(Qt::Key_Left, Qt::ControlModifier);
        for (int i = 0; i < 12; ++i) key(Qt::Key_Down);
        for (int i = 0; i < 12; ++i) key(Qt::Key_Right, Qt::ControlModifier);
        set_gui_mode(SETUP_MODE);
        // The dark square of the lowest row that is farthest to the right.
        key(Qt::Key_Space);
        EXPECT_EQ(fen_now(), inverted ? "W:W50:B" : "W:W:BK1,K50") << inverted;
        set_gui_mode(TWO_PLAYERS_MODE);
        key(Qt::Key_Escape);
    }
}

TEST_F(BoardKeys, SetupTakesBothButtons) {
    set_position("W:W32:B1");
    set_gui_mode(SETUP_MODE);
    type("20 25");
    key(Qt::Key_Return);
    EXPECT_EQ(fen_now(), "W:W32:B1,20,25") << "every square that was typed";
    type("20");
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(fen_now(), "W:W20,32:B1,25");
    key(Qt::Key_Down);
    key(Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_EQ(fen_now(), "W:W20,28,32:B1,25");
}

TEST_F(BoardKeys, InAGameShiftChangesNoClick) {
    type("32 28");
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(game.history_count, 2);
    for (const Qt::Key which : {Qt::Key_Up, Qt::Key_Up}) key(which);
    key(Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_EQ(marks_now(), Marks{23}) << "the cursor's click counts too";
}

TEST_F(BoardKeys, NothingIsTakenWhileTheEngineHasTheMove) {
    game.gui_mode = NORMAL_MODE;
    type("32");
    search_thread.searching = 1;
    type("28");
    key(Qt::Key_Return);
    key(Qt::Key_Space);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(marks_now(), Marks{});
    search_thread.searching = 0;
}

}  // namespace
