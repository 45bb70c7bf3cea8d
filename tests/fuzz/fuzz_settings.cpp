// Any bytes as the two files of settings. A file that is whole is used as it stands, any other is replaced by
// its defaults alone; whatever the records hold, the engine gets what it can work with, every text made of
// them is bounded, and what is saved is read again.
//
// The first byte of the input tells which of the checksums are made to fit and which of the files are
// missing; then come the bytes of the first file and those of the second.
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/file_calls.h"
#include "base/program_paths.h"
#include "check.h"
#include "control/apply_settings.h"
#include "control/database_settings.h"
#include "control/game_clock.h"
#include "control/settings.h"
#include "control/time_control.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "shell/settings_store.h"
#include "shell/system_log.h"

namespace {

// A folder for the whole run.
struct Scratch {
    std::filesystem::path path;

    Scratch() {
        std::string name = (std::filesystem::temp_directory_path() / "tessarin-fuzz-XXXXXX").string();
        FUZZ_CHECK(mkdtemp(name.data()));
        path = name;
        program_paths.settings_folder = name + "/";
        file_calls.flush = [](int) { return 0; };  // a crash of the machine is not what is tried here
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
};

struct File {
    std::string bytes;
    bool there;

    template <typename Record>
    bool is_whole() const {
        Record record;
        if (!there || bytes.size() != sizeof record) return false;
        std::memcpy(&record, bytes.data(), sizeof record);
        return record.checksum == settings_checksum(record);
    }
};

template <typename Record>
void seal(File& file) {
    Record record;
    if (file.bytes.size() < sizeof record) return;
    file.bytes.resize(sizeof record);
    std::memcpy(&record, file.bytes.data(), sizeof record);
    record.checksum = settings_checksum(record);
    std::memcpy(file.bytes.data(), &record, sizeof record);
}

void write(const Scratch& scratch, const char* name, const File& file) {
    std::filesystem::remove(scratch.path / name);
    if (file.there) std::ofstream(scratch.path / name, std::ios::binary) << file.bytes;
}

template <typename Record>
bool holds(const Record& record, const std::string& bytes) {
    return bytes.size() == sizeof record && std::memcmp(&record, bytes.data(), sizeof record) == 0;
}

template <typename Record>
bool same(const Record& a, const Record& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void check_loaded(const File& first, const File& second) {
    const bool whole = first.is_whole<Settings>();
    FUZZ_CHECK(settings_were_reset == !whole);
    if (whole) FUZZ_CHECK(holds(settings, first.bytes));
    if (!whole) FUZZ_CHECK(settings.time_menu_id == 40008 && settings.clock_moves_limit == 90);
    if (!first.there) {
        FUZZ_CHECK(same(settings2, Settings2{}));
        return;
    }
    FUZZ_CHECK(settings2.language_id == ENGLISH_ID);
    Settings2 expected = make_default_settings2();
    if (second.is_whole<Settings2>()) {
        std::memcpy(&expected, second.bytes.data(), sizeof expected);
        expected.language_id = ENGLISH_ID;
    }
    FUZZ_CHECK(same(settings2, expected));
}

void check_engine() {
    apply_search_settings();
    const EngineSettings& engine = engine_settings;
    FUZZ_CHECK(engine.search_threads >= 1 && engine.search_threads <= MAX_SEARCH_THREADS);
    FUZZ_CHECK(engine.hash_size_mb >= 1 && engine.hash_size_mb <= MAX_TABLE_MB);
    FUZZ_CHECK(engine.book_mode >= 0 && engine.book_mode <= 3);
    FUZZ_CHECK(engine.database.wld_max_pieces >= -1 && engine.database.wld_max_pieces <= 9);
    FUZZ_CHECK(engine.database.wld_max_kings_8 >= -1 && engine.database.wld_max_kings_8 <= 4);
    FUZZ_CHECK(engine.database.wld_cache_mb >= 0);
    FUZZ_CHECK(engine.database.wld_folder.size() <= SETTINGS_FOLDER_SIZE);
    FUZZ_CHECK(engine.database.mtc_folder.size() <= SETTINGS_FOLDER_SIZE);
}

void check_time(const MoveTime& time) {
    FUZZ_CHECK(time.search_target_time >= 0 && time.max_time >= 0 && time.Mintime >= 0);
    FUZZ_CHECK(time.step_time >= 0 && time.step_time <= time.Mintime);
}

void check_times() {
    check_time(fixed_move_time(settings.time_per_move, false));
    check_time(fixed_move_time(settings.time_per_move, true));
    for (const int32_t moves : {0, 3, 55, 100})
        for (const int pieces : {0, 2, 40}) check_time(clock_move_time(clock_control(), 17.5, moves, pieces));
    char text[40];
    clock_minutes_text(settings.clock_minutes, text, sizeof text);
    FUZZ_CHECK(std::strlen(text) < sizeof text);
    const Settings before = settings;
    if (set_game_clock(game_clock_fields()) != 0) FUZZ_CHECK(same(settings, before));
}

void check_texts() {
    for (const std::string& line : system_info_lines("now\n", program_paths, settings, {}))
        FUZZ_CHECK(line.ends_with('\n') && line.size() < 400);
    set_wld_folder(setting_text(settings.wld_folder));
    set_mtc_folder(setting_text(settings.mtc_folder));
}

void check_save() {
    FUZZ_CHECK(save_settings() == 0);
    const Settings saved = settings;
    const Settings2 saved2 = settings2;
    load_settings();
    FUZZ_CHECK(!settings_were_reset && same(settings, saved));
    // A language that is not there is not read again.
    FUZZ_CHECK(settings2.language_id == ENGLISH_ID);
    settings2.language_id = saved2.language_id;
    FUZZ_CHECK(same(settings2, saved2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const int flags = input.empty() ? 0 : input[0];
    const std::string bytes = input.substr(std::min<size_t>(1, size));
    File first{bytes.substr(0, sizeof(Settings)), (flags & 1) == 0};
    File second{bytes.substr(first.bytes.size()), (flags & 2) == 0};
    if ((flags & 4) == 0) seal<Settings>(first);
    if ((flags & 8) == 0) seal<Settings2>(second);
    write(scratch, "settings", first);
    write(scratch, "settings2", second);
    load_settings();
    check_loaded(first, second);
    check_engine();
    check_texts();
    check_times();
    check_save();
    reset_window_settings(settings);
    FUZZ_CHECK(settings.square_size == 44 && settings.main_window.width == 622);
    return 0;
}
