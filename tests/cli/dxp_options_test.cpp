// What the console's engine plays with over the network.
#include <gtest/gtest.h>

#include "tests/base/scratch_folder.h"
#include "tests/cli/program.h"
#include "tests/dxp/scripted_player.h"

namespace {

class CliDxpDatabases : public testing::Test {
  protected:
    // A copy that connects to the peer and has its first move to find in a position of the databases.
    void play_ending(const std::string& arguments) {
        Peer peer;
        ASSERT_EQ(peer_listen(peer, port), port);
        environment.set("XDG_DATA_HOME", folder.path.string());
        RunningProgram program("dxp connect 127.0.0.1 --hash 1 --port " + std::to_string(port) + arguments,
                               folder.path);
        ASSERT_TRUE(peer_accept(peer));
        std::string squares(50, 'e');
        squares[5] = squares[6] = 'W';
        squares[44] = 'Z';
        const std::string request = game_request_text("Peer", 'W', "0.1", "050", "BW" + squares);
        EXPECT_EQ(run_script(peer, {sends(request), hears("ATessarin*"), hears("*"), closes()}), "");
        result = program.finish();
    }
    // What all running copies have logged of databases, there.
    std::string log() const {
        std::string text;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path))
            if (entry.path().extension() == ".log") text += read_text(entry.path());
        return text;
    }

    TemporaryFolder folder;
    ScratchEnvironment environment;
    ProgramResult result;
    int port = free_port();
};

constexpr const char* READ = "autoload db4";

}  // namespace

TEST_F(CliDxpDatabases, TheProgramsOwnAreUsed) {
    play_ending("");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(log().find(READ), std::string::npos) << log();
}

TEST_F(CliDxpDatabases, NoneAreUsedIfTheUserWantsNone) {
    play_ending(" --no-egdb");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(log().find(READ), std::string::npos) << log();
}

TEST_F(CliDxpDatabases, AFolderIsTakenFromWhereTheUserIs) {
    std::filesystem::copy(PROJECT_FOLDER "/data/wld_database", folder.path / "mine");
    play_ending(" --egdb mine --egdb-cache 0");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(log().find((folder.path / "mine").string()), std::string::npos) << log();
}

TEST_F(CliDxpDatabases, AFolderWithoutADatabaseIsTold) {
    for (const char* const command : {"listen", "connect 127.0.0.1", "match 127.0.0.1"}) {
        result = run_program("dxp " + std::string(command) + " --egdb .", "", folder.path);
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_NE(result.errors.find("no win/loss/draw database in "), std::string::npos) << result.errors;
    }
    EXPECT_EQ(run_program("dxp listen --no-egdb --egdb x").status, 2);
}
