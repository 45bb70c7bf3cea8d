// A user of the dialogs: opens one, looks at it, types, clicks and closes it.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <string>
#include <vector>

#include "control/game.h"
#include "control/settings.h"
#include "control/ui.h"
#include "shell/menu.h"
#include "tests/shell/language_folder.h"

constexpr int OK_ID = 1;
constexpr int CANCEL_ID = 2;

// Calls `open`, which runs a dialog, and `act` with that dialog once it is shown. Returns what `open` does.
template <typename Open, typename Act>
auto use_dialog(Open open, Act act) {
    QTimer poll;
    bool acted = false;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (acted || !dialog || !dialog->isVisible()) return;
        acted = true;
        poll.stop();
        act(*dialog);
        if (!dialog->isVisible()) return;
        ADD_FAILURE() << "the dialog is still open";
        dialog->reject();
    });
    poll.start(0);
    struct Seen {
        const bool& acted;
        ~Seen() { EXPECT_TRUE(acted) << "no dialog came up"; }
    } seen{acted};
    return open();
}

template <typename Control>
Control& control(const QWidget& dialog, int id) {
    auto* const found = dialog.findChild<Control*>(QStringLiteral("id_%1").arg(id));
    if (!found) ADD_FAILURE() << "no control " << id;
    static Control none;
    return found ? *found : none;
}

inline QLineEdit& edit(const QWidget& dialog, int id) { return control<QLineEdit>(dialog, id); }
inline QComboBox& combo(const QWidget& dialog, int id) { return control<QComboBox>(dialog, id); }

inline std::string edit_text(const QWidget& dialog, int id) { return edit(dialog, id).text().toStdString(); }

// Replaces the text, key by key.
inline void type(const QWidget& dialog, int id, const char* text) {
    QLineEdit& field = edit(dialog, id);
    field.setFocus();
    field.selectAll();
    QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, QString::fromLatin1(text));
}

inline void click(const QWidget& dialog, int button) {
    QTest::mouseClick(&control<QPushButton>(dialog, button), Qt::LeftButton);
}

struct ShownBox {
    std::string text, title;
    MessageIcon icon;
    bool dialog_open;  // beneath the box
};

// The boxes and the updates of the menu that were asked for.
inline std::vector<ShownBox> shown_boxes;
inline int menu_updates = 0;

class DialogTest : public testing::Test {
  protected:
    DialogTest() {
        settings = make_default_settings({});
        settings2 = make_default_settings2();
        reset_game();
        shown_boxes.clear();
        menu_updates = 0;
        ui = no_ui();
        ui.message_box = [](const char* text, const char* title, MessageIcon icon) {
            shown_boxes.push_back({text, title, icon, QApplication::activeModalWidget() != nullptr});
        };
        ui.update_menu = [](const MenuState&) { ++menu_updates; };
        main_menu = built_in_menu();
    }
    ~DialogTest() override {
        ui = no_ui();
        main_menu = built_in_menu();
    }

    // Chooses a language with this file.
    void speak(const std::string& name, int32_t id, const std::string& file) const {
        languages.write(name, file);
        load_languages();
        EXPECT_TRUE(choose_language(id));
    }

    LanguageFolder languages;
};
