// A program that plays against scripted peers, within a test: as tests/dxp/match_fixture.h has it, with the
// protocol line by line, and with every thread of a connection gone before the next test.
#pragma once

#include <string>
#include <vector>

#include "tests/dxp/match_fixture.h"

class FlowTest : public MatchTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Plays the script to its end while the interface thread runs, and then as long as something is to be
    // done. A complaint of the peer's fails the test.
    void run(PeerScript steps);
    // Runs the interface thread for so long, whatever happens.
    static void run_for(int milliseconds);
    // Waits for a peer and has this one connect, which then plays the script.
    void serve(PeerScript steps);
    // The peer has gone, and the program is ready for another.
    static void expect_ready();

    Peer peer;
};

// What was added to the protocol since the test began: "> " before what was received, "< " before the rest.
std::vector<std::string> protocol_lines();
int count_lines(const std::string& line);

// Requests of a peer's for five minutes and 75 moves. `colour` is what the program is to play.
std::string request_from_start(char colour);
std::string request_of_position(char colour, const std::string& fen);

extern const std::string ACCEPTED;  // what the program answers
