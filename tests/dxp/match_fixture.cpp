#include "tests/dxp/match_fixture.h"

#include <chrono>
#include <deque>
#include <mutex>
#include <thread>

#include "base/clock.h"
#include "base/program_paths.h"
#include "records/pdn_game.h"

namespace {

struct Work {
    void (*work)(int32_t argument);
    int32_t argument;
};

std::mutex post_mutex;
std::deque<Work> posted;
std::string protocol;

bool take_work(Work& work) {
    const std::lock_guard lock(post_mutex);
    if (posted.empty()) return false;
    work = posted.front();
    posted.pop_front();
    return true;
}

void drop_work() {
    const std::lock_guard lock(post_mutex);
    posted.clear();
}

bool result_waits() { return !search_thread.searching && search_thread.search_finished; }

}  // namespace

void MatchTest::SetUp() {
    GameTest::SetUp();
    program_paths.data_folder = folder.path;
    program_paths.short_name = "Tessarin";
    program_paths.instance_suffix.clear();
    ui.append_dxp_text = [](const char* text, bool) { protocol += text; };
    ui.post = [](void (*work)(int32_t), int32_t argument) {
        const std::lock_guard lock(post_mutex);
        posted.push_back({work, argument});
    };
    drop_work();
    protocol.clear();
    match_hooks = no_match_hooks();
    match_plan = MatchPlan{};
    // The port must stand before the connection thread does.
    setenv(DXP_PORT_VARIABLE, std::to_string(port()).c_str(), 1);
    start_dxp();
    start_matches();
    clear_events();
}

void MatchTest::TearDown() {
    terminate_connection_command();
    EXPECT_TRUE(run_until(threads_rest));
    drop_work();
    match_hooks = no_match_hooks();
    match_plan = MatchPlan{};
    GameTest::TearDown();
}

int MatchTest::port() {
    static const int chosen = free_port();
    return chosen;
}

bool MatchTest::run_until(const std::function<bool()>& holds, int limit_ms) {
    const int64_t end = clock_ms() + limit_ms;
    int64_t next_tick = clock_ms();
    Work work{};
    while (!holds()) {
        if (clock_ms() > end) return false;
        if (take_work(work)) {
            work.work(work.argument);
            continue;
        }
        if (result_waits() || clock_ms() >= next_tick) {
            timer_tick();
            next_tick = clock_ms() + TICK_MS;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    return true;
}

bool threads_rest() {
    return !dxp_connection.waits_for_peer.load(std::memory_order_acquire) &&
           dxp_connection.receive_threads.load(std::memory_order_acquire) == 0;
}

std::string protocol_text() { return protocol; }

std::vector<FiledGame> filed_games(const std::string& path) {
    std::vector<FiledGame> games;
    PdnTable table;
    EXPECT_EQ(pdn_read_file(path, table), 0) << path;
    for (const PdnGame& list : table) {
        if (!list) continue;
        GameHeaders headers;
        pdn_game_headers(list.get(), headers);
        FiledGame filed{headers.event.data(),
                        headers.white.data(),
                        headers.black.data(),
                        result_string(headers.result),
                        {}};
        ReplayState state;
        size_t moves = 0;
        for (const PdnNode* node = list.get(); node; node = node->next) moves += node->kind == PDN_MOVE;
        PdnNode* node = pdn_start_position(list.get(), state);
        filed.states.push_back(state);
        while (node && filed.states.size() <= moves) {
            node = pdn_next_move(node, state);
            filed.states.push_back(state);
        }
        EXPECT_EQ(filed.states.size(), moves + 1) << filed.event;
        games.push_back(filed);
    }
    return games;
}
