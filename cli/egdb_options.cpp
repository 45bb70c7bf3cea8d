#include "cli/egdb_options.h"

#include "base/files.h"
#include "base/paths.h"
#include "base/program_paths.h"
#include "cli/console.h"
#include "control/database_settings.h"
#include "control/settings.h"
#include "egdb/egdb_open.h"
#include "egdb/identify.h"
#include "search/engine_settings.h"

namespace {

constexpr int MOST_CACHE_MB = 1 << 20;

// With the memory that they will have, as it decides what is read whole.
bool check_folder(std::string& folder, bool mtc, int cache_mb) {
    if (folder.empty()) return true;
    folder = absolute_path(folder);
    EgdbType type{};
    int32_t pieces = 0;
    const bool there = identify_egdb(folder, type, pieces) == 0 && (type == EGDB_MTC) == mtc;
    if (!there)
        fail("no %s database in %s", mtc ? "moves-to-conversion" : "win/loss/draw", folder.c_str());
    else if (!egdb_open("", cache_mb, folder, nullptr))
        // A game goes on without them, and an analysis finds it out behind its first search.
        fail("the database in %s cannot be opened", folder.c_str());
    else
        return true;
    return false;
}

// The folder that is named, or the one of that name that came with the program.
std::string choose_folder(const EgdbChoice& choice, const std::string& named, const char* default_name) {
    if (!named.empty()) return named;
    if (choice.none || !*default_name) return "";
    const std::string folder = program_paths.program_folder + default_name;
    return folder_exists(folder) ? folder : "";
}

}  // namespace

void add_egdb_options(CLI::App& command, EgdbChoice& choice, bool default_folder) {
    CLI::Option* const folder = command.add_option(
        "--egdb", choice.folder,
        default_folder ? "Folder of the endgame database, in place of the one that came with the program"
                       : "Folder of an endgame database to use");
    command.add_option("--egdb-cache", choice.cache_mb, "Megabytes of memory for it")
        ->check(CLI::Range(0, MOST_CACHE_MB))
        ->capture_default_str();
    CLI::Option* const mtc =
        command.add_option("--mtc", choice.mtc_folder, "Folder of a database of moves to conversion to use");
    // These are looked up only beside values.
    if (default_folder)
        command.add_flag("--no-egdb", choice.none, "Use no endgame database")
            ->excludes(folder)
            ->excludes(mtc);
    else
        mtc->needs(folder);
}

bool check_egdb_choice(EgdbChoice& choice) {
    return check_folder(choice.folder, false, choice.cache_mb) &&
           check_folder(choice.mtc_folder, true, MTC_CACHE_MB);
}

std::string chosen_egdb_folder(const EgdbChoice& choice, bool default_folder) {
    return choose_folder(choice, choice.folder, default_folder ? WLD_DEFAULT_FOLDER : "");
}

std::string chosen_mtc_folder(const EgdbChoice& choice, bool default_folder) {
    return choose_folder(choice, choice.mtc_folder, default_folder ? MTC_DEFAULT_FOLDER : "");
}

void use_egdb_in_engine(const EgdbChoice& choice, bool default_folder) {
    DatabaseOptions& options = engine_settings.database;
    options.wld_folder = chosen_egdb_folder(choice, default_folder);
    options.wld_enable = !options.wld_folder.empty();
    options.wld_parallel_init = false;
    options.wld_cache_mb = choice.cache_mb;
    options.mtc_folder = choice.mtc_folder;
    options.mtc_enable = !choice.mtc_folder.empty();
    engine_settings.reopen_wld = options.wld_enable;
}

bool use_egdb_in_game(const EgdbChoice& choice, bool default_folder) {
    // The settings have no room for more, and a shorter path would be another folder.
    for (const std::string& named : {choice.folder, choice.mtc_folder}) {
        if (named.size() < SETTINGS_FOLDER_SIZE) continue;
        fail("the name of the folder %s is too long", named.c_str());
        return false;
    }
    std::string folder = chosen_egdb_folder(choice, default_folder);
    if (folder.size() >= SETTINGS_FOLDER_SIZE) folder.clear();
    // Before the search, so that the same input gives the same game.
    set_wld_parallel_init(false);
    set_wld_folder(folder);
    set_wld_cache_mb(choice.cache_mb);
    set_wld_enable(!folder.empty());
    set_mtc_folder(choice.mtc_folder);
    set_mtc_enable(!choice.mtc_folder.empty());
    return true;
}
