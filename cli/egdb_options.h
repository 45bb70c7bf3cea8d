// The endgame databases of a console command: which folder, and how much memory.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

struct EgdbChoice {
    std::string folder;
    std::string mtc_folder;  // of moves to conversion
    int cache_mb = 1024;
    bool none = false;
};

// Adds --egdb, --egdb-cache and --mtc, and with `default_folder` --no-egdb. A command has the databases that
// came with the program only if its answers may differ where they are missing.
void add_egdb_options(CLI::App& command, EgdbChoice& choice, bool default_folder);

// Makes the folders absolute, before the program enters its own. False if one that was named holds no
// database of its kind, or one that cannot be opened, which has been told.
bool check_egdb_choice(EgdbChoice& choice);

// The folder of the choice, or the one that came with the program if `default_folder`; empty for none. After
// the program has entered its folder.
std::string chosen_egdb_folder(const EgdbChoice& choice, bool default_folder);
// The same for moves to conversion.
std::string chosen_mtc_folder(const EgdbChoice& choice, bool default_folder);

// Lets the next search open the chosen folder, before it begins. For commands that call the engine itself.
void use_egdb_in_engine(const EgdbChoice& choice, bool default_folder);

// The same for commands that run game control, which hands the settings over at each search. False if a
// folder has too long a name for them, which has been told.
bool use_egdb_in_game(const EgdbChoice& choice, bool default_folder);
