// The built-in menu: every command once, with its text, and what taking commands out leaves.
#include "shell/menu.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "control/time_control.h"
#include "tests/shell/menu_commands.h"

namespace {

// All items but separators and pop-ups, in order.
void collect(const std::vector<MenuItem>& items, std::vector<MenuItem>& commands) {
    for (const MenuItem& item : items) {
        if (item.id != MENU_SEPARATOR && item.id != MENU_POPUP) commands.push_back(item);
        collect(item.items, commands);
    }
}

std::vector<MenuItem> commands_of(const std::vector<MenuItem>& menu) {
    std::vector<MenuItem> commands;
    collect(menu, commands);
    return commands;
}

std::vector<std::string> popup_texts(const std::vector<MenuItem>& menu) {
    std::vector<std::string> texts;
    for (const MenuItem& item : menu) {
        if (item.id != MENU_POPUP) continue;
        texts.push_back(item.text);
        for (const std::string& inner : popup_texts(item.items)) texts.push_back(inner);
    }
    return texts;
}

// Separators part items, pop-ups have some, and only they do.
void expect_tidy(const std::vector<MenuItem>& items) {
    ASSERT_FALSE(items.empty());
    EXPECT_NE(items.front().id, MENU_SEPARATOR);
    EXPECT_NE(items.back().id, MENU_SEPARATOR);
    for (size_t i = 0; i < items.size(); ++i) {
        const MenuItem& item = items[i];
        EXPECT_EQ(item.text.empty(), item.id == MENU_SEPARATOR);
        if (i > 0) {
            EXPECT_FALSE(item.id == MENU_SEPARATOR && items[i - 1].id == MENU_SEPARATOR);
        }
        if (item.id == MENU_POPUP)
            expect_tidy(item.items);
        else
            EXPECT_TRUE(item.items.empty()) << item.id;
    }
}

const MenuItem& popup_of(const std::vector<MenuItem>& menu, const std::string& text) {
    for (const MenuItem& item : menu)
        if (item.id == MENU_POPUP && item.text == text) return item;
    ADD_FAILURE() << "no pop-up " << text;
    return menu.front();
}

TEST(Menu, HasEachCommandOnceWithItsText) {
    std::map<int32_t, std::string> expected(std::begin(MENU_COMMANDS), std::end(MENU_COMMANDS));
    ASSERT_EQ(expected.size(), std::size(MENU_COMMANDS));
    for (const MenuItem& command : commands_of(built_in_menu())) {
        ASSERT_TRUE(expected.contains(command.id)) << command.id << " is not known, or there twice";
        EXPECT_EQ(command.text, expected[command.id]);
        expected.erase(command.id);
    }
    for (const auto& [id, text] : expected) ADD_FAILURE() << id << " " << text << " is missing";
}

TEST(Menu, HasThePopupsOfTheBarInTheirOrder) {
    std::vector<std::string> bar;
    for (const MenuItem& item : built_in_menu()) {
        EXPECT_EQ(item.id, MENU_POPUP);
        bar.push_back(item.text);
    }
    EXPECT_EQ(bar, (std::vector<std::string>{"&Game", "Edit", "Time", "Options", "Window", "Help"}));
}

// Their numbers in language files follow from it.
TEST(Menu, CountsItsPopupsDepthFirst) {
    EXPECT_EQ(
        popup_texts(built_in_menu()),
        (std::vector<std::string>{"&Game", "Search Mode", "Analyze", "DamExchange", "Edit", "Time", "Options",
                                  "Opening book", "Language", "Window", "Background", "Help"}));
}

TEST(Menu, IsTidy) {
    expect_tidy(built_in_menu());
    expect_tidy(main_menu);
}

TEST(Menu, ListsTheTimesInTheOrderOfTheirTable) {
    const std::vector<MenuItem> menu = built_in_menu();
    const std::vector<MenuItem> commands = commands_of(popup_of(menu, "Time").items);
    ASSERT_EQ(commands.size(), TIME_MENU_ROWS + 3);
    for (size_t row = 0; row < TIME_MENU_ROWS; ++row) {
        EXPECT_EQ(commands[row].id, time_menu[row].id);
        EXPECT_EQ(commands[row].text, time_menu[row].text);
    }
}

TEST(Menu, ShowsTheWholeMenuAtFirst) {
    EXPECT_EQ(commands_of(main_menu).size(), commands_of(built_in_menu()).size());
}

TEST(Menu, FindsEveryCommandAndNothingElse) {
    const std::vector<MenuItem> menu = built_in_menu();
    for (const auto& [id, text] : MENU_COMMANDS) {
        const MenuItem* const item = find_menu_item(menu, id);
        ASSERT_NE(item, nullptr) << id;
        EXPECT_EQ(item->id, id);
        EXPECT_EQ(item->text, text);
    }
    for (const int32_t id : {MENU_SEPARATOR, MENU_POPUP, 40022, 40034, 39999, INT32_MIN, INT32_MAX})
        EXPECT_EQ(find_menu_item(menu, id), nullptr) << id;
    EXPECT_EQ(find_menu_item({}, COMMAND_EXIT), nullptr);
}

TEST(Menu, LosesTheTestsWithTheirSeparator) {
    std::vector<MenuItem> menu = built_in_menu();
    const size_t all = popup_of(menu, "Options").items.size();
    for (const int32_t id : {COMMAND_TEST_EVAL, COMMAND_TEST_MOVE_GENERATOR, COMMAND_TEST_INDEXING}) {
        remove_menu_item(menu, id);
        EXPECT_EQ(find_menu_item(menu, id), nullptr);
        expect_tidy(menu);
    }
    EXPECT_EQ(popup_of(menu, "Options").items.size(), all - 4);
    EXPECT_EQ(popup_of(menu, "Options").items.back().id, COMMAND_RESET_SETTINGS);
}

TEST(Menu, LosesWhatStandsInAPopupOfAPopup) {
    std::vector<MenuItem> menu = built_in_menu();
    remove_menu_item(menu, COMMAND_START_MATCH_AUTOCONNECT);
    EXPECT_EQ(find_menu_item(menu, COMMAND_START_MATCH_AUTOCONNECT), nullptr);
    EXPECT_NE(find_menu_item(menu, COMMAND_START_MATCH), nullptr);
    EXPECT_EQ(commands_of(menu).size(), std::size(MENU_COMMANDS) - 1);
    expect_tidy(menu);
}

TEST(Menu, KeepsSeparatorsAndPopupsAndWhatIsNotThere) {
    std::vector<MenuItem> menu = built_in_menu();
    for (const int32_t id : {MENU_SEPARATOR, MENU_POPUP, 40022, 40000}) remove_menu_item(menu, id);
    EXPECT_EQ(commands_of(menu).size(), std::size(MENU_COMMANDS));
    EXPECT_EQ(popup_texts(menu), popup_texts(built_in_menu()));
    EXPECT_EQ(popup_of(menu, "Options").items.size(), popup_of(built_in_menu(), "Options").items.size());
}

TEST(Menu, PartsNothingWithSeparatorsWhateverIsTakenOut) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::vector<MenuItem> menu = built_in_menu();
        std::vector<MenuItem> left = commands_of(menu);
        for (int taken = 0; taken < 40; ++taken) {
            const size_t at = random() % left.size();
            remove_menu_item(menu, left[at].id);
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
        }
        const std::vector<MenuItem> commands = commands_of(menu);
        ASSERT_EQ(commands.size(), left.size());
        for (size_t i = 0; i < left.size(); ++i) EXPECT_EQ(commands[i].id, left[i].id);
        for (const MenuItem& popup : menu)
            if (!popup.items.empty()) {
                EXPECT_NE(popup.items.front().id, MENU_SEPARATOR);
                EXPECT_NE(popup.items.back().id, MENU_SEPARATOR);
                for (size_t i = 1; i < popup.items.size(); ++i)
                    EXPECT_FALSE(popup.items[i].id == MENU_SEPARATOR &&
                                 popup.items[i - 1].id == MENU_SEPARATOR);
            }
    }
}

}  // namespace
