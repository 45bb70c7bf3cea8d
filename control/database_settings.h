// The settings that reach the endgame databases. A change does not act at once, as a search may be running:
// it raises a flag, and the next search reopens what is concerned.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

// Raised by a change, lowered when the engine is told of it (apply_settings.h).
extern std::atomic<bool> reinit_wld;  // all databases are to be reopened
extern std::atomic<bool> reinit_mtc;  // the distances to conversion alone

// Setters of `settings`, for the interface thread. Each raises its flag if the value differs from the old
// one.
void set_hash_mb(int32_t megabytes);  // the table is allocated anew with the databases
void set_wld_enable(bool enable);
void set_wld_max_pieces(int32_t pieces);  // -1 for no limit
void set_wld_max_kings_8(int32_t kings);  // -1 for no limit
void set_wld_cache_mb(int32_t megabytes);
void set_wld_folder(std::string_view folder);  // cut to what the record holds
void set_wld_parallel_init(bool parallel);     // takes effect at the next opening, raises nothing
void set_mtc_enable(bool enable);
void set_mtc_folder(std::string_view folder);  // cut to what the record holds
