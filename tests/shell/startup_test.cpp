#include "shell/startup.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/log.h"
#include "base/paths.h"
#include "base/program_paths.h"
#include "base/system_info.h"
#include "control/apply_settings.h"
#include "control/program_flags.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "search/threads.h"
#include "shell/settings_store.h"
#include "tests/base/scratch_folder.h"
#include "tests/control/settings_images.h"

namespace {

constexpr const char* BELOW = "Quillorn/Tessarin International/";

// A user with a home of his own.
class Startup : public testing::Test {
  protected:
    void SetUp() override {
        start_folder = std::filesystem::current_path();
        environment.set("HOME", home.path);
        environment.set("XDG_DATA_HOME", home.file("data"));
        environment.set("XDG_CONFIG_HOME", home.file("config"));
        environment.set("XDG_RUNTIME_DIR", home.path);
        engine_settings = EngineSettings{};
        engine_settings.hash_size_mb = 1;
    }
    void TearDown() override {
        reset_startup();
        engine_settings = EngineSettings{};
        transposition_table = TranspositionTable{};
        settings = Settings{};
        settings2 = Settings2{};
        std::filesystem::current_path(start_folder);
    }
    std::string data_folder() const { return home.file("data/") + BELOW; }
    std::string settings_folder() const { return home.file("config/") + BELOW; }
    void save_images(const std::string& image, const std::string& image2) const {
        std::filesystem::create_directories(settings_folder());
        write_content(settings_folder() + "settings", image);
        write_content(settings_folder() + "settings2", image2);
    }
    // As another copy of the program would do it. It holds its number until it is killed.
    void start_other_copy() {
        std::array<int, 2> ready;
        ASSERT_EQ(pipe(ready.data()), 0);
        other_copy = fork();
        if (other_copy == 0) {
            begin_startup({});
            const char byte = static_cast<char>(program_paths.instance_number);
            if (write(ready[1], &byte, 1) == 1) pause();
            _exit(1);
        }
        char byte = -1;
        ASSERT_EQ(read(ready[0], &byte, 1), 1);
        EXPECT_EQ(byte, 0);
        close(ready[0]);
        close(ready[1]);
    }
    void end_other_copy() const {
        kill(other_copy, SIGKILL);
        waitpid(other_copy, nullptr, 0);
    }

    ScratchFolder home;
    ScratchEnvironment environment;
    std::filesystem::path start_folder;
    pid_t other_copy = -1;
};

int lines_of(const std::string& text) { return static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

}  // namespace

TEST_F(Startup, NamesOfTheFirstCopy) {
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 0);
    EXPECT_EQ(program_paths.data_folder, data_folder());
    EXPECT_EQ(program_paths.settings_folder, settings_folder());
    EXPECT_EQ(program_paths.program_file, executable_file());
    EXPECT_TRUE(std::filesystem::is_regular_file(program_paths.program_file));
    EXPECT_EQ(log_path, data_folder() + "Tessarin.log");
    EXPECT_EQ(program_paths.egdb_log_path, data_folder() + "egdb.log");
    EXPECT_EQ(program_paths.window_title, "Tessarin International(x64) 1.60b");
    EXPECT_EQ(program_paths.short_name, "Tessarin 1.60b");
    EXPECT_TRUE(std::filesystem::is_directory(data_folder()));
    EXPECT_FALSE(std::filesystem::exists(home.file("config")));  // only a save makes it
    EXPECT_TRUE(std::filesystem::exists(data_folder() + "Tessarin International_sem0"));
}

TEST_F(Startup, ASecondCopyHasItsNumberInAllNames) {
    start_other_copy();
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 1);
    EXPECT_EQ(program_paths.instance_suffix, "[1]");
    EXPECT_EQ(log_path, data_folder() + "Tessarin[1].log");
    EXPECT_EQ(program_paths.egdb_log_path, data_folder() + "egdb[1].log");
    EXPECT_EQ(program_paths.window_title, "Tessarin International(x64)[1] 1.60b");
    EXPECT_EQ(program_paths.short_name, "Tessarin[1] 1.60b");
    end_other_copy();
    begin_startup({});  // gives number 1 up first
    EXPECT_EQ(program_paths.instance_number, 0);
}

TEST_F(Startup, TheLogIsEmptiedForItsOwnNumberOnly) {
    std::filesystem::create_directories(data_folder());
    const std::string log0 = data_folder() + "Tessarin.log", log1 = data_folder() + "Tessarin[1].log";
    write_content(log0, "of copy 0\n");
    write_content(log1, "of an earlier copy 1\n");
    start_other_copy();
    begin_startup({});
    EXPECT_EQ(content_of(log1), "of an earlier copy 1\n");  // not before the engine starts
    ASSERT_EQ(finish_startup(), ENGINE_STARTED);
    EXPECT_EQ(content_of(log0), "of copy 0\n");
    EXPECT_EQ(lines_of(content_of(log1)), 23);
    EXPECT_NE(content_of(log1).find("\nengine: Tessarin International(x64)[1] 1.60b\n"), std::string::npos);
    end_other_copy();
    begin_startup({});
    ASSERT_EQ(finish_startup(), ENGINE_STARTED);
    EXPECT_EQ(lines_of(content_of(log0)), 23);
    EXPECT_EQ(content_of(log0).find("of copy 0"), std::string::npos);
}

TEST_F(Startup, SavedSettingsReachTheEngineAndTheLog) {
    save_images(default_image().put32(56, 2).put32(120, 4).put32(52, 1).sealed(), default_image2().sealed());
    begin_startup({});
    ASSERT_EQ(finish_startup(), ENGINE_STARTED);
    EXPECT_FALSE(settings_were_reset);
    EXPECT_EQ(engine_settings.search_threads, 2);
    EXPECT_EQ(engine_settings.book_mode, 1);
    EXPECT_EQ(transposition_table.size_mb, 4);
    EXPECT_EQ(created_threads(), std::min(processor_count(), MAX_SEARCH_THREADS));
    const std::string log = content_of(log_path);
    EXPECT_NE(log.find("\nsearch threads: 2\n"), std::string::npos);
    EXPECT_NE(log.find("\nhashtable size: 4\n"), std::string::npos);
    EXPECT_NE(log.find("\nprogram data path: " + data_folder() + "\n"), std::string::npos);
}

TEST_F(Startup, WithoutSavedSettingsTheEngineKeepsItsOwn) {
    save_images(default_image().put32(56, 2).put32(120, 4).sealed(), default_image2().put32(8, 9).sealed());
    engine_settings.search_threads = 3;
    engine_settings.hash_size_mb = 2;
    StartupOptions options;
    options.saved_settings = false;
    begin_startup(options);
    ASSERT_EQ(finish_startup(), ENGINE_STARTED);
    EXPECT_EQ(engine_settings.search_threads, 3);
    EXPECT_EQ(engine_settings.book_mode, 0);
    EXPECT_EQ(transposition_table.size_mb, 2);
    EXPECT_EQ(settings.search_threads, 3);
    EXPECT_EQ(settings.hash_mb, 2);
    EXPECT_EQ(settings.time_per_move, 3.0);
    EXPECT_EQ(settings2.match_repeats, 1);
    EXPECT_NE(content_of(log_path).find("\nhashtable size: 2\n"), std::string::npos);
}

TEST_F(Startup, LanguagesComeBeforeTheSettings) {
    static int32_t language_at_loading;
    save_images(default_image().sealed(), default_image2().put32(4, 40126).sealed());
    settings2.language_id = 0;
    StartupOptions options;
    options.load_languages = [] {
        language_at_loading = settings2.language_id;
        settings_hooks.language_loaded = [](int32_t id) { return id == 40126; };
    };
    begin_startup(options);
    settings_hooks = no_settings_hooks();
    EXPECT_EQ(language_at_loading, 0);
    EXPECT_EQ(settings2.language_id, 40126);
}

TEST_F(Startup, AutoconnectIsTheMarkerFile) {
    save_images(default_image().sealed(), default_image2().put8(273, 1).sealed());
    begin_startup({});
    EXPECT_FALSE(program_flags.autoconnect_enabled);
    EXPECT_EQ(settings2.match_incremental, 0);
    write_content(data_folder() + "tessarin.ini", "");
    begin_startup({});
    EXPECT_TRUE(program_flags.autoconnect_enabled);
    EXPECT_EQ(settings2.match_incremental, 1);
}

TEST_F(Startup, ServerModeIsTold) {
    begin_startup({});
    EXPECT_FALSE(program_flags.server_mode);
    StartupOptions options;
    options.server_mode = true;
    begin_startup(options);
    EXPECT_TRUE(program_flags.server_mode);

    const char* const program = "/opt/my-server/tessarin";
    const auto wanted = [&](const char* argument) {
        const char* const arguments[] = {program, "game.pdn", argument};
        return wants_server_mode(3, arguments);
    };
    EXPECT_TRUE(wanted("-s"));
    EXPECT_TRUE(wanted("x-start"));
    EXPECT_FALSE(wanted("-S"));
    EXPECT_FALSE(wanted("s-"));
    EXPECT_FALSE(wanted(""));
    EXPECT_FALSE(wants_server_mode(1, &program));
    EXPECT_FALSE(wants_server_mode(0, nullptr));
}

TEST_F(Startup, NoHome) {
    for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
        environment.set(variable, "");
    begin_startup({});
    EXPECT_EQ(program_paths.data_folder, "");
    EXPECT_EQ(program_paths.settings_folder, "");
    EXPECT_EQ(log_path, "Tessarin" + program_paths.instance_suffix + ".log");
    EXPECT_TRUE(settings_were_reset);
    EXPECT_EQ(save_settings(), 1);
    // The log goes to the current folder, where this one has no weights.
    std::filesystem::current_path(home.path);
    EXPECT_EQ(finish_startup(), ENGINE_NO_WEIGHTS);
    EXPECT_EQ(content_of(home.file(log_path)), "Cannot open weights.bin for reading\n");
}

TEST_F(Startup, ADataFolderThatCannotBeMadeIsNone) {
    write_content(home.file("file"), "");
    environment.set("XDG_DATA_HOME", home.file("file/below"));
    begin_startup({});
    EXPECT_EQ(program_paths.data_folder, "");
    EXPECT_EQ(log_path, "Tessarin.log");
}

// The folder is there, but the log cannot be: its lines are lost and nothing else.
TEST_F(Startup, ALogThatCannotBeWrittenIsLost) {
    std::filesystem::create_directories(data_folder() + "Tessarin.log");
    engine_settings.hash_size_mb = 1;
    StartupOptions options;
    options.saved_settings = false;
    begin_startup(options);
    EXPECT_EQ(finish_startup(), ENGINE_STARTED);
    EXPECT_EQ(entries_of(data_folder()), 2u) << "with the lock of the copy";
}

// Copies that share the data folder do not share its files, whatever session each is of.
TEST_F(Startup, NumbersArePerDataFolder) {
    start_other_copy();
    std::filesystem::create_directory(home.file("other-session"));
    std::filesystem::permissions(home.file("other-session"), std::filesystem::perms::owner_all);
    environment.set("XDG_RUNTIME_DIR", home.file("other-session"));
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 1);
    reset_startup();
    environment.set("XDG_DATA_HOME", home.file("other-data"));
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 0);
    end_other_copy();
}

// Where the data folder has no locks, those of the session do.
TEST_F(Startup, TheSessionHasLocksToo) {
    std::filesystem::create_directories(data_folder() + "Tessarin International_sem0");
    start_other_copy();
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 1);
    EXPECT_TRUE(startup_state.instance.held());
    end_other_copy();
}

TEST_F(Startup, NoLocksIsTheFirstCopy) {
    std::filesystem::create_directories(data_folder() + "Tessarin International_sem0");
    std::filesystem::create_directory(home.file("Tessarin International_sem0"));
    begin_startup({});
    EXPECT_EQ(program_paths.instance_number, 0);
    EXPECT_EQ(program_paths.instance_suffix, "");
    EXPECT_FALSE(startup_state.instance.held());
}

TEST_F(Startup, ResetForgetsAll) {
    begin_startup({});
    EXPECT_TRUE(startup_state.instance.held());
    reset_startup();
    EXPECT_FALSE(startup_state.instance.held());
    EXPECT_EQ(log_path, "");
    EXPECT_EQ(program_paths.window_title, "");
    EXPECT_FALSE(program_flags.server_mode);
}
