// The dialog of the game clock.
#include <QCheckBox>
#include <cmath>
#include <limits>

#include "control/time_control.h"
#include "shell/qt/dialogs.h"
#include "tests/gui/dialog_user.h"

namespace {

enum Id { MOVES = 1017, MINUTES = 1018, OPERATOR = 1019, BOX = 1060, INITIAL = 1058, INCREMENT = 1036 };

template <typename Act>
void use(Act act) {
    use_dialog([] { game_time_dialog(nullptr); }, act);
}

void click_box(const QDialog& dialog) {
    auto& box = control<QCheckBox>(dialog, BOX);
    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box.height() / 2));
}

void expect_enabled(const QDialog& dialog, bool increment_mode) {
    for (const int id : {int{INITIAL}, int{INCREMENT}, 1103, 1104})
        EXPECT_EQ(control<QWidget>(dialog, id).isEnabled(), increment_mode) << id;
    for (const int id : {int{MOVES}, int{MINUTES}, 1100, 1101})
        EXPECT_EQ(control<QWidget>(dialog, id).isEnabled(), !increment_mode) << id;
    EXPECT_TRUE(edit(dialog, OPERATOR).isEnabled());
}

class GameTime : public DialogTest {};

}  // namespace

TEST_F(GameTime, ShowsTheSettings) {
    settings.clock_moves_limit = 75;
    settings.operator_time = 2;
    settings2.initial_seconds = 12.34;
    settings2.increment_seconds = 0.5;
    const std::pair<double, const char*> minutes[] = {{7, "7"},    {7.04, "7"}, {7.5, "7.5"},
                                                      {6.97, "7"}, {90, "90"},  {0.25, "0.2"}};
    for (const auto& row : minutes) {
        settings.clock_minutes = row.first;
        use([&](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Game Time"));
            EXPECT_EQ(edit_text(dialog, MOVES), "75");
            EXPECT_EQ(edit_text(dialog, MINUTES), row.second);
            EXPECT_EQ(edit_text(dialog, OPERATOR), "2");
            EXPECT_EQ(edit_text(dialog, INITIAL), "12.3");
            EXPECT_EQ(edit_text(dialog, INCREMENT), "0.500");
            click(dialog, CANCEL_ID);
        });
    }
}

TEST_F(GameTime, TheBoxEnablesOneKindOrTheOther) {
    for (const bool increment_mode : {false, true}) {
        settings2.increment_mode = increment_mode;
        use([&](QDialog& dialog) {
            EXPECT_EQ(control<QCheckBox>(dialog, BOX).isChecked(), increment_mode);
            expect_enabled(dialog, increment_mode);
            EXPECT_EQ(dialog.focusWidget(), &edit(dialog, increment_mode ? INITIAL : MOVES));
            click_box(dialog);
            expect_enabled(dialog, !increment_mode);
            click_box(dialog);
            expect_enabled(dialog, increment_mode);
            click(dialog, CANCEL_ID);
        });
    }
}

TEST_F(GameTime, TheBoxActsAtOnceAndCancelKeepsIt) {
    const Settings before = settings;
    use([](QDialog& dialog) {
        type(dialog, MOVES, "40");
        type(dialog, OPERATOR, "1");
        click_box(dialog);
        EXPECT_EQ(settings2.increment_mode, 1) << "before the dialog is closed";
        type(dialog, INITIAL, "300");
        click(dialog, CANCEL_ID);
    });
    EXPECT_EQ(settings2.increment_mode, 1);
    EXPECT_EQ(settings.clock_moves_limit, before.clock_moves_limit);
    EXPECT_EQ(settings.operator_time, before.operator_time);
    EXPECT_EQ(settings.time_menu_id, before.time_menu_id);
    EXPECT_EQ(settings2.initial_seconds, 1.0);
    use([](QDialog& dialog) {
        click_box(dialog);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(settings2.increment_mode, 0);
    EXPECT_EQ(menu_updates, 0);
    EXPECT_TRUE(shown_boxes.empty());
}

TEST_F(GameTime, OkStoresAllAndChoosesTheGameClock) {
    use([](QDialog& dialog) {
        type(dialog, MOVES, "50");
        type(dialog, MINUTES, "12.5");
        type(dialog, OPERATOR, "3");
        click_box(dialog);
        type(dialog, INITIAL, "60.25");
        type(dialog, INCREMENT, "0.125");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings.clock_moves_limit, 50);
    EXPECT_EQ(settings.clock_minutes, 12.5);
    EXPECT_EQ(settings.operator_time, 3);
    EXPECT_EQ(settings2.increment_mode, 1);
    EXPECT_EQ(settings2.initial_seconds, 60.25);
    EXPECT_EQ(settings2.increment_seconds, 0.125);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK);
    EXPECT_TRUE(settings.use_game_clock);
    EXPECT_EQ(settings.time_per_move, 3.0);
    EXPECT_EQ(menu_updates, 1) << "the tick of the Time menu moves";
    EXPECT_TRUE(shown_boxes.empty());
}

// A game over the network that began and ended meanwhile was played by Moves and Minutes.
TEST_F(GameTime, TheBoxCountsOnOkWhateverHappenedMeanwhile) {
    for (const bool checked : {true, false}) {
        settings2.increment_mode = checked;
        use([&](QDialog& dialog) {
            settings2.increment_mode = !checked;
            click(dialog, OK_ID);
        });
        EXPECT_EQ(settings2.increment_mode, checked);
    }
}

TEST_F(GameTime, EnterIsOk) {
    use([](QDialog& dialog) {
        type(dialog, MOVES, "33");
        QTest::keyClick(&edit(dialog, MOVES), Qt::Key_Return);
    });
    EXPECT_EQ(settings.clock_moves_limit, 33);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK);
}

TEST_F(GameTime, TooLittleTimePerMoveIsToldAndNothingIsStored) {
    const Settings before = settings;
    use([](QDialog& dialog) {
        type(dialog, MOVES, "90");
        type(dialog, MINUTES, "7");
        type(dialog, OPERATOR, "5");
        click_box(dialog);
        type(dialog, INITIAL, "44");
        type(dialog, INCREMENT, "2");
        click(dialog, OK_ID);
    });
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Average time per move cannot be less than .1 second");
    EXPECT_EQ(shown_boxes[0].title, DEFAULT_BOX_TITLE);
    EXPECT_EQ(shown_boxes[0].icon, ICON_ERROR);
    EXPECT_FALSE(shown_boxes[0].dialog_open) << "the dialog closes first";
    EXPECT_EQ(settings.clock_minutes, before.clock_minutes);
    EXPECT_EQ(settings.clock_moves_limit, before.clock_moves_limit);
    EXPECT_EQ(settings.operator_time, before.operator_time);
    EXPECT_EQ(settings.time_menu_id, before.time_menu_id);
    EXPECT_EQ(settings2.initial_seconds, 1.0);
    EXPECT_EQ(settings2.increment_seconds, 0.1);
    EXPECT_EQ(settings2.increment_mode, 1) << "the box has acted";
    EXPECT_EQ(menu_updates, 0);
}

TEST_F(GameTime, TheErrorIsInTheLanguage) {
    speak("Dutch", DUTCH_ID, "[STRINGTABLE]\nID187=Te weinig tijd\n\n[DLG_125]\nID1=Goed\n");
    use([](QDialog& dialog) {
        type(dialog, OPERATOR, "100");
        click(dialog, OK_ID);
    });
    ASSERT_EQ(shown_boxes.size(), 1u);
    EXPECT_EQ(shown_boxes[0].text, "Te weinig tijd");
}

TEST_F(GameTime, TheTestIsAtATwentiethOfASecond) {
    // 1200 moves in one minute are 0.05 seconds each.
    const std::pair<const char*, bool> rows[] = {{"1200", true}, {"1201", false}, {"1199", true}};
    for (const auto& row : rows) {
        shown_boxes.clear();
        use([&](QDialog& dialog) {
            type(dialog, MOVES, row.first);
            type(dialog, MINUTES, "1");
            click(dialog, OK_ID);
        });
        EXPECT_EQ(shown_boxes.empty(), row.second) << row.first;
    }
}

TEST_F(GameTime, NoMovesAreStoredWithoutADivision) {
    for (const char* const moves : {"0", "", "many", "-0", "  x1"}) {
        settings.clock_moves_limit = 90;
        use([&](QDialog& dialog) {
            type(dialog, MOVES, moves);
            type(dialog, OPERATOR, "5");
            click(dialog, OK_ID);
        });
        EXPECT_EQ(settings.clock_moves_limit, 0) << moves;
    }
    EXPECT_TRUE(shown_boxes.empty());
}

TEST_F(GameTime, WhatIsNoNumberReadsAsZero) {
    use([](QDialog& dialog) {
        type(dialog, OPERATOR, "none");
        click_box(dialog);
        type(dialog, INITIAL, "soon");
        type(dialog, INCREMENT, "");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings.operator_time, 0);
    EXPECT_EQ(settings2.initial_seconds, 0);
    EXPECT_EQ(settings2.increment_seconds, 0);
    EXPECT_TRUE(shown_boxes.empty());
    use([](QDialog& dialog) {
        click_box(dialog);
        type(dialog, MINUTES, "seven");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(shown_boxes.size(), 1u) << "no minutes are too few";
    EXPECT_EQ(settings.clock_minutes, 7);
}

TEST_F(GameTime, NumbersAreReadAsFarAsTheyGo) {
    use([](QDialog& dialog) {
        type(dialog, MOVES, " +60 moves");
        type(dialog, MINUTES, "  8.25min");
        type(dialog, OPERATOR, "-2");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings.clock_moves_limit, 60);
    EXPECT_EQ(settings.clock_minutes, 8.25);
    EXPECT_EQ(settings.operator_time, -2);
}

TEST_F(GameTime, HugeNumbersAreTheLargest) {
    use([](QDialog& dialog) {
        type(dialog, MOVES, "99999999999999999999");
        type(dialog, MINUTES, "1e999");
        type(dialog, OPERATOR, "-99999999999999999999");
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings.clock_moves_limit, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(settings.operator_time, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(settings.clock_minutes, std::numeric_limits<double>::max());
    use([](QDialog& dialog) { click(dialog, OK_ID); });
    EXPECT_EQ(settings.clock_minutes, std::numeric_limits<double>::max()) << "and shown in full";
}

TEST_F(GameTime, DamagedSettingsAreShown) {
    constexpr double VALUES[] = {std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::max(),
                                 std::numeric_limits<double>::denorm_min()};
    for (const double value : VALUES) {
        settings.clock_minutes = settings2.initial_seconds = settings2.increment_seconds = value;
        settings.clock_moves_limit = settings.operator_time = std::numeric_limits<int32_t>::min();
        settings2.increment_mode = 200;
        use([&](QDialog& dialog) {
            EXPECT_TRUE(control<QCheckBox>(dialog, BOX).isChecked());
            EXPECT_EQ(edit_text(dialog, MOVES), "-2147483648");
            click(dialog, OK_ID);
        });
        EXPECT_TRUE(std::isfinite(settings2.initial_seconds) || !shown_boxes.empty());
    }
    EXPECT_EQ(settings2.increment_mode, 200) << "the box was not clicked";
}

TEST_F(GameTime, AGameOverTheNetworkThatHasBegunKeepsItsTime) {
    settings.clock_minutes = 7;
    settings.time_menu_id = 40010;
    settings2.increment_mode = 0;
    use([](QDialog& dialog) {
        set_gui_mode(DXP_MODE);
        click_box(dialog);
        click(dialog, OK_ID);
    });
    EXPECT_EQ(settings2.increment_mode, 0) << "the box acts at once";
    EXPECT_EQ(settings.time_menu_id, 40010);
}
