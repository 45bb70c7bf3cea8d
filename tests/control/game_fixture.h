// What the tests of game control share: a screen that records, an engine that is told what to answer, and
// waits for the search thread that depend on no time.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "control/game.h"
#include "control/game_commands.h"
#include "control/game_flow.h"
#include "control/mode_hooks.h"
#include "control/panes.h"
#include "control/search_thread.h"
#include "control/settings.h"
#include "control/text_ids.h"
#include "control/ui.h"
#include "core/movegen.h"

// What reached the screen since `clear_events`, in order:
//
//   board FEN [marks]    side S    status T    title T    menu M    pane N T    game B-E
//   box TITLE: TEXT      sound F   pause N     picture N  clipboard T
using Events = std::vector<std::string>;
Events events();
void clear_events();
// Those that begin with the word.
Events events_of(const std::string& word);
int count_events(const std::string& word);

// What the clipboard holds; nothing if `clipboard_empty`.
extern std::string clipboard;
extern bool clipboard_empty;
extern std::string drawn_game_text;
// Runs within each message box, as a nested loop of messages would.
extern std::function<void()> in_message_box;

// An index into the list of moves, or -1 to have the engine search.
using Answer = std::function<int(const Position&, int, const MoveList&)>;

// An answer that may be exchanged while a search is held.
struct SharedAnswer {
    std::mutex mutex;
    Answer answer;

    SharedAnswer& operator=(const Answer& other) {
        const std::lock_guard lock(mutex);
        answer = other;
        return *this;
    }
    Answer get() {
        const std::lock_guard lock(mutex);
        return answer;
    }
};

// How the engine answers without a search.
struct EngineScript {
    SharedAnswer think;  // for the search thread
    Answer predict;      // for the interface thread
    std::atomic<int32_t> value{0};
    std::atomic<bool> hold{false};    // searches last until they are stopped or this is cleared
    std::atomic<int> searches{0};     // that began
    std::atomic<bool> within{false};  // a search is held
};
extern EngineScript script;

class GameTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Waits until the search thread is idle, and ticks once.
    static void finish_search();
    // The same until nothing runs and no result waits; a ponder search counts as nothing when it is held.
    static void settle();
    // Until the search thread holds its search.
    static void wait_until_held();
    static void release_search();

    static void set_position(const std::string& fen);
    // Makes the user's move "32-28" or "28x19".
    static void play(const std::string& move);
};

std::string fen_now();
Position position_from(const std::string& fen, int& side);
int index_of_move(const std::string& move);
std::string move_text_at(int index);

// Answers with the first move, or with the move of that text where it is legal and -1 elsewhere.
int first_move(const Position&, int, const MoveList&);
int search_really(const Position&, int, const MoveList&);
Answer answer_with(const std::string& move);
