#include "control/settings.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/checksum.h"

Settings settings;
Settings2 settings2;

namespace {

static_assert(std::endian::native == std::endian::little, "the files are little-endian");
static_assert(sizeof(float) == 4 && sizeof(double) == 8);

// The files are images of the records.
static_assert(sizeof(WindowRecord) == 20);
static_assert(sizeof(Settings) == 832);
static_assert(offsetof(Settings, checksum) == 0);
static_assert(offsetof(Settings, use_game_clock) == 4);
static_assert(offsetof(Settings, time_menu_id) == 8);
static_assert(offsetof(Settings, time_per_move) == 16);
static_assert(offsetof(Settings, clock_minutes) == 24);
static_assert(offsetof(Settings, clock_moves_limit) == 32);
static_assert(offsetof(Settings, operator_time) == 36);
static_assert(offsetof(Settings, board_inverted) == 40);
static_assert(offsetof(Settings, save_on_exit) == 44);
static_assert(offsetof(Settings, square_numbers) == 45);
static_assert(offsetof(Settings, match_opening_kind) == 46);
static_assert(offsetof(Settings, square_size) == 48);
static_assert(offsetof(Settings, book_mode) == 52);
static_assert(offsetof(Settings, search_threads) == 56);
static_assert(offsetof(Settings, pondering_on) == 60);
static_assert(offsetof(Settings, sound_on) == 64);
static_assert(offsetof(Settings, dxp_host) == 68);
static_assert(offsetof(Settings, hash_mb) == 120);
static_assert(offsetof(Settings, wld_enable) == 124);
static_assert(offsetof(Settings, wld_parallel_init) == 128);
static_assert(offsetof(Settings, wld_max_pieces) == 132);
static_assert(offsetof(Settings, wld_max_kings_8) == 136);
static_assert(offsetof(Settings, wld_cache_mb) == 140);
static_assert(offsetof(Settings, wld_folder) == 144);
static_assert(offsetof(Settings, mtc_enable) == 404);
static_assert(offsetof(Settings, mtc_folder) == 408);
static_assert(offsetof(Settings, main_window) == 668);
static_assert(offsetof(Settings, child_windows) == 688);
static_assert(offsetof(Settings, font_name) == 788);
static_assert(offsetof(Settings, font_size) == 820);
static_assert(offsetof(Settings, font_bold) == 824);
static_assert(offsetof(Settings, font_italic) == 825);
static_assert(offsetof(Settings, background_kind) == 828);

static_assert(sizeof(Settings2) == 296);
static_assert(offsetof(Settings2, checksum) == 0);
static_assert(offsetof(Settings2, language_id) == 4);
static_assert(offsetof(Settings2, match_repeats) == 8);
static_assert(offsetof(Settings2, match_ballot_file) == 12);
static_assert(offsetof(Settings2, increment_mode) == 272);
static_assert(offsetof(Settings2, match_incremental) == 273);
static_assert(offsetof(Settings2, initial_seconds) == 280);
static_assert(offsetof(Settings2, increment_seconds) == 288);

// The cache of the databases takes what a machine of that memory leaves.
struct MemoryRow {
    int64_t from_mb;
    int32_t hash_mb;
    int32_t others_mb;  // not for the cache
    int32_t least_cache_mb;
};
constexpr MemoryRow MEMORY_ROWS[] = {
    {8001, 256, 2356, 0}, {6001, 256, 2056, 0}, {4001, 128, 1428, 0},     {2001, 128, 828, 0},
    {700, 64, 614, 0},    {250, 32, 332, 32},   {INT64_MIN, 32, 182, 32},
};

void set_sizes_by_memory(Settings& record, int64_t memory_mb) {
    memory_mb = std::clamp<int64_t>(memory_mb, 0, INT32_MAX);
    const MemoryRow& row = *std::find_if(std::begin(MEMORY_ROWS), std::end(MEMORY_ROWS),
                                         [&](const MemoryRow& r) { return memory_mb >= r.from_mb; });
    record.hash_mb = row.hash_mb;
    record.wld_cache_mb =
        static_cast<int32_t>(std::max<int64_t>(memory_mb - row.others_mb, row.least_cache_mb));
}

// A folder that does not fit is as good as none: a shorter path would be another folder.
template <size_t N>
bool store_folder(char (&field)[N], const std::string& folder) {
    const bool fits = folder.size() < N;
    store_setting_text(field, fits ? std::string_view(folder) : std::string_view());
    return fits;
}

template <typename Record>
uint32_t record_checksum(const Record& record) {
    std::array<unsigned char, sizeof(Record)> image;
    std::memcpy(image.data(), &record, sizeof record);
    constexpr uint32_t SIZE = sizeof(Record);
    std::memcpy(image.data(), &SIZE, sizeof SIZE);
    return crc32(image.data(), image.size());
}

}  // namespace

Settings make_default_settings(const SettingsSurroundings& surroundings) {
    Settings record{};
    record.time_menu_id = 40008;  // "3 sec/move"
    record.time_per_move = 3.0;
    record.clock_minutes = 7.0;
    record.clock_moves_limit = 90;
    record.save_on_exit = 1;
    record.square_numbers = 1;
    record.book_mode = 3;
    record.search_threads = 1;
    store_setting_text(record.dxp_host, "127.0.0.1");
    record.wld_parallel_init = 1;
    record.wld_max_pieces = -1;
    record.wld_max_kings_8 = -1;
    if (surroundings.wld_folder_exists &&
        store_folder(record.wld_folder, surroundings.program_folder + WLD_DEFAULT_FOLDER))
        record.wld_enable = 1;
    if (surroundings.mtc_folder_exists)
        store_folder(record.mtc_folder, surroundings.program_folder + MTC_DEFAULT_FOLDER);
    set_sizes_by_memory(record, surroundings.memory_mb);
    reset_window_settings(record);
    return record;
}

Settings2 make_default_settings2() {
    Settings2 record{};
    record.language_id = ENGLISH_ID;
    record.match_repeats = 1;
    record.initial_seconds = 1.0;
    record.increment_seconds = 0.1;
    return record;
}

void reset_window_settings(Settings& record) {
    record.square_size = 44;
    record.background_kind = 1;
    store_setting_text(record.font_name, "MS Shell Dlg");
    record.font_size = 9.0f;
    record.font_bold = 0;
    record.font_italic = 0;
    record.main_window = {1, DEFAULT_PLACE, DEFAULT_PLACE, 622, 552};
    record.child_windows[CLOCK_WINDOW] = {0, 1, 1, 150, 70};
    record.child_windows[GAME_WINDOW] = {1, 1, 1, 150, 368};
    record.child_windows[STATUS_WINDOW] = {1, 1, 1, 150, 73};
    record.child_windows[PONDER_WINDOW] = {0, 1, 1, 446, 95};
    record.child_windows[DXP_WINDOW] = {0, 1, 1, 446, 128};
}

uint32_t settings_checksum(const Settings& record) { return record_checksum(record); }

uint32_t settings_checksum(const Settings2& record) { return record_checksum(record); }

double setting_number(double stored, double low, double high) {
    return stored >= low ? std::min(stored, high) : low;
}

int32_t setting_number(int32_t stored, int32_t low, int32_t high) { return std::clamp(stored, low, high); }
