// The strip of buttons: through the game, the side to move, and the start and stop of the search. Its buttons
// are the menu's commands, but for the last one. Interface thread only.
#pragma once

#include <QToolBar>
#include <cstdint>

#include "control/ui.h"
#include "shell/qt/menu_bar.h"

// Fills the toolbar. `run` is called with the id of a command that has no place in the menu.
void build_tool_bar(QToolBar& bar, const MenuBinding& menu, void (*run)(int32_t id));

// What the buttons do, in the current language.
void show_tool_bar_texts(QToolBar& bar);

// The button's picture and what it says it does.
void show_search_picture(QToolBar& bar, SearchPicture picture);

// The picture of the side to move.
void show_side_picture(QToolBar& bar, int side);

// The action of a button, null if there is none.
QAction* tool_bar_action(const QToolBar& bar, int32_t id);
