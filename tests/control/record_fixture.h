// What the tests of loading, saving, the clipboard and the analyses share: files that the user "chooses", and
// games.
#pragma once

#include <string>
#include <vector>

#include "tests/control/game_fixture.h"
#include "tests/records/positions.h"

// What the user answers.
struct UserAnswers {
    std::string load_path;  // empty: he cancels
    std::string save_path;
    int game = 0;          // from the list of games; -1: he cancels
    bool headers = true;   // he agrees to them
    GameHeaders edited{};  // what he makes of them
    bool edits = false;
    void (*meanwhile)() = nullptr;  // what happens while he chooses a file or a game, or has the headers
    // What he was asked.
    std::string load_title, save_title;
    std::vector<std::string> offered;
    int selected = -2;
    GameHeaders shown{};
    std::vector<std::string> opened;  // files
};
extern UserAnswers answers;

// One allocation of this thread, behind so many that succeed, finds no memory. The allocator of the whole
// test program is replaced to that end.
void fail_allocation(int successes);

class RecordTest : public GameTest {
  protected:
    std::string folder;  // of this test, with a final slash

    void SetUp() override;
    void TearDown() override;

    std::string write_file(const std::string& name, const std::string& content) const;
};

std::string content_of(const std::string& path);

// The game on the board is these entries, and stands on the last of them.
void expect_game(const std::vector<ReplayState>& entries);

// Makes the entries the game on the board, which stands on the last of them.
void set_game(const std::vector<ReplayState>& entries);

// What a replay of the first game of the text gives; a game that breaks has its last position twice.
std::vector<ReplayState> entries_of(const std::string& text);
