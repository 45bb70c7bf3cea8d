#include "control/database_settings.h"

#include <cstring>

#include "control/settings.h"

std::atomic<bool> reinit_wld = false;
std::atomic<bool> reinit_mtc = false;

namespace {

void change(int32_t& field, int32_t value, std::atomic<bool>& flag) {
    if (field == value) return;
    field = value;
    flag = true;
}

// A switch that is on by any number but 0 does not change by being switched on.
void change(int32_t& field, bool value, std::atomic<bool>& flag) {
    if ((field != 0) != value) change(field, int32_t{value}, flag);
}

template <size_t N>
void change(char (&field)[N], std::string_view text, std::atomic<bool>& flag) {
    char stored[N];
    store_setting_text(stored, text);
    if (setting_text(field) == setting_text(stored)) return;
    std::memcpy(field, stored, N);
    flag = true;
}

}  // namespace

void set_hash_mb(int32_t megabytes) { change(settings.hash_mb, megabytes, reinit_wld); }

void set_wld_enable(bool enable) { change(settings.wld_enable, enable, reinit_wld); }

void set_wld_max_pieces(int32_t pieces) { change(settings.wld_max_pieces, pieces, reinit_wld); }

void set_wld_max_kings_8(int32_t kings) { change(settings.wld_max_kings_8, kings, reinit_wld); }

void set_wld_cache_mb(int32_t megabytes) { change(settings.wld_cache_mb, megabytes, reinit_wld); }

void set_wld_folder(std::string_view folder) { change(settings.wld_folder, folder, reinit_wld); }

void set_wld_parallel_init(bool parallel) { settings.wld_parallel_init = parallel; }

void set_mtc_enable(bool enable) { change(settings.mtc_enable, enable, reinit_mtc); }

void set_mtc_folder(std::string_view folder) { change(settings.mtc_folder, folder, reinit_mtc); }
