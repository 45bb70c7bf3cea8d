#include "shell/settings_store.h"

#include <cstring>
#include <string>

#include "base/files.h"
#include "base/program_paths.h"
#include "base/system_info.h"
#include "control/apply_settings.h"

SettingsHooks settings_hooks = no_settings_hooks();
bool settings_were_reset = false;

namespace {

constexpr const char* SETTINGS_FILE = "settings";
constexpr const char* SETTINGS2_FILE = "settings2";

enum LoadStatus { LOADED, NO_FILE, DAMAGED };

// Leaves the record as it was unless it is whole.
template <typename Record>
LoadStatus load_record(const char* name, Record& record) {
    if (program_paths.settings_folder.empty()) return NO_FILE;
    const std::string path = program_paths.settings_folder + name;
    const int64_t size = file_size(path);
    if (size < 0) return NO_FILE;
    // What is longer may be anything, so it is not read.
    if (size != sizeof(Record)) return can_read_file(path) ? DAMAGED : NO_FILE;
    std::string image;
    if (read_file(path, image) != 0) return NO_FILE;
    if (image.size() != sizeof(Record)) return DAMAGED;
    Record read;
    std::memcpy(&read, image.data(), sizeof read);
    if (read.checksum != settings_checksum(read)) return DAMAGED;
    record = read;
    return LOADED;
}

template <typename Record>
int save_record(const char* name, Record& record) {
    record.checksum = settings_checksum(record);
    return replace_file(program_paths.settings_folder + name, &record, sizeof record);
}

void load_settings2() {
    if (load_record(SETTINGS2_FILE, settings2) != LOADED) settings2 = make_default_settings2();
    if (!settings_hooks.language_loaded(settings2.language_id)) settings2.language_id = ENGLISH_ID;
}

}  // namespace

SettingsHooks no_settings_hooks() {
    return {[](int32_t menu_id) { return menu_id == ENGLISH_ID; }, [] {}, [](Settings&) {}};
}

void load_settings() {
    settings_were_reset = false;
    settings2 = Settings2{};
    const LoadStatus status = load_record(SETTINGS_FILE, settings);
    if (status != LOADED) default_settings();
    if (status != NO_FILE) load_settings2();
}

void default_settings() {
    SettingsSurroundings surroundings;
    surroundings.memory_mb = memory_figures().total_physical >> 20;
    surroundings.program_folder = program_paths.program_folder;
    surroundings.wld_folder_exists = folder_exists(program_paths.program_folder + WLD_DEFAULT_FOLDER);
    surroundings.mtc_folder_exists = folder_exists(program_paths.program_folder + MTC_DEFAULT_FOLDER);
    settings = make_default_settings(surroundings);
    settings_were_reset = true;
    settings_hooks.forget_game_file();
}

int save_settings() {
    settings_hooks.read_windows(settings);
    if (program_paths.settings_folder.empty() || !make_folders(program_paths.settings_folder)) return 1;
    const int status = save_record(SETTINGS_FILE, settings);
    const int status2 = save_record(SETTINGS2_FILE, settings2);
    return status != 0 || status2 != 0 ? 1 : 0;
}

int reset_settings() {
    default_settings();
    return apply_settings();
}
