#include "tests/control/record_fixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

#include "control/analyze_games.h"
#include "control/load_save.h"

UserAnswers answers;

namespace {

thread_local int allocations_left = -1;  // until one fails; negative for never

void* try_to_allocate(size_t bytes) {
    const bool fails = allocations_left == 0;
    if (allocations_left >= 0) --allocations_left;
    return fails ? nullptr : std::malloc(bytes ? bytes : 1);
}

void* allocate(size_t bytes) {
    void* const memory = try_to_allocate(bytes);
    if (!memory) throw std::bad_alloc();
    return memory;
}

int offer_games(const char* text, const PdnOffsets& offsets, int count, int selected) {
    answers.offered.clear();
    for (int i = 0; i < count; ++i) {
        char line[GAME_LINE_SIZE];
        pdn_game_line(text, offsets, i, line);
        answers.offered.emplace_back(line);
    }
    answers.selected = selected;
    if (answers.meanwhile) answers.meanwhile();
    return answers.game;
}

bool edit_headers(GameHeaders& headers) {
    answers.shown = headers;
    if (answers.meanwhile) answers.meanwhile();
    if (answers.headers && answers.edits) headers = answers.edited;
    return answers.headers;
}

}  // namespace

void* operator new(size_t bytes) { return allocate(bytes); }
void* operator new[](size_t bytes) { return allocate(bytes); }
void* operator new(size_t bytes, const std::nothrow_t&) noexcept { return try_to_allocate(bytes); }
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept { return try_to_allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

void fail_allocation(int successes) { allocations_left = successes; }

void RecordTest::SetUp() {
    GameTest::SetUp();
    std::string name = testing::TempDir() + "record_test_XXXXXX";
    folder = std::string(mkdtemp(name.data())) + "/";
    answers = UserAnswers{};
    load_state = LoadState{};
    analysis = Analysis{};
    analysis_output = file_analysis_output();
    ui.choose_load_file = [](const char* title, std::string& path) {
        answers.load_title = title;
        if (answers.meanwhile) answers.meanwhile();
        if (!answers.load_path.empty()) path = answers.load_path;
        return !answers.load_path.empty();
    };
    ui.choose_save_file = [](const char* title, std::string& path) {
        answers.save_title = title;
        if (answers.meanwhile) answers.meanwhile();
        if (!answers.save_path.empty()) path = answers.save_path;
        return !answers.save_path.empty();
    };
    ui.choose_game = offer_games;
    ui.edit_headers = edit_headers;
    ui.open_file = [](const char* path) { answers.opened.emplace_back(path); };
}

void RecordTest::TearDown() {
    GameTest::TearDown();
    analysis = Analysis{};
    std::filesystem::remove_all(folder);
}

std::string RecordTest::write_file(const std::string& name, const std::string& content) const {
    std::ofstream(folder + name, std::ios::binary) << content;
    return folder + name;
}

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void expect_game(const std::vector<ReplayState>& entries) {
    ASSERT_EQ(game.history_last, static_cast<int>(entries.size()));
    EXPECT_EQ(game.history_count, game.history_last);
    for (size_t i = 0; i < entries.size(); ++i) {
        expect_same_state(entries[i], whole_history()[i]);
        ASSERT_FALSE(testing::Test::HasFailure()) << "entry " << i;
    }
    EXPECT_TRUE(same_pieces(game.board, entries.back().position));
    EXPECT_EQ(game.board_side, entries.back().side);
}

void set_game(const std::vector<ReplayState>& entries) {
    restart_history(entries[0].position, entries[0].side);
    for (size_t i = 1; i < entries.size(); ++i)
        addto_game_history(entries[i].position, entries[i].side, entries[i].setup_flag);
    set_board(entries.back().position, entries.back().side);
}

std::vector<ReplayState> entries_of(const std::string& text) {
    const PdnGame list = pdn_parse_game(text.c_str());
    bool broken = false;
    std::vector<ReplayState> entries = replay(list.get(), broken);
    if (broken) {
        entries.push_back(entries.back());
        entries.back().setup_flag = 0;
    }
    return entries;
}
