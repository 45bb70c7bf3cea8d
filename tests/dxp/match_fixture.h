// A program that plays matches, within a test: game control with an engine that is told what to answer, the
// network play on a port of this test program, a data folder of the test's own, and the loop that stands for
// the windows'. The other side is a scripted peer.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "dxp/game_flow.h"
#include "dxp/match.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/game_fixture.h"
#include "tests/dxp/scripted_peer.h"
#include "tests/dxp/scripted_player.h"

class MatchTest : public GameTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    // The port of this test program.
    static int port();
    // Runs the interface thread until it holds; false if that takes too long.
    static bool run_until(const std::function<bool()>& holds, int limit_ms = PEER_WAIT_MS);

    std::string stats_file() const { return folder.file("dxpstats.txt"); }
    std::string games_file() const { return folder.file("dxpgames.pdn"); }

    ScratchFolder folder;
};

// No thread waits for a peer or receives, nor will any post what it has seen.
bool threads_rest();

// What was added to the protocol since the test began.
std::string protocol_text();

// The games of a file, as their positions from the start on. A game that does not replay to its end fails the
// test.
struct FiledGame {
    std::string event, white, black, result;
    std::vector<ReplayState> states;
};
std::vector<FiledGame> filed_games(const std::string& path);
