// The panes: their texts, colours and fonts, and how they are hidden.
#include "shell/qt/pane_window.h"

#include <QMdiArea>
#include <QScrollBar>
#include <QTextBlock>
#include <random>

#include "shell/qt/menu_state.h"
#include "tests/gui/desktop_fixture.h"

namespace {

constexpr std::array<ChildWindow, CHILD_WINDOWS> ALL_PANES = {CLOCK_WINDOW, GAME_WINDOW, STATUS_WINDOW,
                                                              PONDER_WINDOW, DXP_WINDOW};

class PaneWindows : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        open_small();
    }
    static PaneWindow& game_pane() { return main_window->pane(GAME_WINDOW); }
    static QTextEdit::ExtraSelection mark() {
        const auto marks = game_pane().edit().extraSelections();
        return marks.isEmpty() ? QTextEdit::ExtraSelection() : marks.front();
    }
    static std::string marked() { return mark().cursor.selectedText().toStdString(); }
};

}  // namespace

TEST_F(PaneWindows, ShowTheirTextsWithPlainLineEnds) {
    for (const ChildWindow pane : {STATUS_WINDOW, PONDER_WINDOW, CLOCK_WINDOW}) {
        ui.set_pane_text(pane, "one: 1\r\ntwo: 2\r\n");
        EXPECT_EQ(pane_shows(pane), "one: 1\ntwo: 2");
    }
}

TEST_F(PaneWindows, TextsThatFitDoNotScroll) {
    PaneWindow& pane = main_window->pane(STATUS_WINDOW);
    ui.set_pane_text(STATUS_WINDOW, "one: 1\r\ntwo: 2\r\nthree: 3\r\n");
    EXPECT_EQ(pane.edit().verticalScrollBar()->maximum(), 0);
}

TEST_F(PaneWindows, AreRewrittenOnlyWhenTheTextChanges) {
    int changes = 0;
    QObject::connect(&main_window->pane(STATUS_WINDOW).edit(), &QPlainTextEdit::textChanged,
                     &main_window->area(), [&changes] { ++changes; });
    ui.set_pane_text(STATUS_WINDOW, "first");
    const int first = changes;
    EXPECT_GT(first, 0);
    ui.set_pane_text(STATUS_WINDOW, "first");
    EXPECT_EQ(changes, first);
    ui.set_pane_text(STATUS_WINDOW, "second");
    EXPECT_GT(changes, first);
}

TEST_F(PaneWindows, CannotBeTypedInto) {
    for (const ChildWindow pane : ALL_PANES) {
        PaneEdit& edit = main_window->pane(pane).edit();
        const QString before = edit.toPlainText();
        QTest::keyClicks(&edit, QStringLiteral("text"));
        QTest::keyClick(&edit, Qt::Key_Backspace);
        EXPECT_EQ(edit.toPlainText(), before) << pane;
        EXPECT_TRUE(edit.isReadOnly());
    }
}

TEST_F(PaneWindows, TheCurrentMoveIsColoured) {
    ui.set_game_text("1. 32-28  19-23  \n2. 28x19  14x23  \n", 10, 17);
    EXPECT_EQ(marked(), "19-23  ");
    EXPECT_EQ(mark().format.foreground().color(), QColor(200, 80, 0));
    ui.set_game_text("1. 32-28  19-23  \n2. 28x19  14x23  \n", 0, 10);
    EXPECT_EQ(marked(), "1. 32-28  ");
    ui.set_game_text("1. 32-28  19-23  \n2. 28x19  14x23  \n", 3, 10);
    EXPECT_EQ(marked(), "32-28  ") << "the same end";
    ui.set_game_text("1. 32-28  19-23  \n2. 28x19  14x23  \n", 0, 0);
    EXPECT_TRUE(game_pane().edit().extraSelections().isEmpty());
}

TEST_F(PaneWindows, BytesBecomeCharacters) {
    ui.set_game_text("\xC3\xA9t\xC3\xA9 x\xC3\xA9 y", 6, 9);
    EXPECT_EQ(marked(), "x\xC3\xA9");
    ui.set_game_text("\xE9t\xE9 x\xE9 y", 4, 6);  // Latin-1
    EXPECT_EQ(marked(), "x\xC3\xA9");
    ui.set_game_text("FEN\r\n1. 32-28\r\n19-23", 15, 20);
    EXPECT_EQ(marked(), "19-23");
}

TEST_F(PaneWindows, TheCurrentMoveIsInView) {
    std::string text;
    for (int i = 1; i <= 200; ++i) text += std::to_string(i) + ". 32-28  19-23  \n";
    const auto in_view = [&](int position) {
        PaneEdit& edit = game_pane().edit();
        QTextCursor cursor(edit.document());
        cursor.setPosition(position);
        return edit.viewport()->rect().intersects(edit.cursorRect(cursor));
    };
    const int size = static_cast<int>(text.size());
    ui.set_game_text(text.c_str(), size - 10, size);
    EXPECT_TRUE(in_view(size - 2));
    EXPECT_FALSE(in_view(0));
    ui.set_game_text(text.c_str(), 0, 10);
    EXPECT_TRUE(in_view(0));
}

TEST_F(PaneWindows, TheGameOnTheBoardIsShown) {
    run_command(COMMAND_TWO_PLAYERS);
    play_moves(2);
    EXPECT_TRUE(pane_shows(GAME_WINDOW).starts_with("1. ")) << pane_shows(GAME_WINDOW);
    const std::string second = marked();
    EXPECT_FALSE(second.empty());
    run_command(COMMAND_BACK);
    EXPECT_NE(marked(), second);
    run_command(COMMAND_NEW_GAME);
    EXPECT_EQ(pane_shows(GAME_WINDOW), "");
}

TEST_F(PaneWindows, TheProtocolGrowsAtItsEndInTwoColours) {
    ui.append_dxp_text("sent\n", false);
    ui.append_dxp_text("received\n", true);
    ui.append_dxp_text("sent again\n", false);
    EXPECT_EQ(pane_shows(DXP_WINDOW), "sent\nreceived\nsent again\n");
    const auto colour_of_line = [](int number) {
        QTextCursor cursor(main_window->pane(DXP_WINDOW).edit().document()->findBlockByNumber(number));
        cursor.movePosition(QTextCursor::Right);
        return cursor.charFormat().foreground();
    };
    EXPECT_EQ(colour_of_line(1).color(), QColor(200, 80, 0));
    for (const int line : {0, 2}) EXPECT_EQ(colour_of_line(line).style(), Qt::NoBrush) << line;
    // A change of colours rebuilds it.
    run_command(COMMAND_BACKGROUND_WHITE);
    EXPECT_EQ(pane_shows(DXP_WINDOW), "sent\nreceived\nsent again\n");
    EXPECT_EQ(colour_of_line(1).color(), QColor(200, 80, 0));
    EXPECT_EQ(colour_of_line(2).style(), Qt::NoBrush);
}

TEST_F(PaneWindows, TheProtocolIsShortenedToItsLastBytes) {
    for (int i = 0; i < 100; ++i) ui.append_dxp_text("0123456789", i % 2 != 0);
    ui.trim_dxp_text(1000, 15);
    EXPECT_EQ(pane_shows(DXP_WINDOW).size(), 1000u);  // not more than the limit
    ui.append_dxp_text("x", true);
    ui.trim_dxp_text(1000, 15);
    EXPECT_EQ(pane_shows(DXP_WINDOW), " 67890123456789x");
}

TEST_F(PaneWindows, ScrollBarsAreWhereTheyBelong) {
    for (const ChildWindow pane : ALL_PANES) {
        const PaneEdit& edit = main_window->pane(pane).edit();
        const bool down = pane == GAME_WINDOW || pane == DXP_WINDOW;
        const bool across = pane == DXP_WINDOW;
        EXPECT_EQ(edit.verticalScrollBarPolicy() != Qt::ScrollBarAlwaysOff, down) << pane;
        EXPECT_EQ(edit.horizontalScrollBarPolicy() != Qt::ScrollBarAlwaysOff, across) << pane;
        EXPECT_EQ(edit.lineWrapMode() == QPlainTextEdit::NoWrap, across) << pane;
    }
}

TEST_F(PaneWindows, HaveTheirTitles) {
    const std::array<std::string, CHILD_WINDOWS> titles = {"Clock", "Game", "Status", "Ponder",
                                                           "DamExchange"};
    for (const ChildWindow pane : ALL_PANES) {
        EXPECT_EQ(main_window->pane(pane).windowTitle().toStdString(), titles[pane]);
        EXPECT_EQ(main_window->pane(pane).edit().accessibleName().toStdString(), titles[pane]);
    }
}

TEST_F(PaneWindows, ClosingHidesAndUnticks) {
    for (const ChildWindow pane : ALL_PANES) {
        const int32_t id = command_of_pane(pane);
        if (!settings.child_windows[pane].visible) run_command(id);
        EXPECT_TRUE(main_window->pane(pane).isVisible()) << pane;
        EXPECT_TRUE(ticked(id));
        main_window->pane(pane).close();
        EXPECT_FALSE(main_window->pane(pane).isVisible()) << pane;
        EXPECT_EQ(settings.child_windows[pane].visible, 0);
        EXPECT_FALSE(ticked(id));
        run_command(id);
        EXPECT_TRUE(main_window->pane(pane).isVisible()) << pane;
        EXPECT_EQ(settings.child_windows[pane].visible, 1);
        EXPECT_TRUE(ticked(id));
        EXPECT_EQ(main_window->area().activeSubWindow(), &main_window->pane(pane));
        EXPECT_EQ(main_window->area().subWindowList(QMdiArea::StackingOrder).back(),
                  &main_window->pane(pane));
    }
}

TEST_F(PaneWindows, TheBoardHasTheKeysWhenAPaneIsHidden) {
    for (const ChildWindow pane : {GAME_WINDOW, STATUS_WINDOW}) {
        QApplication::setActiveWindow(main_window);
        main_window->pane(pane).edit().setFocus();
        settle();
        ASSERT_EQ(QApplication::focusWidget(), &main_window->pane(pane).edit());
        run_command(command_of_pane(pane));
        EXPECT_EQ(QApplication::focusWidget(), &main_window->board_window().board());
    }
}

TEST_F(PaneWindows, ShownPanesAreInsideTheFrame) {
    for (const ChildWindow pane : {PONDER_WINDOW, CLOCK_WINDOW, DXP_WINDOW}) {
        run_command(command_of_pane(pane));
        settle();
        EXPECT_TRUE(main_window->area().viewport()->rect().contains(main_window->pane(pane).geometry()))
            << pane;
    }
}

TEST_F(PaneWindows, FollowTheFontOfTheSettings) {
    store_setting_text(settings.font_name, "DejaVu Sans Mono");
    settings.font_size = 12;
    settings.font_bold = 1;
    settings.font_italic = 1;
    main_window->follow_pane_settings();
    for (const ChildWindow pane : ALL_PANES) {
        const QFont font = main_window->pane(pane).edit().font();
        EXPECT_EQ(font.family().toStdString(), "DejaVu Sans Mono");
        EXPECT_EQ(font.pointSizeF(), 12);
        EXPECT_TRUE(font.bold());
        EXPECT_TRUE(font.italic());
    }
    run_command(COMMAND_RESET_WINDOWS);
    const QFont font = game_pane().edit().font();
    EXPECT_EQ(font.family(), QApplication::font().family());
    EXPECT_EQ(font.pointSizeF(), 9);
    EXPECT_FALSE(font.bold());
}

TEST_F(PaneWindows, SizesOfFontsAreKeptInTheirRange) {
    for (const auto& [stored, used] : std::vector<std::pair<float, double>>{
             {0, 2}, {-5, 2}, {1e30f, 18}, {std::numeric_limits<float>::quiet_NaN(), 2}, {18, 18}}) {
        settings.font_size = stored;
        EXPECT_EQ(pane_font().pointSizeF(), used) << stored;
    }
}

TEST_F(PaneWindows, BackgroundsStayReadableInDarkDesktops) {
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(45, 45, 48));
    QApplication::setPalette(dark);
    settle();
    run_command(COMMAND_NEW_GAME);
    ui.set_game_text("1. 32-28  ", 0, 10);
    for (const bool gray : {true, false}) {
        run_command(gray ? COMMAND_BACKGROUND_GRAY : COMMAND_BACKGROUND_WHITE);
        const QPalette shown = game_pane().edit().palette();
        const int back = qGray(shown.color(QPalette::Base).rgb());
        EXPECT_GT(std::abs(back - qGray(shown.color(QPalette::Text).rgb())), 120) << gray;
        EXPECT_GT(std::abs(back - qGray(mark().format.foreground().color().rgb())), 80) << gray;
    }
    QApplication::setPalette(light);
    settle();
    run_command(COMMAND_BACKGROUND_GRAY);
    EXPECT_EQ(game_pane().edit().palette().color(QPalette::Base), light.color(QPalette::Window));
    EXPECT_EQ(mark().format.foreground().color(), QColor(200, 80, 0));
}

// The desktop may turn dark while the program runs.
TEST_F(PaneWindows, ColoursFollowTheDesktop) {
    const QPalette light = QApplication::palette();
    ui.append_dxp_text("received\n", true);
    ui.set_game_text("1. 32-28  ", 0, 10);
    const auto received = [] {
        QTextCursor cursor(main_window->pane(DXP_WINDOW).edit().document()->firstBlock());
        cursor.movePosition(QTextCursor::Right);
        return cursor.charFormat().foreground().color();
    };
    const QColor on_light(200, 80, 0);
    for (const QPalette& palette : {QPalette(QColor(45, 45, 48)), light}) {
        QApplication::setPalette(palette);
        settle();
        const bool dark = palette != light;
        for (const ChildWindow pane : ALL_PANES)
            EXPECT_EQ(main_window->pane(pane).edit().palette().color(QPalette::Base),
                      palette.color(QPalette::Window))
                << dark << pane;
        EXPECT_EQ(mark().format.foreground().color() == on_light, !dark);
        EXPECT_EQ(received() == on_light, !dark);
    }
}

// The light and the dark desktop, and the pane in use and another.
TEST_F(PaneWindows, TheCrossThatClosesStandsOut) {
    const QPalette usual = QApplication::palette();
    for (const QColor& window : {QColor(240, 240, 240), QColor(42, 46, 50)}) {
        QApplication::setPalette(QPalette(window, window));
        settle();
        for (const bool active : {true, false}) {
            PaneWindow& pane = main_window->pane(STATUS_WINDOW);
            main_window->area().setActiveSubWindow(active ? &pane : &main_window->pane(GAME_WINDOW));
            settle();
            const QImage bar = pane.grab(QRect(0, 2, pane.width(), 18)).toImage();
            int darkest = 255, brightest = 0;
            // The button is at the right, inside the frame.
            for (int x = bar.width() - 18; x < bar.width() - 8; ++x)
                for (int y = 5; y < bar.height() - 4; ++y) {
                    darkest = std::min(darkest, qGray(bar.pixel(x, y)));
                    brightest = std::max(brightest, qGray(bar.pixel(x, y)));
                }
            EXPECT_GT(brightest - darkest, 90) << window.name().toStdString() << active;
        }
    }
    QApplication::setPalette(usual);
    settle();
}

TEST_F(PaneWindows, StatusFollowsTheMode) {
    ASSERT_TRUE(wait_until(
        [] { return pane_shows(STATUS_WINDOW).find("Search mode: Normal") != std::string::npos; }));
    run_command(COMMAND_TWO_PLAYERS);
    EXPECT_TRUE(wait_until(
        [] { return pane_shows(STATUS_WINDOW).find("Search mode: 2-Player") != std::string::npos; }));
}

// The slow way: each character by itself.
TEST(PaneText, RangesHoldTheSameBytes) {
    std::mt19937 random(3);
    const std::vector<std::string> parts = {
        "a", " ", "\n", "\r\n", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "32-28"};
    for (int round = 0; round < 5000; ++round) {
        std::string before, within, behind;
        for (std::string* const text : {&before, &within, &behind})
            for (size_t count = random() % 6; count > 0; --count) *text += parts[random() % parts.size()];
        const int begin = static_cast<int>(before.size());
        const PaneText shown =
            pane_text(before + within + behind, begin, begin + static_cast<int>(within.size()));
        QString wanted = QString::fromStdString(within);
        // A carriage return goes only with the line feed behind it.
        wanted.remove(QLatin1Char('\r'));
        ASSERT_EQ(shown.text.mid(shown.begin, shown.end - shown.begin), wanted) << round;
        ASSERT_EQ(shown.text.count(QLatin1Char('\r')), 0);
    }
}

TEST(PaneText, ACutCharacterDoesNotSpoilTheOthers) {
    const PaneText shown = pane_text("\u00E9 32-28 \xE2\x82", 3, 8);
    EXPECT_EQ(shown.text, QStringLiteral("\u00E9 32-28 "));
    EXPECT_EQ(shown.text.mid(shown.begin, shown.end - shown.begin), QStringLiteral("32-28"));
}

TEST(PaneText, RangesBeyondTheTextAreCut) {
    const PaneText shown = pane_text("abc", -5, 100);
    EXPECT_EQ(shown.begin, 0);
    EXPECT_EQ(shown.end, 3);
    const PaneText turned = pane_text("abc", 2, 1);
    EXPECT_EQ(turned.begin, turned.end);
}

TEST(Protocol, TrimmedIsTheEndOfTheWhole) {
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        std::vector<DxpPiece> pieces;
        std::string whole;
        for (size_t count = random() % 20; count > 0; --count) {
            pieces.push_back(
                {std::string(random() % 9, static_cast<char>('a' + random() % 26)), random() % 2 == 0});
            whole += pieces.back().bytes;
        }
        const size_t limit = random() % 60;
        const size_t kept = random() % 40;
        const bool trimmed = trim_protocol(pieces, limit, kept);
        std::string left;
        for (const DxpPiece& piece : pieces) left += piece.bytes;
        ASSERT_EQ(trimmed, whole.size() > limit);
        const std::string end = whole.substr(whole.size() - std::min(kept, whole.size()));
        ASSERT_EQ(left, trimmed ? " " + end : whole) << round;
        ASSERT_EQ(protocol_size(pieces), left.size());
    }
}

TEST(Protocol, CharactersAreNotCutInTwo) {
    std::vector<DxpPiece> pieces = {
        {"ab\xE2\x82\xAC"
         "cd",
         true}};
    ASSERT_TRUE(trim_protocol(pieces, 3, 4));
    EXPECT_EQ(pieces.back().bytes, "cd");
}
