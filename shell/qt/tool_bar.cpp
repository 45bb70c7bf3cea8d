#include "shell/qt/tool_bar.h"

#include <QVariant>
#include <array>

#include "control/game_commands.h"
#include "core/board.h"
#include "shell/qt/art.h"
#include "shell/qt/text.h"

namespace {

constexpr int PICTURE_SIZE = 24;

// The other texts of the buttons have the ids of their commands.
constexpr int TEXT_STOP_SEARCHING = 249;

struct Button {
    int32_t id;
    int picture;
};
constexpr int WHITE_TO_MOVE_PICTURE = 6;
constexpr int BLACK_TO_MOVE_PICTURE = 5;
constexpr std::array<Button, 5> MENU_BUTTONS{{
    {COMMAND_BACK_TO_START, 1},
    {COMMAND_BACK, 2},
    {COMMAND_FORWARD, 3},
    {COMMAND_FORWARD_TO_END, 4},
    {COMMAND_CHANGE_SIDE, WHITE_TO_MOVE_PICTURE},
}};

// The pictures are asked for only when they change: a tick may set the one that is there.
void show_picture(QToolBar& bar, int32_t id, int picture) {
    QAction* const action = tool_bar_action(bar, id);
    if (!action || action->property("picture").toInt() == picture) return;
    action->setProperty("picture", picture);
    action->setIcon(toolbar_picture(picture));
    // The menu shows text alone.
    action->setIconVisibleInMenu(false);
}

// The button's own action has no text in the menu.
void show_search_text(QAction& action) {
    const bool stops = action.property("picture").toInt() == PICTURE_STOP;
    const QString text = program_text(stops ? TEXT_STOP_SEARCHING : COMMAND_SEARCH_BUTTON);
    action.setText(text);
    action.setToolTip(text);
}

void add_button(QToolBar& bar, QAction* action, int32_t id, int picture) {
    action->setData(id);
    bar.addAction(action);
    show_picture(bar, id, picture);
}

}  // namespace

void build_tool_bar(QToolBar& bar, const MenuBinding& menu, void (*run)(int32_t id)) {
    bar.setObjectName(QStringLiteral("toolbar"));
    bar.setMovable(false);
    bar.setIconSize(QSize(PICTURE_SIZE, PICTURE_SIZE));
    bar.setToolButtonStyle(Qt::ToolButtonIconOnly);
    bar.setContextMenuPolicy(Qt::PreventContextMenu);
    bar.toggleViewAction()->setVisible(false);
    for (const Button& button : MENU_BUTTONS)
        if (QAction* const action = command_action(menu, button.id))
            add_button(bar, action, button.id, button.picture);
    bar.addSeparator();
    QAction* const search = new QAction(&bar);
    QObject::connect(search, &QAction::triggered, &bar, [run] { run(COMMAND_SEARCH_BUTTON); });
    // The menu has no such command that the keyboard could reach.
    search->setShortcut(Qt::Key_F5);
    search->setAutoRepeat(false);
    add_button(bar, search, COMMAND_SEARCH_BUTTON, PICTURE_GO);
    show_tool_bar_texts(bar);
}

void show_tool_bar_texts(QToolBar& bar) {
    for (const Button& button : MENU_BUTTONS)
        if (QAction* const action = tool_bar_action(bar, button.id))
            action->setToolTip(program_text(button.id));
    if (QAction* const search = tool_bar_action(bar, COMMAND_SEARCH_BUTTON)) show_search_text(*search);
}

void show_search_picture(QToolBar& bar, SearchPicture picture) {
    QAction* const action = tool_bar_action(bar, COMMAND_SEARCH_BUTTON);
    if (!action) return;
    show_picture(bar, COMMAND_SEARCH_BUTTON, picture);
    show_search_text(*action);
}

void show_side_picture(QToolBar& bar, int side) {
    show_picture(bar, COMMAND_CHANGE_SIDE, side == WHITE ? WHITE_TO_MOVE_PICTURE : BLACK_TO_MOVE_PICTURE);
}

QAction* tool_bar_action(const QToolBar& bar, int32_t id) {
    for (QAction* const action : bar.actions())
        if (!action->isSeparator() && action->data().toInt() == id) return action;
    return nullptr;
}
