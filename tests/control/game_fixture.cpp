#include "tests/control/game_fixture.h"

#include <chrono>
#include <mutex>
#include <random>
#include <thread>

#include "base/log.h"
#include "base/program_paths.h"
#include "base/text.h"
#include "book/engine_book.h"
#include "control/game_clock.h"
#include "core/notation.h"
#include "egdb/engine_egdb.h"
#include "eval/evaluation.h"
#include "eval/weights.h"
#include "records/fen.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"

std::string clipboard;
bool clipboard_empty = false;
std::string drawn_game_text;
std::function<void()> in_message_box;
EngineScript script;

namespace {

std::mutex event_mutex;
Events recorded;
std::atomic<int> violations{0};
std::thread::id interface_thread;

void record(const std::string& event) {
    const std::lock_guard lock(event_mutex);
    recorded.push_back(event);
}

void record_board() {
    std::string marks;
    for (int i = 0; i < game.highlight_count; ++i)
        marks += (i ? " " : "") + std::to_string(game.highlights[static_cast<size_t>(i)]);
    record("board " + fen_now() + " [" + marks + "]");
}

void record_menu(const MenuState& s) {
    record("menu " + std::to_string(s.analyze_enabled) + std::to_string(s.cancel_analyze_enabled) +
           std::to_string(s.clock_start_enabled) + std::to_string(s.setup_ticked) + " " +
           std::to_string(s.ticked_mode_command));
}

void record_box(const char* text, const char* title, MessageIcon) {
    record(std::string("box ") + title + ": " + text);
    if (in_message_box) in_message_box();
}

bool read_test_clipboard(char* buffer, size_t size) {
    if (clipboard_empty) return false;
    std::snprintf(buffer, size, "%s", clipboard.c_str());
    return true;
}

Ui recorder() {
    Ui screen = no_ui();
    screen.redraw_board = record_board;
    screen.set_side_button = [](int side) { record(side == WHITE ? "side W" : "side B"); };
    screen.set_status_text = [](const char* text) { record(std::string("status ") + text); };
    screen.set_title = [](const char* title) { record(std::string("title ") + title); };
    screen.update_menu = record_menu;
    screen.set_pane_text = [](ChildWindow pane, const char* text) {
        record("pane " + std::to_string(pane) + " " + text);
    };
    screen.set_game_text = [](const char* text, int begin, int end) {
        drawn_game_text = text;
        record("game " + std::to_string(begin) + "-" + std::to_string(end));
    };
    screen.message_box = record_box;
    screen.read_clipboard = read_test_clipboard;
    screen.write_clipboard = [](const char* text) {
        clipboard = text;
        record(std::string("clipboard ") + text);
        return true;
    };
    screen.play_sound = [](const char* file) { record(std::string("sound ") + file); };
    screen.pause = [](int ms) { record("pause " + std::to_string(ms)); };
    screen.post_search_picture = [](SearchPicture picture) { record("picture " + std::to_string(picture)); };
    return screen;
}

void hold_search() {
    script.within = true;
    while (script.hold && !search_thread.stop_flag.load(std::memory_order_relaxed))
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    script.within = false;
}

int scripted_book(const Position& position, int side, const MoveList& list, const BookTerms&, int& index,
                  int& value, char* text) {
    if (list.count == 0) return 0;
    const bool predicts = std::this_thread::get_id() == interface_thread;
    if (!predicts) {
        ++script.searches;
        hold_search();
    }
    const int answer =
        predicts ? script.predict(position, side, list) : script.think.get()(position, side, list);
    if (answer < 0) return 0;
    index = answer;
    value = script.value;
    std::snprintf(text, SEARCH_TEXT_SIZE, "book %d", index);
    return 1;
}

void make_random_weights() {
    std::mt19937_64 random(1);
    init_eval_tables();
    const auto small = [&](int limit) {
        return static_cast<int16_t>(static_cast<int>(random() % static_cast<unsigned>(2 * limit + 1)) -
                                    limit);
    };
    for (PatternTable& table : weights.patterns)
        for (PatternEntry& entry : table) entry = {small(1200), small(1200)};
    weights.params = {10, 5, 20, 40, 5000, 6000, 14000, 15000, 14000, 15000};
}

}  // namespace

Events events() {
    const std::lock_guard lock(event_mutex);
    return recorded;
}

void clear_events() {
    const std::lock_guard lock(event_mutex);
    recorded.clear();
}

Events events_of(const std::string& word) {
    Events found;
    for (const std::string& event : events())
        if (event.starts_with(word)) found.push_back(event);
    return found;
}

int count_events(const std::string& word) { return static_cast<int>(events_of(word).size()); }

void GameTest::SetUp() {
    static const bool weights_made = (make_random_weights(), true);
    ASSERT_TRUE(weights_made);
    interface_thread = std::this_thread::get_id();
    ui = recorder();
    start_search_thread();
    ASSERT_TRUE(wait_for_search());
    reset_search_flags();
    // Busy machines and sanitizers are slow; no test waits for this limit.
    search_thread.wait_limit_ms = 300000;
    mode_hooks = no_mode_hooks();
    log_path.clear();
    log_listener = nullptr;
    text_source = nullptr;
    settings = make_default_settings({});
    settings2 = make_default_settings2();
    settings.hash_mb = 1;
    settings.search_threads = 1;
    settings.time_per_move = 0.02;
    settings.time_menu_id = 40006;
    settings.use_game_clock = 0;
    settings.book_mode = 3;
    settings.wld_enable = 0;
    settings.mtc_enable = 0;
    settings.sound_on = 0;
    settings.pondering_on = 0;
    engine_settings = EngineSettings{};
    engine_settings.hash_size_mb = 1;
    ASSERT_EQ(tt_allocate(), 0);
    search_state.depth_limit = 3;
    egdb_engine = no_egdb();
    engine_book = {true, scripted_book};
    script.think = first_move;
    script.predict = first_move;
    script.value = 0;
    script.hold = false;
    script.searches = 0;
    clipboard.clear();
    clipboard_empty = false;
    in_message_box = nullptr;
    program_paths.window_title = "the program";
    reset_clock_state();
    reset_panes();
    reset_game();
    violations = 0;
    phase_violation = [](const char* transition) {
        ++violations;
        ADD_FAILURE() << transition;
    };
    new_game();
    set_gui_mode(NORMAL_MODE);
    clear_events();
}

void GameTest::TearDown() {
    in_message_box = nullptr;
    script.hold = false;
    discard_search();
    ASSERT_TRUE(wait_for_search());
    search_thread.search_finished = 0;
    EXPECT_EQ(violations, 0);
    phase_violation = nullptr;
    engine_book = no_book();
    mode_hooks = no_mode_hooks();
    search_state.depth_limit = MAX_DEPTH;
    search_state.game_line = nullptr;
    settings = Settings{};
    settings2 = Settings2{};
    program_paths = ProgramPaths{};
    reset_clock_state();
}

void GameTest::finish_search() {
    ASSERT_TRUE(wait_for_search());
    timer_tick();
}

void GameTest::settle() {
    while (search_thread.search_finished || (search_thread.searching && !script.within)) {
        if (!script.hold) {
            ASSERT_TRUE(wait_for_search());
        }
        timer_tick();
    }
}

void GameTest::wait_until_held() {
    // One that has no move to choose from is not held.
    while (!script.within && search_thread.searching) std::this_thread::yield();
}

void GameTest::release_search() { script.hold = false; }

void GameTest::set_position(const std::string& fen) {
    int side = WHITE;
    const Position position = position_from(fen, side);
    set_board(position, side);
    restart_history(position, side);
}

void GameTest::play(const std::string& move) { ASSERT_EQ(make_user_move(index_of_move(move)), 0) << move; }

std::string fen_now() {
    char text[FEN_TEXT_SIZE];
    position_to_fen(game.board, game.board_side, text);
    return text;
}

Position position_from(const std::string& fen, int& side) {
    Position position;
    EXPECT_EQ(fen_to_position(fen.c_str(), position, side), 0) << fen;
    position.side = side;
    return position;
}

namespace {
int find_text(const Position& position, int side, const MoveList& list, const std::string& move) {
    for (int i = 0; i < list.count; ++i) {
        char text[MOVE_TEXT_SIZE];
        full_move_text(position, list[i], side, text);
        if (move == text) return i;
    }
    return -1;
}
}  // namespace

int index_of_move(const std::string& move) {
    MoveList list;
    generate_moves(game.board, list, game.board_side);
    return find_text(game.board, game.board_side, list, move);
}

std::string move_text_at(int index) {
    MoveList list;
    generate_moves(game.board, list, game.board_side);
    char text[MOVE_TEXT_SIZE];
    full_move_text(game.board, list[index], game.board_side, text);
    return text;
}

int first_move(const Position&, int, const MoveList&) { return 0; }
int search_really(const Position&, int, const MoveList&) { return -1; }

Answer answer_with(const std::string& move) {
    return [move](const Position& position, int side, const MoveList& list) {
        return find_text(position, side, list, move);
    };
}
