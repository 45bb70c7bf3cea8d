#include "control/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/control/settings_images.h"

namespace {

template <typename Record>
Record record_of(const std::string& bytes) {
    Record record{};
    EXPECT_EQ(bytes.size(), sizeof record);
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

SettingsSurroundings machine(int64_t memory_mb) {
    SettingsSurroundings surroundings;
    surroundings.memory_mb = memory_mb;
    surroundings.program_folder = "/opt/t/";
    return surroundings;
}

}  // namespace

TEST(SettingsRecord, EveryFieldIsAtItsOffset) {
    const Settings s = record_of<Settings>(full_image().bytes);
    EXPECT_EQ(s.use_game_clock, 11);
    EXPECT_EQ(s.time_menu_id, -12);
    EXPECT_EQ(s.time_per_move, 14.5);
    EXPECT_EQ(s.clock_minutes, -15.25);
    EXPECT_EQ(s.clock_moves_limit, 16);
    EXPECT_EQ(s.operator_time, 17);
    EXPECT_EQ(s.board_inverted, 18);
    EXPECT_EQ(s.save_on_exit, 19);
    EXPECT_EQ(s.square_numbers, 20);
    EXPECT_EQ(s.match_opening_kind, 21);
    EXPECT_EQ(s.square_size, 23);
    EXPECT_EQ(s.book_mode, 24);
    EXPECT_EQ(s.search_threads, 25);
    EXPECT_EQ(s.pondering_on, 26);
    EXPECT_EQ(s.sound_on, 27);
    EXPECT_EQ(setting_text(s.dxp_host), "host.example");
    EXPECT_EQ(s.hash_mb, 28);
    EXPECT_EQ(s.wld_enable, 29);
    EXPECT_EQ(s.wld_parallel_init, 30);
    EXPECT_EQ(s.wld_max_pieces, 31);
    EXPECT_EQ(s.wld_max_kings_8, 32);
    EXPECT_EQ(s.wld_cache_mb, 33);
    EXPECT_EQ(setting_text(s.wld_folder), "/wld/folder/");
    EXPECT_EQ(s.mtc_enable, 34);
    EXPECT_EQ(setting_text(s.mtc_folder), "/mtc/folder/");
    EXPECT_EQ(s.main_window, (WindowRecord{35, 36, 37, 38, 39}));
    EXPECT_EQ(s.child_windows[CLOCK_WINDOW], (WindowRecord{100, 101, 102, 103, 104}));
    EXPECT_EQ(s.child_windows[GAME_WINDOW], (WindowRecord{200, 201, 202, 203, 204}));
    EXPECT_EQ(s.child_windows[STATUS_WINDOW], (WindowRecord{300, 301, 302, 303, 304}));
    EXPECT_EQ(s.child_windows[PONDER_WINDOW], (WindowRecord{400, 401, 402, 403, 404}));
    EXPECT_EQ(s.child_windows[DXP_WINDOW], (WindowRecord{500, 501, 502, 503, 504}));
    EXPECT_EQ(setting_text(s.font_name), "A Font");
    EXPECT_EQ(s.font_size, 40.5f);
    EXPECT_EQ(s.font_bold, 41);
    EXPECT_EQ(s.font_italic, 42);
    EXPECT_EQ(s.background_kind, 45);
}

TEST(SettingsRecord, EveryFieldOfTheSecondIsAtItsOffset) {
    const Settings2 s = record_of<Settings2>(full_image2().bytes);
    EXPECT_EQ(s.language_id, 51);
    EXPECT_EQ(s.match_repeats, 52);
    EXPECT_EQ(setting_text(s.match_ballot_file), "/some/ballots.txt");
    EXPECT_EQ(s.increment_mode, 53);
    EXPECT_EQ(s.match_incremental, 54);
    EXPECT_EQ(s.initial_seconds, 55.5);
    EXPECT_EQ(s.increment_seconds, 56.25);
}

TEST(SettingsRecord, Defaults) {
    EXPECT_EQ(image_of(make_default_settings(machine(16000))), default_image().bytes);
    EXPECT_EQ(image_of(make_default_settings2()), default_image2().bytes);
}

TEST(SettingsRecord, DefaultFolders) {
    SettingsSurroundings surroundings = machine(16000);
    surroundings.wld_folder_exists = true;
    EXPECT_EQ(image_of(make_default_settings(surroundings)),
              default_image().put32(124, 1).put_text(144, "/opt/t/wld_database").bytes);
    surroundings.mtc_folder_exists = true;
    surroundings.wld_folder_exists = false;
    EXPECT_EQ(image_of(make_default_settings(surroundings)),
              default_image().put_text(408, "/opt/t/mtc_database").bytes);
}

TEST(SettingsRecord, AFolderThatDoesNotFitIsNone) {
    SettingsSurroundings surroundings = machine(16000);
    surroundings.wld_folder_exists = true;
    surroundings.mtc_folder_exists = true;
    surroundings.program_folder = "/" + std::string(246, 'x');  // 247 and 12 characters fit with the NUL
    Settings fits = make_default_settings(surroundings);
    EXPECT_EQ(setting_text(fits.wld_folder), surroundings.program_folder + "wld_database");
    EXPECT_EQ(setting_text(fits.mtc_folder), surroundings.program_folder + "mtc_database");
    EXPECT_EQ(fits.wld_enable, 1);
    surroundings.program_folder += "x";
    const Settings none = make_default_settings(surroundings);
    EXPECT_EQ(setting_text(none.wld_folder), "");
    EXPECT_EQ(setting_text(none.mtc_folder), "");
    EXPECT_EQ(none.wld_enable, 0);
}

TEST(SettingsRecord, SizesByMemory) {
    struct Row {
        int64_t memory_mb;
        int32_t hash_mb, cache_mb;
    };
    for (const Row& row : {Row{1000000, 256, 997644},
                           {8001, 256, 5645},
                           {8000, 256, 5944},
                           {6001, 256, 3945},
                           {6000, 128, 4572},
                           {4001, 128, 2573},
                           {4000, 128, 3172},
                           {2001, 128, 1173},
                           {2000, 64, 1386},
                           {700, 64, 86},
                           {699, 32, 367},
                           {365, 32, 33},
                           {364, 32, 32},
                           {363, 32, 32},
                           {250, 32, 32},
                           {249, 32, 67},
                           {215, 32, 33},
                           {214, 32, 32},
                           {100, 32, 32},
                           {0, 32, 32},
                           {-5, 32, 32},
                           {INT64_MIN, 32, 32},
                           {INT64_MAX, 256, INT32_MAX - 2356}}) {
        const Settings record = make_default_settings(machine(row.memory_mb));
        EXPECT_EQ(record.hash_mb, row.hash_mb) << row.memory_mb;
        EXPECT_EQ(record.wld_cache_mb, row.cache_mb) << row.memory_mb;
    }
}

TEST(SettingsRecord, Checksums) {
    for (const Image& image : {default_image(), full_image(), Image(SETTINGS_BYTES)}) {
        Settings record = record_of<Settings>(image.sealed());
        EXPECT_EQ(record.checksum, settings_checksum(record));
        // What stands in the first word does not matter.
        const uint32_t right = record.checksum;
        record.checksum = 12345;
        EXPECT_EQ(settings_checksum(record), right);
    }
    for (const Image& image : {default_image2(), full_image2(), Image(SETTINGS2_BYTES)}) {
        const Settings2 record = record_of<Settings2>(image.sealed());
        EXPECT_EQ(record.checksum, settings_checksum(record));
    }
}

TEST(SettingsRecord, ResetWindowsLeavesTheRest) {
    Settings record = record_of<Settings>(full_image().bytes);
    reset_window_settings(record);
    const std::string defaults = default_image().bytes;
    Image expected = full_image();
    expected.put32(48, 44).put32(828, 1).put8(824, 0).put8(825, 0);
    expected.bytes.replace(668, 156, defaults, 668, 156);  // windows, font name and size
    EXPECT_EQ(image_of(record), expected.bytes);
}

TEST(SettingTexts, EndAtTheNulOrAtTheField) {
    char field[6] = {'a', 'b', '\0', 'd', 'e', 'f'};
    EXPECT_EQ(setting_text(field), "ab");
    std::memcpy(field, "abcdef", 6);
    EXPECT_EQ(setting_text(field), "abcdef");
    std::memset(field, 0, 6);
    EXPECT_EQ(setting_text(field), "");
}

TEST(SettingTexts, AreStoredCutAndPadded) {
    char field[6];
    std::memset(field, '#', 6);
    store_setting_text(field, "ab");
    EXPECT_EQ(std::memcmp(field, "ab\0\0\0", 6), 0);
    store_setting_text(field, "abcdefgh");
    EXPECT_EQ(std::memcmp(field, "abcde", 6), 0);
    store_setting_text(field, "abcd\u00E9");
    EXPECT_EQ(std::memcmp(field, "abcd\0", 6), 0) << "no half of a character";
    store_setting_text(field, "");
    EXPECT_EQ(std::memcmp(field, "\0\0\0\0\0", 6), 0);
}

TEST(SettingNumbers, AreBroughtIntoTheRange) {
    EXPECT_EQ(setting_number(5, 1, 8), 5);
    EXPECT_EQ(setting_number(INT32_MIN, 1, 8), 1);
    EXPECT_EQ(setting_number(INT32_MAX, 1, 8), 8);
    EXPECT_EQ(setting_number(2.5, 0.0, 10.0), 2.5);
    EXPECT_EQ(setting_number(-1.0, 0.0, 10.0), 0.0);
    EXPECT_EQ(setting_number(1e300, 0.0, 10.0), 10.0);
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    EXPECT_EQ(setting_number(INFINITE, 0.0, 10.0), 10.0);
    EXPECT_EQ(setting_number(-INFINITE, 0.0, 10.0), 0.0);
    EXPECT_EQ(setting_number(std::nan(""), 0.0, 10.0), 0.0);
    EXPECT_EQ(setting_number(-std::nan(""), 2.0, 10.0), 2.0);
}
