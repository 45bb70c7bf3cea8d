// The user's settings: two records of fixed layout that are kept as files byte for byte, so every field has
// its place. The interface thread owns them; the engine follows copies of its own, which apply_settings.h
// makes.
//
// A record from a file is used as it stands once its checksum fits: any field can hold anything. Who uses a
// field brings it into the range he can work with; the functions at the end do it for fields with several
// users.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/utf8.h"

constexpr size_t SETTINGS_FOLDER_SIZE = 260;

struct WindowRecord {
    int32_t visible, x, y, width, height;

    bool operator==(const WindowRecord&) const = default;
};

// In the order of the records in `Settings`.
enum ChildWindow { CLOCK_WINDOW, GAME_WINDOW, STATUS_WINDOW, PONDER_WINDOW, DXP_WINDOW, CHILD_WINDOWS };

// An x or y by which the system chooses the place of a window.
constexpr int32_t DEFAULT_PLACE = INT32_MIN;

constexpr int32_t ENGLISH_ID = 40117;  // menu id of the language

struct Settings {
    uint32_t checksum;
    int32_t use_game_clock;
    int32_t time_menu_id;
    int32_t unused_12;
    double time_per_move;  // seconds
    double clock_minutes;
    int32_t clock_moves_limit;
    int32_t operator_time;  // seconds
    int32_t board_inverted;
    uint8_t save_on_exit;
    uint8_t square_numbers;
    uint8_t match_opening_kind;
    uint8_t unused_47;
    int32_t square_size;  // pixels
    int32_t book_mode;
    int32_t search_threads;
    int32_t pondering_on;
    int32_t sound_on;
    char dxp_host[52];
    int32_t hash_mb;
    int32_t wld_enable;
    int32_t wld_parallel_init;  // 0 before the search, 1 in parallel with it
    int32_t wld_max_pieces;     // -1 for no limit
    int32_t wld_max_kings_8;    // -1 for no limit
    int32_t wld_cache_mb;
    char wld_folder[SETTINGS_FOLDER_SIZE];
    int32_t mtc_enable;
    char mtc_folder[SETTINGS_FOLDER_SIZE];
    WindowRecord main_window;
    WindowRecord child_windows[CHILD_WINDOWS];
    char font_name[32];
    float font_size;  // points
    uint8_t font_bold;
    uint8_t font_italic;
    uint8_t unused_826[2];
    int32_t background_kind;  // 0 white, 1 the gray of dialogs
};

struct Settings2 {
    uint32_t checksum;
    int32_t language_id;  // menu id of the language
    int32_t match_repeats;
    char match_ballot_file[SETTINGS_FOLDER_SIZE];
    uint8_t increment_mode;
    uint8_t match_incremental;
    uint8_t unused_274[6];
    double initial_seconds;
    double increment_seconds;
};

extern Settings settings;
extern Settings2 settings2;

// What the defaults depend on.
struct SettingsSurroundings {
    int64_t memory_mb = 0;  // physical memory
    std::string program_folder;
    bool wld_folder_exists = false;  // `program_folder` + "wld_database"
    bool mtc_folder_exists = false;  // `program_folder` + "mtc_database"
};
constexpr const char* WLD_DEFAULT_FOLDER = "wld_database";
constexpr const char* MTC_DEFAULT_FOLDER = "mtc_database";

Settings make_default_settings(const SettingsSurroundings& surroundings);
Settings2 make_default_settings2();

// Puts what "Reset windows" resets back to its defaults: font, background, size of the squares, all windows.
void reset_window_settings(Settings& record);

// The checksum that belongs into the record's first word, whatever stands there.
uint32_t settings_checksum(const Settings& record);
uint32_t settings_checksum(const Settings2& record);

// What the dialogs offer. -1 is "No limit".
constexpr std::array<int32_t, 9> OFFERED_MAX_PIECES = {-1, 9, 8, 7, 6, 5, 4, 3, 2};
constexpr std::array<int32_t, 6> OFFERED_MAX_KINGS = {-1, 4, 3, 2, 1, 0};
constexpr std::array<int32_t, 6> OFFERED_HASH_MB = {16, 32, 64, 128, 256, 512};
constexpr std::array<int32_t, 8> OFFERED_THREADS = {8, 7, 6, 5, 4, 3, 2, 1};

// The text of a field, which ends at the field's end if no NUL ends it before.
template <size_t N>
std::string_view setting_text(const char (&field)[N]) {
    const std::string_view whole(field, N);
    return whole.substr(0, whole.find('\0'));
}

// Stores a text, cut before the character that the field does not hold with its NUL, and clears the rest of
// the field.
template <size_t N>
void store_setting_text(char (&field)[N], std::string_view text) {
    const std::string_view kept = text.substr(0, utf8_length_within(text, N - 1));
    for (size_t i = 0; i < N; ++i) field[i] = i < kept.size() ? kept[i] : '\0';
}

// The number brought into the range; `low` for what is not a number.
double setting_number(double stored, double low, double high);
int32_t setting_number(int32_t stored, int32_t low, int32_t high);
