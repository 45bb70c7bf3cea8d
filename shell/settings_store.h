// The settings on disk: the files "settings" and "settings2" in the settings folder of `program_paths`, each
// the image of its record. They exist only after a save. A record that is missing or damaged is replaced by
// its defaults; the other one keeps its values. Interface thread only.
#pragma once

#include <cstdint>

#include "control/settings.h"

// What stands above fills in what it has; the defaults do without it.
struct SettingsHooks {
    // Whether texts in the language of a menu id are there. By default English alone is.
    bool (*language_loaded)(int32_t menu_id);
    // The name of the loaded game file is forgotten, as default settings name none.
    void (*forget_game_file)();
    // Writes the present places of the windows into the record, before it is saved.
    void (*read_windows)(Settings& record);
};
extern SettingsHooks settings_hooks;

// The hooks without anything above.
SettingsHooks no_settings_hooks();

// `settings` was replaced by defaults since `load_settings` began: the windows belong in their default
// places.
extern bool settings_were_reset;

// Reads both records, at start. Without a file "settings", as at the first run, `settings` gets its defaults
// and `settings2` is all zero. A language that is not there becomes English.
void load_settings();

// Gives `settings` its defaults, by the memory of the machine and the database folders beside the program.
void default_settings();

// Writes both records whole. 0, or 1 if one could not be written; what was saved before then stands.
int save_settings();

// The user's "Reset settings to default", after the running search was stopped: the defaults, applied to the
// engine. The caller then moves the windows, chooses the time control and brings the menu up to date. 0, or 1
// if there is no memory for the transposition table.
int reset_settings();
