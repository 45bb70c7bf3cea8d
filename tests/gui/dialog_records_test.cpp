// The dialogs of the search threads and of the game's headers.
#include <cstring>

#include "base/system_info.h"
#include "shell/qt/dialogs.h"
#include "tests/gui/dialog_user.h"

namespace {

enum Id {
    CORES = 1022,
    THREADS = 1020,
    EVENT = 1025,
    DATE = 1024,
    WHITE_NAME = 1023,
    BLACK_NAME = 1026,
    RESULT = 1027
};

template <size_t N>
void put(std::array<char, N>& field, const char* text) {
    std::snprintf(field.data(), N, "%s", text);
}

GameHeaders some_headers() {
    GameHeaders headers;
    put(headers.event, "Wereldkampioenschap");
    put(headers.date, "1999.12.31");
    put(headers.white, "Wit, W.");
    put(headers.black, "Чёрный");
    headers.result = RESULT_DRAW;
    return headers;
}

bool same(const GameHeaders& a, const GameHeaders& b) {
    return a.event == b.event && a.date == b.date && a.white == b.white && a.black == b.black &&
           a.result == b.result;
}

template <typename Act>
bool edit_headers(GameHeaders& headers, Act act) {
    return use_dialog([&] { return game_information_dialog(nullptr, headers); }, act);
}

template <typename Act>
void edit_threads(Act act) {
    use_dialog([] { parallel_search_dialog(nullptr); }, act);
}

std::vector<std::string> entries(const QComboBox& box) {
    std::vector<std::string> texts;
    for (int i = 0; i < box.count(); ++i) texts.push_back(box.itemText(i).toStdString());
    return texts;
}

using Texts = std::vector<std::string>;

class ParallelSearch : public DialogTest {};
class GameInformation : public DialogTest {};

}  // namespace

TEST_F(ParallelSearch, ShowsTheCoresAndTheChoice) {
    for (int32_t threads = 1; threads <= 8; ++threads) {
        settings.search_threads = threads;
        edit_threads([&](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Parallel Search Control"));
            EXPECT_EQ(edit_text(dialog, CORES), std::to_string(processor_count()));
            EXPECT_TRUE(edit(dialog, CORES).isReadOnly());
            type(dialog, CORES, "1000");
            EXPECT_EQ(edit_text(dialog, CORES), std::to_string(processor_count()));
            EXPECT_EQ(entries(combo(dialog, THREADS)), (Texts{"8", "7", "6", "5", "4", "3", "2", "1"}));
            EXPECT_EQ(combo(dialog, THREADS).currentText().toInt(), threads);
            click(dialog, OK_ID);
        });
        EXPECT_EQ(settings.search_threads, threads);
    }
}

TEST_F(ParallelSearch, OkStoresTheChoiceAndCancelDoesNot) {
    const auto choose_three = [](QDialog& dialog, int button) {
        QTest::keyClick(&combo(dialog, THREADS), Qt::Key_3);
        EXPECT_EQ(combo(dialog, THREADS).currentText(), QStringLiteral("3"));
        click(dialog, button);
    };
    edit_threads([&](QDialog& dialog) { choose_three(dialog, CANCEL_ID); });
    EXPECT_EQ(settings.search_threads, 1);
    edit_threads([&](QDialog& dialog) { choose_three(dialog, OK_ID); });
    EXPECT_EQ(settings.search_threads, 3);
}

TEST_F(ParallelSearch, ANumberThatIsNotOfferedIsLeftAlone) {
    for (const int32_t threads : {0, 9, -1, INT32_MAX}) {
        settings.search_threads = threads;
        edit_threads([](QDialog& dialog) {
            EXPECT_EQ(combo(dialog, THREADS).currentIndex(), -1);
            click(dialog, OK_ID);
        });
        EXPECT_EQ(settings.search_threads, threads);
    }
}

TEST_F(GameInformation, ShowsTheHeaders) {
    GameHeaders headers = some_headers();
    edit_headers(headers, [](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Game Information"));
        EXPECT_EQ(edit_text(dialog, EVENT), "Wereldkampioenschap");
        EXPECT_EQ(edit_text(dialog, DATE), "1999.12.31");
        EXPECT_EQ(edit_text(dialog, WHITE_NAME), "Wit, W.");
        EXPECT_EQ(edit_text(dialog, BLACK_NAME), "Чёрный");
        EXPECT_EQ(entries(combo(dialog, RESULT)), (Texts{"White win", "Black win", "Draw", "Unknown"}));
        EXPECT_EQ(dialog.focusWidget(), &edit(dialog, EVENT));
        click(dialog, CANCEL_ID);
    });
}

TEST_F(GameInformation, TheResultsHaveTheirCodes) {
    const std::pair<int32_t, const char*> rows[] = {{RESULT_WHITE_WINS, "White win"},
                                                    {RESULT_BLACK_WINS, "Black win"},
                                                    {RESULT_DRAW, "Draw"},
                                                    {RESULT_UNKNOWN, "Unknown"}};
    for (const auto& row : rows) {
        const int32_t code = row.first;
        const char* const text = row.second;
        GameHeaders headers = some_headers();
        headers.result = code;
        EXPECT_TRUE(edit_headers(headers, [&](QDialog& dialog) {
            EXPECT_EQ(combo(dialog, RESULT).currentText().toStdString(), text);
            click(dialog, OK_ID);
        }));
        EXPECT_EQ(headers.result, code);
        headers.result = (code + 1) % 4;
        EXPECT_TRUE(edit_headers(headers, [&](QDialog& dialog) {
            QTest::keyClicks(&combo(dialog, RESULT), QString::fromLatin1(text));
            click(dialog, OK_ID);
        }));
        EXPECT_EQ(headers.result, code);
    }
    GameHeaders headers = some_headers();
    headers.result = 77;
    EXPECT_TRUE(edit_headers(headers, [](QDialog& dialog) {
        EXPECT_EQ(combo(dialog, RESULT).currentIndex(), -1);
        click(dialog, OK_ID);
    }));
    EXPECT_EQ(headers.result, 77);
}

TEST_F(GameInformation, AnEmptyDateBecomesToday) {
    GameHeaders headers;
    EXPECT_FALSE(edit_headers(headers, [](QDialog& dialog) {
        EXPECT_EQ(edit_text(dialog, DATE), today_text());
        click(dialog, CANCEL_ID);
    }));
    EXPECT_STREQ(headers.date.data(), "") << "cancelled";
    EXPECT_TRUE(edit_headers(headers, [](QDialog& dialog) { click(dialog, OK_ID); }));
    EXPECT_EQ(headers.date.data(), today_text());
    EXPECT_TRUE(edit_headers(headers, [](QDialog& dialog) {
        type(dialog, DATE, "");
        click(dialog, OK_ID);
    }));
    EXPECT_STREQ(headers.date.data(), "") << "the user's will";
}

TEST_F(GameInformation, OkStoresAllFields) {
    GameHeaders headers = some_headers();
    EXPECT_TRUE(edit_headers(headers, [](QDialog& dialog) {
        type(dialog, EVENT, "Open 2024");
        type(dialog, DATE, "2024.02.03");
        edit(dialog, WHITE_NAME).setText(QStringLiteral("Ёжиков"));
        type(dialog, BLACK_NAME, "");
        QTest::keyClick(&combo(dialog, RESULT), Qt::Key_B);
        click(dialog, OK_ID);
    }));
    EXPECT_STREQ(headers.event.data(), "Open 2024");
    EXPECT_STREQ(headers.date.data(), "2024.02.03");
    EXPECT_STREQ(headers.white.data(), "Ёжиков");
    EXPECT_STREQ(headers.black.data(), "");
    EXPECT_EQ(headers.result, RESULT_BLACK_WINS);
}

TEST_F(GameInformation, CancelKeepsTheHeaders) {
    GameHeaders headers = some_headers();
    const auto change = [](QDialog& dialog) {
        type(dialog, EVENT, "Other");
        type(dialog, BLACK_NAME, "Other");
        QTest::keyClick(&combo(dialog, RESULT), Qt::Key_W);
    };
    EXPECT_FALSE(edit_headers(headers, [&](QDialog& dialog) {
        change(dialog);
        click(dialog, CANCEL_ID);
    }));
    EXPECT_FALSE(edit_headers(headers, [&](QDialog& dialog) {
        change(dialog);
        dialog.close();
    }));
    EXPECT_TRUE(same(headers, some_headers()));
}

TEST_F(GameInformation, LongTextsAreCut) {
    GameHeaders headers;
    EXPECT_TRUE(edit_headers(headers, [](QDialog& dialog) {
        edit(dialog, EVENT).setText(QString(1000, QLatin1Char('e')));
        edit(dialog, DATE).setText(QString(80, QLatin1Char('d')));
        edit(dialog, WHITE_NAME).setText(QString(79, QLatin1Char('w')));
        edit(dialog, BLACK_NAME).setText(QString(1000, QChar(0x0416)));
        click(dialog, OK_ID);
    }));
    EXPECT_EQ(headers.event.data(), std::string(79, 'e'));
    EXPECT_EQ(headers.date.data(), std::string(79, 'd'));
    EXPECT_EQ(headers.white.data(), std::string(79, 'w'));
    EXPECT_EQ(std::strlen(headers.black.data()), 78u) << "39 letters of two bytes";
    EXPECT_EQ(QString::fromUtf8(headers.black.data()), QString(39, QChar(0x0416)));
}

TEST_F(GameInformation, OkWithoutAChangeChangesNoByte) {
    GameHeaders headers = some_headers();
    put(headers.white, "M\xFCller");
    std::string cut(78, 'x');
    cut[10] = '\xD0', cut[11] = '\x96';
    put(headers.event, (cut + "\xD0\x96").c_str());
    const GameHeaders before = headers;
    EXPECT_TRUE(edit_headers(headers, [&](QDialog& dialog) {
        EXPECT_EQ(edit_text(dialog, WHITE_NAME), "Müller");
        EXPECT_EQ(edit_text(dialog, EVENT), cut);
        click(dialog, OK_ID);
    }));
    EXPECT_TRUE(same(headers, before));
}
