// The whole desktop program within a test: a user with a home of his own, the main window, the engine with
// its data files, and the means to see what boxes came up.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/program_paths.h"
#include "book/engine_book.h"
#include "control/game.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "control/ui.h"
#include "core/movegen.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "shell/qt/commands.h"
#include "shell/qt/desktop.h"
#include "shell/qt/interface_thread.h"
#include "shell/qt/main_window.h"
#include "shell/qt/tool_bar.h"
#include "shell/settings_store.h"
#include "shell/startup.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/settings_images.h"

// A box that came up, and was closed with its button.
struct SeenBox {
    std::string title;
    std::string text;
    QMessageBox::Icon icon;
};

class DesktopTest : public testing::Test {
  protected:
    static constexpr int HASH_OFFSET = 120;
    static constexpr int SMALL_HASH_MB = 16;

    void SetUp() override {
        start_folder = std::filesystem::current_path();
        environment.set("HOME", home.path);
        environment.set("XDG_DATA_HOME", home.file("data"));
        environment.set("XDG_CONFIG_HOME", home.file("config"));
        environment.set("XDG_RUNTIME_DIR", home.file("run"));
        std::filesystem::create_directories(home.file("run"));
        std::filesystem::permissions(home.file("run"), std::filesystem::perms::owner_all);
        box_closer.setInterval(5);
        QObject::connect(&box_closer, &QTimer::timeout, &box_closer, [this] { close_box(); });
        box_closer.start();
    }
    void TearDown() override {
        box_closer.stop();
        if (main_window) {
            EXPECT_TRUE(close_desktop());
        }
        EXPECT_EQ(main_window, nullptr);
        reset_startup();
        reset_languages();
        settings_hooks = no_settings_hooks();
        settings = Settings{};
        settings2 = Settings2{};
        std::filesystem::current_path(start_folder);
    }

    std::string settings_folder() const { return home.file("config/Quillorn/Tessarin International/"); }
    std::string data_folder() const { return home.file("data/Quillorn/Tessarin International/"); }

    void save_images(const std::string& image, const std::string& image2) const {
        std::filesystem::create_directories(settings_folder());
        write_content(settings_folder() + "settings", image);
        write_content(settings_folder() + "settings2", image2);
    }
    // The program comes up to where it waits for the user. The user has saved a small table before.
    void open_small() {
        open_desktop(false);
        settings.hash_mb = SMALL_HASH_MB;
        ASSERT_EQ(start_desktop_engine(), 0);
        engine_book = no_book();  // the engine searches from the first move on
        settle();
    }
    // Events until nothing waits.
    static void settle() {
        QApplication::processEvents();
        QApplication::sendPostedEvents();
        QApplication::processEvents();
    }
    // Events until it holds; false if that takes too long.
    static bool wait_until(const std::function<bool()>& holds, int limit_ms = 120000) {
        return QTest::qWaitFor(holds, limit_ms);
    }

    static QAction& action(int32_t id) {
        QAction* const found = command_action(main_window->menu(), id);
        if (!found) ADD_FAILURE() << "no command " << id;
        static QAction none(nullptr);
        return found ? *found : none;
    }
    static QAction& button(int32_t id) {
        QAction* const found = tool_bar_action(main_window->tool_bar(), id);
        if (!found) ADD_FAILURE() << "no button " << id;
        static QAction none(nullptr);
        return found ? *found : none;
    }
    static bool ticked(int32_t id) { return action(id).isChecked(); }
    static int picture(int32_t id) { return button(id).property("picture").toInt(); }
    static std::string pane_shows(ChildWindow which) {
        return main_window->pane(which).edit().toPlainText().toStdString();
    }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(main_window, key, modifiers);
        settle();
    }
    // Plays the first legal moves of both sides.
    static void play_moves(int count) {
        for (int i = 0; i < count; ++i) ASSERT_EQ(make_user_move(0), 0);
    }

    ScratchFolder home;
    ScratchEnvironment environment;
    std::filesystem::path start_folder;
    std::vector<SeenBox> boxes;
    QTimer box_closer;  // stopped by a test that closes boxes itself

  private:
    void close_box() {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible()) return;
        boxes.push_back({box->windowTitle().toStdString(), box->text().toStdString(), box->icon()});
        box->accept();
    }
};
