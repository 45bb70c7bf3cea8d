// The dialog that lists games.
#include <QListView>
#include <QScrollBar>
#include <ctime>

#include "shell/qt/dialogs.h"
#include "shell/qt/text.h"
#include "tests/gui/dialog_user.h"

namespace {

constexpr int LIST = 1028;

struct Games {
    std::string text;
    PdnOffsets offsets;
    int count = 0;
};

Games make_games(int count) {
    Games games;
    for (int i = 0; i < count; ++i)
        games.text += "[Event \"Чемпионат " + std::to_string(i) +
                      "\"]\r\n[White \"Somebody\"]\n[Black \"Someone Else\"]\n[Result \"1-1\"]\n"
                      "1. 32-28 18-23 2. 38-32 12-18 3. 43-38 7-12 4. 31-27 20-25 5. 37-31 14-20 "
                      "6. 41-37 10-14 7. 46-41 5-10 8. 34-29 23x34 9. 40x29 19-23 1-1\n\n";
    EXPECT_EQ(pdn_index_games(games.text.c_str(), games.offsets), 0);
    games.count = pdn_game_count(games.offsets);
    EXPECT_EQ(games.count, count);
    return games;
}

template <typename Act>
int select(const Games& games, int selected, Act act) {
    const auto open = [&] {
        return select_game_dialog(nullptr, games.text.c_str(), games.offsets, games.count, selected);
    };
    return use_dialog(open, [&](QDialog& dialog) { act(dialog, control<QListView>(dialog, LIST)); });
}

bool is_visible(const QListView& list, int row) {
    const QRect line = list.visualRect(list.model()->index(row, 0));
    return line.top() >= 0 && line.bottom() < list.viewport()->height();
}

void press(QListView& list, Qt::Key key) { QTest::keyClick(&list, key); }

void click_row(QListView& list, int row, bool twice) {
    const QPoint where = QPoint(20, list.visualRect(list.model()->index(row, 0)).center().y());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, where);
    if (twice) QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, where);
}

// Processor time, which others on the machine do not lengthen.
double seconds_used() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

class SelectGame : public DialogTest {};

}  // namespace

TEST_F(SelectGame, ListsTheLinesOfTheGames) {
    const Games games = make_games(30);
    select(games, 0, [&](QDialog& dialog, QListView& list) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Select Game"));
        EXPECT_EQ(dialog.focusWidget(), &list);
        ASSERT_EQ(list.model()->rowCount(), games.count);
        for (int i = 0; i < games.count; ++i) {
            char line[GAME_LINE_SIZE];
            pdn_game_line(games.text.c_str(), games.offsets, i, line);
            const std::string shown = list.model()->index(i, 0).data().toString().toStdString();
            EXPECT_TRUE(std::string(line).starts_with(shown)) << shown;
            EXPECT_GE(shown.size() + 1, std::string(line).size()) << "less than half a letter is dropped";
        }
        click(dialog, CANCEL_ID);
    });
}

TEST_F(SelectGame, OnlyTheFirstGamesAreOffered) {
    Games games = make_games(30);
    games.count = 7;
    EXPECT_EQ(select(games, 0,
                     [](QDialog& dialog, QListView& list) {
                         EXPECT_EQ(list.model()->rowCount(), 7);
                         press(list, Qt::Key_End);
                         click(dialog, OK_ID);
                     }),
              6);
}

TEST_F(SelectGame, TheGivenGameIsSelectedAndInView) {
    const Games games = make_games(3000);
    for (const int selected : {0, 1, 17, 1500, 2998, 2999})
        EXPECT_EQ(select(games, selected,
                         [&](QDialog& dialog, QListView& list) {
                             EXPECT_EQ(list.currentIndex().row(), selected);
                             EXPECT_EQ(list.selectionModel()->selectedRows().size(), 1);
                             EXPECT_TRUE(is_visible(list, selected));
                             EXPECT_EQ(list.horizontalScrollBar()->value(), 0)
                                 << "lines begin at their start";
                             click(dialog, OK_ID);
                         }),
                  selected);
}

TEST_F(SelectGame, TheGivenGameStandsInTheMiddle) {
    select(make_games(3000), 1500, [](QDialog& dialog, QListView& list) {
        const QRect line = list.visualRect(list.model()->index(1500, 0));
        EXPECT_NEAR(line.center().y(), list.viewport()->height() / 2, 2 * line.height());
        click(dialog, CANCEL_ID);
    });
}

TEST_F(SelectGame, ADoubleClickIsOk) {
    const Games games = make_games(20);
    EXPECT_EQ(select(games, 0, [](QDialog&, QListView& list) { click_row(list, 4, true); }), 4);
}

TEST_F(SelectGame, AClickOnlySelects) {
    const Games games = make_games(20);
    EXPECT_EQ(select(games, 0,
                     [](QDialog& dialog, QListView& list) {
                         click_row(list, 4, false);
                         EXPECT_TRUE(dialog.isVisible());
                         click(dialog, CANCEL_ID);
                     }),
              -1);
    EXPECT_EQ(select(games, 0,
                     [](QDialog& dialog, QListView& list) {
                         click_row(list, 5, false);
                         click(dialog, OK_ID);
                     }),
              5);
}

TEST_F(SelectGame, KeysMoveTheSelection) {
    const Games games = make_games(500);
    EXPECT_EQ(select(games, 10,
                     [](QDialog&, QListView& list) {
                         press(list, Qt::Key_Down);
                         press(list, Qt::Key_Down);
                         press(list, Qt::Key_Up);
                         press(list, Qt::Key_Return);
                     }),
              11);
    EXPECT_EQ(select(games, 10,
                     [](QDialog&, QListView& list) {
                         press(list, Qt::Key_End);
                         EXPECT_TRUE(is_visible(list, 499));
                         press(list, Qt::Key_Home);
                         press(list, Qt::Key_PageDown);
                         EXPECT_GT(list.currentIndex().row(), 5);
                         press(list, Qt::Key_Escape);
                     }),
              -1);
}

TEST_F(SelectGame, NothingCanBeChosenFromNothing) {
    const auto agree = [](QDialog& dialog, QListView&) { click(dialog, OK_ID); };
    EXPECT_EQ(select(make_games(0), 0, agree), -1);
    EXPECT_EQ(select(make_games(3), 3, agree), -1);
    EXPECT_EQ(select(make_games(3), -1, agree), -1);
    Games games = make_games(3);
    games.count = 1000;
    EXPECT_EQ(select(games, 2, agree), 2) << "no more games than there are offsets";
}

TEST_F(SelectGame, TheWidestLineCanBeScrolledToItsEnd) {
    Games games = make_games(50);
    games.text += "[Event \"" + std::string(190, 'W') + "\"] 1. 32-28 *\n" + "[Event \"i\"] 1. 32-28 *\n";
    ASSERT_EQ(pdn_index_games(games.text.c_str(), games.offsets), 0);
    games.count = pdn_game_count(games.offsets);
    ASSERT_EQ(games.count, 52);
    select(games, 0, [](QDialog& dialog, QListView& list) {
        const QString line = list.model()->index(50, 0).data().toString();
        const int needed = list.fontMetrics().horizontalAdvance(line);
        const int there = list.horizontalScrollBar()->maximum() + list.viewport()->width();
        EXPECT_GE(there, needed);
        EXPECT_LE(there, needed + 40) << "and not much farther";
        click(dialog, CANCEL_ID);
    });
}

TEST_F(SelectGame, ThousandsOfGamesOpenAtOnce) {
    const Games games = make_games(20000);
    double used = 0;
    for (const int selected : {0, 15000}) {
        const double begin = seconds_used();
        select(games, selected, [&](QDialog& dialog, QListView& list) {
            list.grab();
            used = std::max(used, seconds_used() - begin);
            click(dialog, CANCEL_ID);
        });
    }
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    EXPECT_LT(used, 3);
#else
    EXPECT_LT(used, 0.3);
#endif
}
