// What game control asks of the screen: boxes, files, the clipboard, posts from other threads, pauses,
// sounds.
#include "shell/qt/qt_ui.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QScreen>
#include <atomic>
#include <thread>

#include "control/load_save.h"
#include "egdb/egdb_state.h"
#include "shell/board_geometry.h"
#include "shell/qt/dialogs.h"
#include "shell/qt/file_choice.h"
#include "shell/qt/sound.h"
#include "tests/gui/desktop_fixture.h"
#include "tests/gui/dialog_user.h"

namespace {

// Of a sound that nothing waits for.
constexpr int SOUND_MS = 20000;

class Screen : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        open_small();
    }
    void TearDown() override {
        end_sound();
        open_document = kept_open_document;
        DesktopTest::TearDown();
    }
    // Types a name into the dialog of files and agrees.
    static void choose(QDialog& dialog, const QString& name) {
        auto* const field = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(field, nullptr);
        QApplication::setActiveWindow(&dialog);
        field->setFocus();
        field->setText(name);
        Q_EMIT field->textEdited(name);
        dialog.accept();
    }
    bool (*kept_open_document)(const std::string&) = open_document;
};

std::vector<int32_t> ran;
void run_work(int32_t argument) { ran.push_back(argument); }

std::string clipboard_text() { return QGuiApplication::clipboard()->text().toStdString(); }

}  // namespace

TEST_F(Screen, EveryFunctionIsThere) {
    const Ui screen = make_qt_ui();
    const auto* const functions = reinterpret_cast<void* const*>(&screen);
    for (size_t i = 0; i < sizeof screen / sizeof(void*); ++i) EXPECT_NE(functions[i], nullptr) << i;
}

TEST_F(Screen, BoxesShowTextTitleAndIcon) {
    ui.message_box("a <b>text</b>", "a title", ICON_WARNING);
    ui.message_box("another", DEFAULT_BOX_TITLE, ICON_INFO);
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].text, "a <b>text</b>");
    EXPECT_EQ(boxes[0].title, "a title");
    EXPECT_EQ(boxes[0].icon, QMessageBox::Warning);
    EXPECT_EQ(boxes[1].title, "Error");
    EXPECT_EQ(boxes[1].icon, QMessageBox::Information);
}

// The name of a file may look like a text with marks.
TEST_F(Screen, BoxesShowEveryCharacterOfTheirText) {
    box_closer.stop();
    const auto format_of = [](void (*show)()) {
        Qt::TextFormat format{};
        use_dialog([show] { return show(), 0; },
                   [&format](QDialog& dialog) {
                       format = static_cast<QMessageBox&>(dialog).textFormat();
                       dialog.reject();
                   });
        return format;
    };
    EXPECT_EQ(format_of([] { ui.message_box("a <b>text</b>", "title", ICON_INFO); }), Qt::PlainText);
    EXPECT_EQ(format_of([] { ui.ask("a <b>text</b>", "title"); }), Qt::PlainText);
}

TEST_F(Screen, ATextTooLongForTheScreenIsScrolled) {
    std::string game_text;
    for (int move = 1; move <= 600; ++move) game_text += std::to_string(move) + ". 32-28 19-23 ";
    game_text += "the end";
    use_dialog([&] { ui.message_box(game_text.c_str(), "Game to clipboard", ICON_NONE); },
               [&](QDialog& dialog) {
                   EXPECT_EQ(dialog.windowTitle().toStdString(), "Game to clipboard");
                   const auto* const field = dialog.findChild<QPlainTextEdit*>();
                   ASSERT_NE(field, nullptr);
                   EXPECT_EQ(field->toPlainText().toStdString(), game_text);
                   EXPECT_TRUE(field->isReadOnly());
                   EXPECT_LT(dialog.frameGeometry().height(), dialog.screen()->availableSize().height());
                   EXPECT_EQ(dialog.focusWidget(), &control<QPushButton>(dialog, OK_ID)) << "Enter closes it";
                   click(dialog, OK_ID);
               });
    EXPECT_TRUE(boxes.empty()) << "no box as high as its text";
}

TEST_F(Screen, ABoxStandsOnTheDialogThatIsOpen) {
    box_closer.stop();
    QDialog dialog(main_window);
    dialog.open();
    QTimer user;
    const QWidget* parent = nullptr;
    QObject::connect(&user, &QTimer::timeout, &user, [&parent] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        parent = box->parentWidget();
        box->accept();
    });
    user.start(5);
    ui.message_box("text", "title", ICON_INFO);
    EXPECT_EQ(parent, &dialog);
    dialog.close();
    ui.message_box("text", "title", ICON_INFO);
    EXPECT_EQ(parent, main_window);
}

TEST_F(Screen, TicksGoOnWhileABoxIsOpen) {
    box_closer.stop();
    const int64_t before = tick_figures.ticks;
    int64_t within = 0;
    use_dialog(
        [] {
            ui.message_box("text", "title", ICON_NONE);
            return 0;
        },
        [&](QDialog& dialog) {
            wait_until([before] { return tick_figures.ticks > before; });
            within = tick_figures.ticks;
            dialog.accept();
        });
    EXPECT_GT(within, before);
}

// A ponder search has ended, and the database could not be opened.
TEST_F(Screen, TicksGoOnBeneathABoxThatATickHasOpened) {
    box_closer.stop();
    int64_t within = -1;
    use_dialog(
        [&] {
            settings.wld_enable = 1;
            egdb_state = EGDB_FAILED;
            search_thread.pondering = 1;
            search_thread.search_finished = 1;
            wait_until([&] { return within >= 0; });
            return 0;
        },
        [&](QDialog& dialog) {
            const int64_t before = tick_figures.ticks;
            wait_until([before] { return tick_figures.ticks >= before + 3; }, 5000);
            within = tick_figures.ticks - before;
            settings.wld_enable = 0;
            dialog.accept();
        });
    EXPECT_GE(within, 3);
    egdb_state = EGDB_NOT_OPENED;
}

// It has the release of the button.
TEST_F(Screen, ADraggedPieceGoesBackWhenABoxOpens) {
    box_closer.stop();
    Board& board = main_window->board_window().board();
    const auto send = [&board](QEvent::Type type, int square, Qt::MouseButton button) {
        const BoardPlace place = place_of_square(square - 1, false);
        const int size = board.square_size();
        const QPointF at((place.column + 0.5) * size, (place.row + 0.5) * size);
        QMouseEvent event(type, at, board.mapToGlobal(at), button, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&board, &event);
    };
    send(QEvent::MouseButtonPress, 32, Qt::LeftButton);
    const QImage pressed = board.grab().toImage();
    send(QEvent::MouseMove, 22, Qt::NoButton);
    EXPECT_NE(board.grab().toImage(), pressed);
    use_dialog(
        [] {
            ui.message_box("text", "title", ICON_NONE);
            return 0;
        },
        [](QDialog& dialog) { dialog.accept(); });
    EXPECT_EQ(board.grab().toImage(), pressed);
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(Screen, QuestionsHaveTwoAnswers) {
    box_closer.stop();
    const auto answer = [](QMessageBox::StandardButton button) {
        return use_dialog([] { return ui.ask("sure?", "title"); },
                          [button](QDialog& dialog) {
                              auto& box = static_cast<QMessageBox&>(dialog);
                              EXPECT_EQ(box.buttons().size(), 2);
                              box.button(button)->click();
                          });
    };
    EXPECT_TRUE(answer(QMessageBox::Ok));
    EXPECT_FALSE(answer(QMessageBox::Cancel));
}

TEST_F(Screen, FilesAreChosenAsBytes) {
    const std::string folder = home.file("g\xC3\xA4mes");
    std::filesystem::create_directories(folder);
    const std::string game_file = folder + "/caf\xC3\xA9.pdn";
    write_content(game_file, "1. 32-28 *");
    std::string path = "before";
    const bool chosen =
        use_dialog([&] { return ui.choose_load_file(LOAD_FILE_TITLE, path); },
                   [&](QDialog& dialog) {
                       EXPECT_EQ(dialog.windowTitle().toStdString(), LOAD_FILE_TITLE);
                       const auto& files = static_cast<QFileDialog&>(dialog);
                       EXPECT_EQ(files.nameFilters().front().toStdString(), "PDN Files (*.pdn)");
                       choose(dialog, QString::fromStdString(game_file));
                   });
    EXPECT_TRUE(chosen);
    EXPECT_EQ(path, game_file);
    // The next dialog opens there, with the name to be chosen again.
    use_dialog([&] { return ui.choose_load_file(LOAD_FILE_TITLE, path); },
               [&](QDialog& dialog) {
                   EXPECT_EQ(static_cast<QFileDialog&>(dialog).directory().absolutePath().toStdString(),
                             folder);
                   EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(),
                             QFileInfo(QString::fromStdString(game_file)).fileName());
                   dialog.reject();
               });
    EXPECT_EQ(path, game_file);
}

TEST_F(Screen, CancelledChoicesLeaveThePath) {
    for (const auto choose_path : {ui.choose_load_file, ui.choose_save_file}) {
        std::string path = "before";
        EXPECT_FALSE(
            use_dialog([&] { return choose_path("title", path); }, [](QDialog& dialog) { dialog.reject(); }));
        EXPECT_EQ(path, "before");
    }
}

TEST_F(Screen, AFileToSaveToGetsItsSuffixAndIsNoQuestion) {
    const auto save_as = [&](const std::string& name) {
        std::string path;
        EXPECT_TRUE(use_dialog([&] { return ui.choose_save_file(SAVE_FILE_TITLE, path); },
                               [&](QDialog& dialog) {
                                   EXPECT_EQ(dialog.windowTitle().toStdString(), SAVE_FILE_TITLE);
                                   choose(dialog, QString::fromStdString(home.file(name)));
                               }));
        return path;
    };
    EXPECT_EQ(save_as("mine"), home.file("mine.pdn"));
    write_content(home.file("there.pdn"), "a game");
    EXPECT_EQ(save_as("there.pdn"), home.file("there.pdn"));
    EXPECT_EQ(save_as("other.txt"), home.file("other.txt"));
    EXPECT_TRUE(boxes.empty());
}

TEST_F(Screen, TheClipboardHoldsPlainText) {
    EXPECT_TRUE(ui.write_clipboard("1. 32-28 \xC3\xA9"));
    EXPECT_EQ(clipboard_text(), "1. 32-28 \xC3\xA9");
    char text[100] = "before";
    EXPECT_TRUE(ui.read_clipboard(text, sizeof text));
    EXPECT_STREQ(text, "1. 32-28 \xC3\xA9");
    EXPECT_TRUE(ui.read_clipboard(text, 5));
    EXPECT_STREQ(text, "1. 3");
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(ui.read_clipboard(text, sizeof text));
    EXPECT_STREQ(text, "1. 3");
}

TEST_F(Screen, PostsFromOtherThreadsRunHereInTheirOrder) {
    ran.clear();
    std::thread other([] {
        for (int32_t i = 0; i < 1000; ++i) ui.post(run_work, i);
    });
    other.join();
    EXPECT_TRUE(ran.empty());
    settle();
    ASSERT_EQ(ran.size(), 1000u);
    for (int32_t i = 0; i < 1000; ++i) EXPECT_EQ(ran[static_cast<size_t>(i)], i);
}

TEST_F(Screen, PicturesMayBePostedFromOtherThreads) {
    std::thread([] { ui.post_search_picture(PICTURE_STOP); }).join();
    EXPECT_EQ(picture(COMMAND_SEARCH_BUTTON), PICTURE_GO);
    settle();
    EXPECT_EQ(picture(COMMAND_SEARCH_BUTTON), PICTURE_STOP);
    ui.post_search_picture(PICTURE_GO);
    settle();
    EXPECT_EQ(picture(COMMAND_SEARCH_BUTTON), PICTURE_GO);
}

TEST_F(Screen, NothingElseHappensInAPause) {
    ran.clear();
    const int64_t ticks = tick_figures.ticks;
    const int32_t numbers = settings.square_numbers;
    ui.post(run_work, 1);
    QTimer::singleShot(20, main_window, [] { run_command(COMMAND_SQUARE_NUMBERS); });
    std::thread other([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ui.post(run_work, 2);
    });
    QElapsedTimer time;
    time.start();
    ui.pause(300);
    EXPECT_GE(time.elapsed(), 300);
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(tick_figures.ticks, ticks);
    EXPECT_EQ(settings.square_numbers, numbers);
    other.join();
    ui.post(run_work, 3);
    settle();
    EXPECT_EQ(ran, (std::vector<int32_t>{1, 2, 3}));
    EXPECT_TRUE(wait_until([ticks] { return tick_figures.ticks > ticks; }));
}

TEST_F(Screen, WhatCameInAPauseRunsBehindIt) {
    ran.clear();
    ui.post(run_work, 1);
    ui.pause(50);
    EXPECT_TRUE(ran.empty());
    settle();
    EXPECT_EQ(ran, std::vector<int32_t>{1}) << "though nothing else is posted";
}

TEST_F(Screen, PausesAreNotCountedAsLateTicks) {
    ASSERT_TRUE(wait_until([] { return tick_figures.ticks > 2; }));
    tick_figures.worst_late_us = 0;
    ui.pause(2000);
    const int64_t ticks = tick_figures.ticks;
    ASSERT_TRUE(wait_until([ticks] { return tick_figures.ticks > ticks; }));
    EXPECT_LT(tick_figures.worst_late_us, 1900000);
}

TEST_F(Screen, MissingSoundsAreNotMissed) {
    QElapsedTimer time;
    time.start();
    ui.play_sound("no such file.wav");
    EXPECT_LT(time.elapsed(), SOUND_MS / 2);
}

TEST_F(Screen, SoundsNeverHoldUpTheProgram) {
    // Silence, eight samples a millisecond.
    std::string wave(
        "RIFF\x24\x71\x02\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0data\0\x71\x02\0",
        44);
    wave += std::string(8 * SOUND_MS, '\x80');
    write_content(home.file("silence.wav"), wave);
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer time;
        time.start();
        ui.play_sound(home.file("silence.wav").c_str());
        EXPECT_LT(time.elapsed(), SOUND_MS / 2);
        QTest::qWait(50);
    }
    QElapsedTimer time;
    time.start();
    end_sound();
    EXPECT_LT(time.elapsed(), SOUND_MS / 2);
}

TEST_F(Screen, FilesThatCannotBeOpenedAreTold) {
    open_document = [](const std::string&) { return false; };
    ui.open_file("analysis.txt");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].text.starts_with("Cannot open /")) << boxes[0].text;
    EXPECT_TRUE(boxes[0].text.ends_with("/analysis.txt")) << boxes[0].text;
    open_document = [](const std::string& path) { return path.starts_with("/"); };
    ui.open_file("analysis.txt");
    EXPECT_EQ(boxes.size(), 1u);
}

TEST_F(Screen, TitlesAreShown) {
    ui.set_title("Tessarin vs Other:  1 wins, 2 losses, 3 draws, 4 unknowns");
    EXPECT_EQ(main_window->windowTitle().toStdString(),
              "Tessarin vs Other:  1 wins, 2 losses, 3 draws, 4 unknowns");
}

TEST(ScreenWithoutWindow, EverythingShownIsDropped) {
    const Ui screen = make_qt_ui();
    ASSERT_EQ(main_window, nullptr);
    screen.redraw_board();
    screen.set_side_button(WHITE);
    screen.set_status_text("text");
    screen.set_title("title");
    screen.update_menu(MenuState{});
    screen.set_pane_text(STATUS_WINDOW, "text");
    screen.set_game_text("text", 0, 1);
    screen.append_dxp_text("text", true);
    screen.trim_dxp_text(1, 1);
    screen.post_search_picture(PICTURE_GO);
    screen.post(run_work, 1);
    screen.pause(1);
    SUCCEED();
}
