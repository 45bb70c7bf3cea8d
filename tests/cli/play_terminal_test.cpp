// The game on a terminal, where a user types while the engine thinks.
#include <gtest/gtest.h>

#include "tests/cli/program.h"
#include "tests/cli/terminal.h"

namespace {

struct PlayTerminal : testing::Test {
    TemporaryFolder folder;
    Terminal terminal;

    std::string play(const std::string& options) const {
        return "play --quiet --hash 4 --book off " + options + " <" + terminal.path + " >" + terminal.path +
               " 2>" + terminal.path;
    }
    // Types a line behind the next prompt.
    void type(const std::string& line) {
        ASSERT_TRUE(terminal.wait_for("> "));
        terminal.type(line);
    }
};

TEST_F(PlayTerminal, LinesAreNotHeldBackWhileTheEngineThinks) {
    RunningProgram program(play("--time 1000"), folder.path);
    type("32-28");
    for (const auto& [line, complaint] : {std::pair{"31-27", "tessarin-cli: you cannot move now\r\n"},
                                          {"go", "tessarin-cli: the engine is searching\r\n"},
                                          {"hint", "tessarin-cli: the engine is searching\r\n"},
                                          {"fen", "B:W28,31,33,"}}) {
        type(line);
        EXPECT_TRUE(terminal.wait_for(complaint)) << line;
    }
    type("quit");
    EXPECT_EQ(wait_for_child(program.child), 0) << "what a user mistypes is no failure";
}

TEST_F(PlayTerminal, TellsWhatTheEngineThinks) {
    RunningProgram program(play("--time 1000"), folder.path);
    type("32-28");
    EXPECT_TRUE(terminal.wait_for("\r\x1b[Kvalue")) << "as it goes on, without a line of its own";
    terminal.type("stop");
    EXPECT_TRUE(terminal.wait_for("engine "));
    type("quit");
    EXPECT_EQ(wait_for_child(program.child), 0);
}

}  // namespace
