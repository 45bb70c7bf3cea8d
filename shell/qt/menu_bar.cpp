#include "shell/qt/menu_bar.h"

#include <QActionGroup>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenuBar>
#include <array>

#include "control/game_commands.h"
#include "shell/qt/menu_state.h"
#include "shell/qt/text.h"

namespace {

struct Accelerator {
    int32_t id;
    QKeyCombination key;
};
constexpr std::array<Accelerator, 8> ACCELERATORS{{
    {COMMAND_BACK, Qt::Key_Left},
    {COMMAND_BACK_TO_START, Qt::Key_Home},
    {COMMAND_FORWARD, Qt::Key_Right},
    {COMMAND_FORWARD_TO_END, Qt::Key_End},
    {COMMAND_COPY_GAME, Qt::CTRL | Qt::Key_C},
    {COMMAND_COPY_POSITION, Qt::ALT | Qt::Key_C},
    {COMMAND_PASTE, Qt::CTRL | Qt::Key_V},
    {COMMAND_INVERT_BOARD, Qt::CTRL | Qt::Key_I},
}};

// While the menu bar has the keyboard, the keys that go through the game are its own.
class OwnKeys : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::ShortcutOverride) return false;
        const int key = static_cast<const QKeyEvent*>(event)->key();
        const bool own =
            key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Home || key == Qt::Key_End;
        if (own) event->accept();
        return own;
    }
};

struct Builder {
    QMainWindow& window;
    void (*run)(int32_t id);
    MenuBinding& binding;

    void add_command(QMenu& menu, const MenuItem& item, QActionGroup& choices) const {
        QAction* const action = menu.addAction(shown_text(item.text));
        action->setMenuRole(QAction::NoRole);
        action->setCheckable(command_has_tick(item.id));
        if (command_is_choice(item.id)) choices.addAction(action);
        for (const Accelerator& accelerator : ACCELERATORS)
            if (accelerator.id == item.id) action->setShortcut(accelerator.key);
        QObject::connect(action, &QAction::triggered, &window, [id = item.id, to = run] { to(id); });
        binding.commands[item.id] = action;
    }

    void add_items(QMenu& menu, const std::vector<MenuItem>& items) const {
        auto* const choices = new QActionGroup(&menu);
        // None of them need be in force.
        choices->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
        for (const MenuItem& item : items) {
            if (item.id == MENU_SEPARATOR)
                menu.addSeparator();
            else if (item.id == MENU_POPUP)
                add_popup(*menu.addMenu(shown_text(item.text)), item);
            else
                add_command(menu, item, *choices);
        }
    }

    void add_popup(QMenu& menu, const MenuItem& item) const {
        binding.popups.push_back(&menu);
        add_items(menu, item.items);
    }
};

void show_item_texts(const std::vector<MenuItem>& items, MenuBinding& binding, size_t& popup) {
    for (const MenuItem& item : items) {
        if (item.id == MENU_POPUP) {
            if (popup >= binding.popups.size()) return;
            binding.popups[popup++]->setTitle(shown_text(item.text));
            show_item_texts(item.items, binding, popup);
        } else if (QAction* const action = command_action(binding, item.id)) {
            action->setText(shown_text(item.text));
        }
    }
}

}  // namespace

void build_menu(QMainWindow& window, const std::vector<MenuItem>& menu, void (*run)(int32_t id),
                MenuBinding& binding) {
    binding = MenuBinding{};
    const Builder builder{window, run, binding};
    for (const MenuItem& item : menu)
        if (item.id == MENU_POPUP) builder.add_popup(*window.menuBar()->addMenu(shown_text(item.text)), item);
    show_menu_texts(menu, binding);
    window.menuBar()->installEventFilter(new OwnKeys(window.menuBar()));
}

void show_menu_texts(const std::vector<MenuItem>& menu, MenuBinding& binding) {
    size_t popup = 0;
    show_item_texts(menu, binding, popup);
}

void show_menu_state(const MenuState& state, MenuBinding& binding) {
    for (const auto& [id, action] : binding.commands) {
        action->setEnabled(command_is_enabled(id, state));
        if (action->isCheckable()) action->setChecked(command_is_ticked(id, state));
    }
}

QAction* command_action(const MenuBinding& binding, int32_t id) {
    const auto found = binding.commands.find(id);
    return found == binding.commands.end() ? nullptr : found->second;
}
