#include "shell/menu.h"

#include <algorithm>

std::vector<MenuItem> main_menu = built_in_menu();

namespace {

bool is_separator(const MenuItem& item) { return item.id == MENU_SEPARATOR; }

// Separators stand between items, one at a time.
void drop_idle_separators(std::vector<MenuItem>& items) {
    while (!items.empty() && is_separator(items.front())) items.erase(items.begin());
    while (!items.empty() && is_separator(items.back())) items.pop_back();
    const auto both = [](const MenuItem& a, const MenuItem& b) { return is_separator(a) && is_separator(b); };
    items.erase(std::unique(items.begin(), items.end(), both), items.end());
}

}  // namespace

void remove_menu_item(std::vector<MenuItem>& menu, int32_t id) {
    if (id == MENU_SEPARATOR || id == MENU_POPUP) return;
    const auto removed = std::erase_if(menu, [id](const MenuItem& item) { return item.id == id; });
    if (removed > 0) drop_idle_separators(menu);
    for (MenuItem& item : menu) remove_menu_item(item.items, id);
}

const MenuItem* find_menu_item(const std::vector<MenuItem>& menu, int32_t id) {
    if (id == MENU_SEPARATOR || id == MENU_POPUP) return nullptr;
    for (const MenuItem& item : menu) {
        if (item.id == id) return &item;
        if (const MenuItem* const inner = find_menu_item(item.items, id)) return inner;
    }
    return nullptr;
}
