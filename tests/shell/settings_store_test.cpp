#include "shell/settings_store.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "base/system_info.h"
#include "control/apply_settings.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tests/control/settings_images.h"
#include "tests/shell/settings_folder.h"

namespace {

// The defaults on this machine.
std::string defaults_here(const SettingsFolder& folder) {
    SettingsSurroundings surroundings;
    surroundings.memory_mb = memory_figures().total_physical >> 20;
    surroundings.program_folder = folder.scratch.path;
    return image_of(make_default_settings(surroundings));
}

std::string defaults2() { return image_of(make_default_settings2()); }

bool every_language(int32_t) { return true; }

}  // namespace

TEST(LoadSettings, TheFirstRunHasNoFiles) {
    const SettingsFolder folder;
    settings2.match_repeats = 5;
    load_settings();
    EXPECT_EQ(image_of(settings), defaults_here(folder));
    EXPECT_EQ(image_of(settings2), std::string(SETTINGS2_BYTES, '\0'));
    EXPECT_TRUE(settings_were_reset);
    EXPECT_FALSE(std::filesystem::exists(program_paths.settings_folder));
}

// Without the first file the second is not even read.
TEST(LoadSettings, WithoutTheFirstFileTheSecondStaysZero) {
    const SettingsFolder folder;
    folder.write("", full_image2().sealed());
    std::filesystem::remove(folder.file());
    load_settings();
    EXPECT_EQ(image_of(settings), defaults_here(folder));
    EXPECT_EQ(image_of(settings2), std::string(SETTINGS2_BYTES, '\0'));
    std::filesystem::create_directory(folder.file());  // cannot be read either
    load_settings();
    EXPECT_EQ(image_of(settings), defaults_here(folder));
    EXPECT_EQ(image_of(settings2), std::string(SETTINGS2_BYTES, '\0'));
}

TEST(LoadSettings, WholeFilesAreUsedAsTheyStand) {
    const SettingsFolder folder;
    settings_hooks.language_loaded = every_language;
    for (const bool ones : {false, true}) {
        Image image = full_image(), image2 = full_image2();
        if (ones) {
            image.bytes.assign(SETTINGS_BYTES, '\xff');
            image2.bytes.assign(SETTINGS2_BYTES, '\xff');
        }
        folder.write(image.sealed(), image2.sealed());
        load_settings();
        EXPECT_EQ(image_of(settings), image.sealed());
        EXPECT_EQ(image_of(settings2), image2.sealed());
        EXPECT_FALSE(settings_were_reset);
    }
}

TEST(LoadSettings, AFlippedBitAnywhereGivesTheDefaultsOfThatRecordOnly) {
    const SettingsFolder folder;
    settings_hooks.language_loaded = every_language;
    const std::string whole = full_image().sealed(), whole2 = full_image2().sealed();
    const std::string defaults = defaults_here(folder);
    std::mt19937 random(4);
    folder.write(whole, whole2);
    for (size_t i = 0; i < SETTINGS_BYTES; ++i) {
        std::string damaged = whole;
        damaged[i] = static_cast<char>(damaged[i] ^ (1 << random() % 8));
        write_content(folder.file(), damaged);
        load_settings();
        ASSERT_EQ(image_of(settings), defaults) << i;
        ASSERT_EQ(image_of(settings2), whole2) << i;
        ASSERT_TRUE(settings_were_reset);
    }
    write_content(folder.file(), whole);
    for (size_t i = 0; i < SETTINGS2_BYTES; ++i) {
        std::string damaged = whole2;
        damaged[i] = static_cast<char>(damaged[i] ^ (1 << random() % 8));
        write_content(folder.file2(), damaged);
        load_settings();
        ASSERT_EQ(image_of(settings), whole) << i;
        ASSERT_EQ(image_of(settings2), defaults2()) << i;
        ASSERT_FALSE(settings_were_reset);
    }
}

TEST(LoadSettings, AnotherLengthGivesTheDefaultsOfThatRecordOnly) {
    const SettingsFolder folder;
    settings_hooks.language_loaded = every_language;
    const std::string whole = full_image().sealed(), whole2 = full_image2().sealed();
    const std::string longer = whole + whole, longer2 = whole2 + whole2 + whole2;
    for (const size_t length : {0u, 1u, 3u, 4u, 295u, 296u, 831u, 833u, 900u, 1664u}) {
        folder.write(longer.substr(0, length), whole2);
        load_settings();
        EXPECT_EQ(image_of(settings), defaults_here(folder)) << length;
        EXPECT_EQ(image_of(settings2), whole2) << length;
    }
    for (const size_t length : {0u, 1u, 3u, 4u, 295u, 297u, 592u, 832u}) {
        folder.write(whole, longer2.substr(0, length));
        load_settings();
        EXPECT_EQ(image_of(settings), whole) << length;
        EXPECT_EQ(image_of(settings2), defaults2()) << length;
    }
    // A whole record with zeros behind it is another length too.
    folder.write(whole + std::string(1, '\0'), whole2 + std::string(1, '\0'));
    load_settings();
    EXPECT_EQ(image_of(settings), defaults_here(folder));
    EXPECT_EQ(image_of(settings2), defaults2());
}

TEST(LoadSettings, ZerosAreNoRecord) {
    const SettingsFolder folder;
    folder.write(std::string(SETTINGS_BYTES, '\0'), std::string(SETTINGS2_BYTES, '\0'));
    load_settings();
    EXPECT_EQ(image_of(settings), defaults_here(folder));
    EXPECT_EQ(image_of(settings2), defaults2());
}

TEST(LoadSettings, AMissingSecondFileIsItsDefaults) {
    const SettingsFolder folder;
    folder.write(full_image().sealed(), "");
    std::filesystem::remove(folder.file2());
    load_settings();
    EXPECT_EQ(image_of(settings), full_image().sealed());
    EXPECT_EQ(image_of(settings2), defaults2());
    EXPECT_FALSE(settings_were_reset);
}

TEST(LoadSettings, ALanguageThatIsNotThereBecomesEnglish) {
    const SettingsFolder folder;
    Image dutch = default_image2().put32(4, 40126);
    folder.write(full_image().sealed(), dutch.sealed());
    load_settings();
    EXPECT_EQ(settings2.language_id, ENGLISH_ID);
    settings_hooks.language_loaded = [](int32_t id) { return id == 40126; };
    load_settings();
    EXPECT_EQ(settings2.language_id, 40126);
    folder.write(full_image().sealed(), dutch.put32(4, 40127).sealed());
    load_settings();
    EXPECT_EQ(settings2.language_id, ENGLISH_ID);
}

TEST(DefaultSettings, LookForTheDatabaseFoldersAndForgetTheGame) {
    static int forgotten;
    forgotten = 0;
    const SettingsFolder folder;
    settings_hooks.forget_game_file = [] { ++forgotten; };
    write_content(folder.scratch.file("wld_database"), "a file is no folder");
    default_settings();
    EXPECT_EQ(settings.wld_enable, 0);
    EXPECT_EQ(setting_text(settings.wld_folder), "");
    std::filesystem::remove(folder.scratch.file("wld_database"));
    std::filesystem::create_directory(folder.scratch.file("wld_database"));
    std::filesystem::create_directory(folder.scratch.file("mtc_database"));
    settings_were_reset = false;
    default_settings();
    EXPECT_EQ(settings.wld_enable, 1);
    EXPECT_EQ(setting_text(settings.wld_folder), folder.scratch.file("wld_database"));
    EXPECT_EQ(setting_text(settings.mtc_folder), folder.scratch.file("mtc_database"));
    EXPECT_EQ(settings.mtc_enable, 0);
    EXPECT_TRUE(settings_were_reset);
    EXPECT_EQ(forgotten, 2);
}

TEST(SaveSettings, WritesTheImagesAndReadsThemBack) {
    const SettingsFolder folder;
    settings_hooks.language_loaded = every_language;
    std::memcpy(&settings, full_image().bytes.data(), sizeof settings);
    std::memcpy(&settings2, full_image2().bytes.data(), sizeof settings2);
    ASSERT_EQ(save_settings(), 0);
    EXPECT_EQ(content_of(folder.file()), full_image().sealed());
    EXPECT_EQ(content_of(folder.file2()), full_image2().sealed());
    EXPECT_EQ(entries_of(program_paths.settings_folder), 2u);
    settings = Settings{};
    settings2 = Settings2{};
    load_settings();
    EXPECT_EQ(image_of(settings), full_image().sealed());
    EXPECT_EQ(image_of(settings2), full_image2().sealed());
}

TEST(SaveSettings, TheWindowsAreReadFirst) {
    const SettingsFolder folder;
    default_settings();
    settings_hooks.read_windows = [](Settings& record) { record.main_window = {1, 2, 3, 4, 5}; };
    ASSERT_EQ(save_settings(), 0);
    settings = Settings{};
    load_settings();
    EXPECT_FALSE(settings_were_reset);
    EXPECT_EQ(settings.main_window, (WindowRecord{1, 2, 3, 4, 5}));
}

TEST(SaveSettings, AfterAFirstRunTheSecondRecordIsZeroButWhole) {
    const SettingsFolder folder;
    load_settings();
    ASSERT_EQ(save_settings(), 0);
    load_settings();
    EXPECT_FALSE(settings_were_reset);
    EXPECT_EQ(settings2.match_repeats, 0);
    EXPECT_EQ(settings2.language_id, ENGLISH_ID);
}

TEST(SaveSettings, WithoutASaveNothingChangesOnDisk) {
    const SettingsFolder folder;
    folder.write(full_image().sealed(), full_image2().sealed());
    load_settings();
    settings.sound_on = 99;
    settings2.match_repeats = 99;
    load_settings();
    EXPECT_EQ(settings.sound_on, 27);
    EXPECT_EQ(settings2.match_repeats, 52);
}

TEST(SaveSettings, AFolderThatCannotBeWrittenIsTold) {
    const SettingsFolder folder;
    write_content(folder.scratch.file("file"), "kept");
    for (const std::string& unusable : {std::string(), folder.scratch.file("file/below/")}) {
        program_paths.settings_folder = unusable;
        load_settings();
        EXPECT_TRUE(settings_were_reset);
        settings_were_reset = false;
        EXPECT_EQ(save_settings(), 1);
    }
    EXPECT_EQ(content_of(folder.scratch.file("file")), "kept");
    EXPECT_EQ(entries_of(folder.scratch.path), 1u);
}

// One file that cannot be written does not keep the other from being written.
TEST(SaveSettings, OneFileFails) {
    const SettingsFolder folder;
    std::filesystem::create_directories(folder.file() + "/in the way");
    default_settings();
    settings2 = make_default_settings2();
    EXPECT_EQ(save_settings(), 1);
    EXPECT_EQ(content_of(folder.file2()), default_image2().sealed());
    EXPECT_EQ(entries_of(program_paths.settings_folder), 2u);
}

TEST(ResetSettings, DefaultsReachTheEngine) {
    const SettingsFolder folder;
    engine_settings = EngineSettings{};
    folder.write(full_image().put32(56, 7).put32(52, 1).put32(120, 2).sealed(), full_image2().sealed());
    load_settings();
    ASSERT_EQ(apply_settings(), 0);
    EXPECT_EQ(engine_settings.search_threads, 7);
    EXPECT_EQ(transposition_table.size_mb, 2);
    ASSERT_EQ(reset_settings(), 0);
    EXPECT_TRUE(settings_were_reset);
    EXPECT_EQ(engine_settings.search_threads, 1);
    EXPECT_EQ(engine_settings.book_mode, 3);
    EXPECT_EQ(transposition_table.size_mb, settings.hash_mb);
    EXPECT_EQ(settings2.match_repeats, 52);  // the second record stays
    engine_settings = EngineSettings{};
    transposition_table = TranspositionTable{};
}

// Any record with a fitting checksum is loaded to the byte and can be applied.
TEST(LoadSettings, RandomRecordsAreLoadedAndApplied) {
    const SettingsFolder folder;
    settings_hooks.language_loaded = every_language;
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        Image image(SETTINGS_BYTES), image2(SETTINGS2_BYTES);
        for (char& byte : image.bytes) byte = static_cast<char>(random());
        for (char& byte : image2.bytes) byte = static_cast<char>(random());
        folder.write(image.sealed(), image2.sealed());
        load_settings();
        ASSERT_FALSE(settings_were_reset);
        ASSERT_EQ(image_of(settings), image.sealed());
        ASSERT_EQ(image_of(settings2), image2.sealed());
        apply_search_settings();
    }
    engine_settings = EngineSettings{};
}
