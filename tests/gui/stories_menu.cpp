// Where the menu and the toolbar are: a window of the test's own that has the same ones, and is never shown,
// is asked for their places.
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "base/program_paths.h"
#include "control/game_commands.h"
#include "control/settings.h"
#include "shell/languages.h"
#include "shell/menu.h"
#include "shell/qt/art.h"
#include "shell/qt/menu_bar.h"
#include "shell/qt/tool_bar.h"
#include "tests/gui/stories.h"
#include "tests/gui/stories_board.h"

namespace {

// Wide enough for the menu bar in every language.
constexpr QSize TWIN_SIZE(900, 400);

// In which a pop-up opens unless the machine is very busy.
constexpr double USUAL_SECONDS = 5;

struct Twin {
    QMainWindow window;
    QToolBar* buttons = new QToolBar;
    MenuBinding binding;
};
std::unique_ptr<Twin> twin;

void ignore_command(int32_t) {}

void make_menu(int32_t language) {
    settings2.language_id = language;
    main_menu = built_in_menu();
    for (const int32_t id : {COMMAND_TEST_EVAL, COMMAND_TEST_MOVE_GENERATOR, COMMAND_TEST_INDEXING,
                             COMMAND_START_MATCH_AUTOCONNECT})
        remove_menu_item(main_menu, id);
    translate_menu(main_menu);
}

// The pop-ups that lead to the command, outermost first.
bool way_to(QAction* wanted, const QList<QAction*>& actions, QList<QAction*>& way) {
    for (QAction* const action : actions) {
        way.append(action);
        if (action == wanted || (action->menu() && way_to(wanted, action->menu()->actions(), way)))
            return true;
        way.removeLast();
    }
    return false;
}

// Clicks where a pop-up opens and waits for it. A window that comes to the front just then can close it
// before it is seen; so there are several tries, each when all is quiet.
QString open_by_click(const Desk& desk, QPoint at, const QString& window, const QStringList& before) {
    QString popup;
    const auto look_for_it = [&] {
        for (const QString& shown : windows(desk))
            if (!before.contains(shown)) popup = shown;
        return !popup.isEmpty();
    };
    for (int tries = 0; tries < 4 && popup.isEmpty(); ++tries) {
        click_in(desk, at * desk.scale, 1, window);
        if (wait_until(look_for_it, USUAL_SECONDS)) break;
        wait_until_at_rest(desk);
        look_for_it();
    }
    return popup;
}

QPoint title_place(QAction* popup) { return twin->window.menuBar()->actionGeometry(popup).center(); }

QRect button_place(int32_t command) {
    Twin& t = *twin;
    QAction* const action = tool_bar_action(*t.buttons, command);
    QWidget* const button = action ? t.buttons->widgetForAction(action) : nullptr;
    return button ? QRect(button->mapTo(&t.window, QPoint(0, 0)), button->size()) : QRect();
}

bool shows(const Desk& desk, QPoint at, const QImage& wanted) {
    const QImage seen = look(*desk.screen).copy(QRect(desk.origin + at, wanted.size()));
    return seen == wanted.convertToFormat(QImage::Format_RGB32);
}

}  // namespace

void begin_stories() {
    std::string& folder = program_paths.program_folder;
    folder = TESSARIN_PROGRAM;
    folder.erase(folder.rfind('/') + 1);
    load_languages();
    expect_language(ENGLISH_ID);
}

void end_stories() { twin.reset(); }

void expect_language(int32_t id) {
    make_menu(id);
    twin = std::make_unique<Twin>();
    build_menu(twin->window, main_menu, ignore_command, twin->binding);
    build_tool_bar(*twin->buttons, twin->binding, ignore_command);
    twin->window.addToolBar(twin->buttons);
    twin->window.setAttribute(Qt::WA_DontShowOnScreen);
    twin->window.resize(TWIN_SIZE);
    twin->window.show();
}

bool choose(const Desk& desk, int32_t command) {
    Twin& t = *twin;
    QList<QAction*> way;
    if (!way_to(command_action(t.binding, command), t.window.menuBar()->actions(), way)) return false;
    take_keyboard(desk, desk.window);
    QStringList shown = windows(desk);
    QString popup = open_by_click(desk, title_place(way.front()), desk.window, shown);
    for (qsizetype i = 1; i < way.size() && !popup.isEmpty(); ++i) {
        shown.append(popup);
        const QPoint at = way[i - 1]->menu()->actionGeometry(way[i]).center();
        if (way[i]->menu())
            popup = open_by_click(desk, at, popup, shown);
        else
            click_in(desk, at * desk.scale, 1, popup);
    }
    take_mouse_away(desk);
    return !popup.isEmpty() && wait_until_closed(desk, popup);
}

int menu_popups() { return static_cast<int>(twin->window.menuBar()->actions().size()); }

void open_popup(const Desk& desk, int popup) {
    open_by_click(desk, title_place(twin->window.menuBar()->actions()[popup]), desk.window, windows(desk));
}

void click_button(const Desk& desk, int32_t command) {
    click_in(desk, button_place(command).center() * desk.scale);
    take_mouse_away(desk);
}

bool button_shows(const Desk& desk, int32_t command, int picture) {
    Twin& t = *twin;
    QAction* const action = tool_bar_action(*t.buttons, command);
    action->setIcon(toolbar_picture(picture));
    const QPixmap wanted = t.window.grab(button_place(command));
    return shows(desk, button_place(command).topLeft(), wanted.toImage());
}

bool menu_bar_is_right(const Desk& desk) {
    Twin& t = *twin;
    const QList<QAction*> popups = t.window.menuBar()->actions();
    const int width = t.window.menuBar()->actionGeometry(popups.back()).right() + 1;
    const QPixmap wanted = t.window.grab(QRect(0, 0, width, t.window.menuBar()->height()));
    return shows(desk, {0, 0}, wanted.toImage());
}
