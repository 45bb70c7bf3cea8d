// What the tests of analyses share.
#pragma once

#include <atomic>
#include <string>

#include "base/program_paths.h"
#include "control/analyze_games.h"
#include "control/load_save.h"
#include "tests/control/record_fixture.h"

inline std::atomic<int> searched_positions{0};

// Answers with the first move and numbers its texts, so that each comment tells which search it is from.
inline int first_and_count(const Position&, int, const MoveList&) {
    ++searched_positions;
    return 0;
}

class AnalyzeGames : public RecordTest {
  protected:
    void SetUp() override {
        RecordTest::SetUp();
        program_paths.data_folder = folder;
        script.think = first_and_count;
        searched_positions = 0;
    }

    void load(const std::string& content) {
        load_pdn_game(write_file("load.pdn", content));
        clear_events();
    }
    void analyze_pdn(const std::string& content, bool all_scores = false) {
        answers.load_path = write_file("games.pdn", content);
        analyze_pdn_command(all_scores);
    }
    // The search that runs ends, and the next one is held.
    static void hold_next_search() {
        ASSERT_TRUE(wait_for_search());
        script.hold = true;
        timer_tick();
        wait_until_held();
    }
    // Ticks until the mode is left.
    static void run() {
        while (is_analyze_mode(game.gui_mode)) finish_search();
    }
    std::string output() const { return content_of(folder + "analysis.txt"); }
};

constexpr const char* NO_TAGS = "[Event \"\"]\n[Date \"\"]\n[White \"\"]\n[Black \"\"]\n[Result \"*\"]\n";
