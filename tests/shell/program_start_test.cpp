// The console program as it comes up: its log, its folders, and what it leaves alone.
#include <gtest/gtest.h>

#include <memory>

#include "tests/base/run_command.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/settings_images.h"

namespace {

constexpr const char* BELOW = "Quillorn/Tessarin International/";
constexpr const char* SEARCH = " search W:W31,32,K46:B1,K2 --depth 3";

CommandResult run(const std::string& command, const std::string& folder) {
    return run_command("cd " + quoted(folder) + " && " + command);
}

class ProgramStart : public testing::Test {
  protected:
    void SetUp() override {
        environment.set("HOME", home.path);
        environment.set("XDG_DATA_HOME", home.file("data"));
        environment.set("XDG_CONFIG_HOME", home.file("config"));
        environment.set("XDG_RUNTIME_DIR", home.path);
    }
    std::string log() const { return home.file("data/") + BELOW + "Tessarin.log"; }

    ScratchFolder home;
    ScratchEnvironment environment;
};

}  // namespace

TEST_F(ProgramStart, TheLogIsInTheDataFolderAndNew) {
    ASSERT_EQ(run(quoted(PROGRAM) + SEARCH, home.path).status, 0);
    const std::string first = content_of(log());
    EXPECT_NE(first.find("engine: Tessarin International(x64) 1.60b\n"), std::string::npos);
    EXPECT_NE(first.find("best "), std::string::npos);
    ASSERT_EQ(run(quoted(PROGRAM) + SEARCH, home.path).status, 0);
    const std::string second = content_of(log());
    EXPECT_EQ(second.find("engine: "), second.rfind("engine: "));  // emptied before
    EXPECT_FALSE(std::filesystem::exists(home.file("config")));
}

TEST_F(ProgramStart, PerftStartsNothing) {
    const CommandResult result = run(quoted(PROGRAM) + " perft 2", home.path);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("perft(2) 81 nodes"), std::string::npos);
    EXPECT_EQ(entries_of(home.path), 0u);
}

TEST_F(ProgramStart, RunsWhereNothingCanBeWritten) {
    const CommandResult normal = run(quoted(PROGRAM) + SEARCH, home.path);
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
        environment.set(variable, "/dev/null/nowhere");
    const CommandResult result = run(quoted(PROGRAM) + SEARCH, home.path);
    EXPECT_EQ(result.status, 0);
    const auto last = [](const std::string& text) { return text.substr(text.rfind("best ")); };
    EXPECT_EQ(last(result.output), last(normal.output));
}

// A command gives the same answer for everybody.
TEST_F(ProgramStart, SavedSettingsPlayNoPart) {
    const std::string command = quoted(PROGRAM) + " search W:W31-50:B1-20 --depth 9";
    const std::string before = run(command, home.path).output;
    std::filesystem::create_directories(home.file("config/") + BELOW);
    write_content(home.file("config/") + BELOW + "settings",
                  default_image().put32(52, 3).put32(56, 8).put32(120, 1).sealed());
    write_content(home.file("config/") + BELOW + "settings2", default_image2().sealed());
    const std::string after = run(command, home.path).output;
    EXPECT_NE(before.find("best "), std::string::npos);
    EXPECT_EQ(before.substr(before.rfind("best ")), after.substr(after.rfind("best ")));
    EXPECT_NE(content_of(log()).find("\nhashtable size: 64\n"), std::string::npos);
}

// "Debug" and "Release" in the path keep the current folder, where the weights are looked for. Case counts.
TEST_F(ProgramStart, BuildFoldersKeepTheCurrentFolder) {
    const std::filesystem::path beside = std::filesystem::path(PROGRAM).parent_path();
    for (const std::string name : {"My Debug's stuff", "Releases", "debug", "release", "plain"}) {
        const bool build_folder = name[0] == 'M' || name[0] == 'R';
        const std::string program = home.file(name) + "/tessarin-cli";
        std::filesystem::create_directory(home.file(name));
        std::filesystem::copy_file(PROGRAM, program);
        const CommandResult away = run(quoted(program) + SEARCH, home.path);
        EXPECT_EQ(away.status, 1) << name;
        const std::string folder = build_folder ? "./" : home.file(name) + "/";
        EXPECT_NE(away.output.find("Cannot open weights.bin for reading in " + folder + "\n"),
                  std::string::npos)
            << away.output;
        EXPECT_EQ(content_of(log()), "Cannot open weights.bin for reading\n");
        const CommandResult at_the_weights = run(quoted(program) + SEARCH, beside.string());
        EXPECT_EQ(at_the_weights.status, build_folder ? 0 : 1) << name;
    }
}
