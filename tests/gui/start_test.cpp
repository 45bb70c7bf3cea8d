// The desktop program as a process of its own: how it starts, and how it ends where it cannot.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "tests/base/run_command.h"
#include "tests/base/scratch_folder.h"

namespace {

class Start : public testing::Test {
  protected:
    void SetUp() override {
        environment.set("HOME", home.path);
        environment.set("XDG_DATA_HOME", home.file("data"));
        environment.set("XDG_CONFIG_HOME", home.file("config"));
        // Other tests run the program at the same time; here it is the first copy.
        std::filesystem::create_directories(home.file("run"));
        std::filesystem::permissions(home.file("run"), std::filesystem::perms::owner_all);
        environment.set("XDG_RUNTIME_DIR", home.file("run"));
        for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.set(name, std::nullopt);
    }
    std::string log() const { return home.file("data/Quillorn/Tessarin International/Tessarin.log"); }

    // Runs the command of the program until it has headed its log, for a minute at most, and ends it from
    // outside: 137 if it ran until then.
    CommandResult run_until_started(const std::string& command) const {
        return run_command(command + " & program=$!; for i in $(seq 600); do grep -q '^MTC directory' " +
                           quoted(log()) +
                           " 2>/dev/null && break; sleep 0.1; done; kill -KILL $program; wait $program");
    }

    ScratchFolder home;
    ScratchEnvironment environment;
};

}  // namespace

TEST_F(Start, WithoutADisplayItSaysSo) {
    const CommandResult result = run_command(quoted(PROGRAM));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.output,
        "tessarin: there is no display to open a window on: neither DISPLAY nor WAYLAND_DISPLAY is set\n");
    EXPECT_FALSE(std::filesystem::exists(home.file("data")));
}

TEST_F(Start, ADisplayThatIsNotThereIsNamed) {
    environment.set("DISPLAY", ":987");
    const CommandResult result = run_command(quoted(PROGRAM));
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.output.starts_with("tessarin: there is no display to open a window on: "));
    EXPECT_NE(result.output.find(":987"), std::string::npos) << result.output;
}

TEST_F(Start, AnUnknownPlatformIsNamed) {
    environment.set("QT_QPA_PLATFORM", "nosuchplatform");
    const CommandResult result = run_command(quoted(PROGRAM));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("nosuchplatform"), std::string::npos) << result.output;
}

TEST_F(Start, RunsWithTheDataFilesBesideIt) {
    environment.set("QT_QPA_PLATFORM", "offscreen");
    const CommandResult result = run_until_started(quoted(PROGRAM));
    EXPECT_EQ(result.status, 137) << result.output;
    const std::string text = content_of(log());
    EXPECT_NE(text.find("engine: Tessarin International(x64) 1.60b\n"), std::string::npos) << text;
    EXPECT_NE(text.find("search threads: 1\n"), std::string::npos);
}

TEST_F(Start, RunsWithoutAnyOtherFileButTheWeights) {
    environment.set("QT_QPA_PLATFORM", "offscreen");
    const std::string folder = home.file("all alone/");
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(PROGRAM, folder + "tessarin");
    std::filesystem::copy_file(std::filesystem::path(PROGRAM).parent_path() / "weights.bin",
                               folder + "weights.bin");
    const CommandResult result = run_until_started(quoted(folder + "tessarin"));
    EXPECT_EQ(result.status, 137) << result.output;
    EXPECT_NE(content_of(log()).find("engine: "), std::string::npos);
}

// The option of the platform that begins with the same letters is not ours.
TEST_F(Start, OptionsOfTheToolkitAreItsOwn) {
    const CommandResult result = run_until_started(quoted(PROGRAM) + " -platform offscreen -style Fusion");
    EXPECT_EQ(result.status, 137) << result.output;
}
