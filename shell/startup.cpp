#include "shell/startup.h"

#include <string>

#include "base/files.h"
#include "base/log.h"
#include "base/paths.h"
#include "base/program_paths.h"
#include "control/apply_settings.h"
#include "control/program_flags.h"
#include "egdb/egdb_log.h"
#include "search/table.h"
#include "search/threads.h"
#include "shell/settings_store.h"
#include "shell/system_log.h"

StartupState startup_state;

namespace {

constexpr const char* AUTOCONNECT_FILE = "tessarin.ini";

void load_or_default_settings(bool saved) {
    if (saved) return load_settings();
    default_settings();
    settings2 = make_default_settings2();
    settings_from_engine();
}

// The data folder, made if it is missing; empty if there is none.
std::string make_data_folder() {
    const std::string folder = program_folder_below(user_data_folder());
    return !folder.empty() && make_folders(folder) ? folder : "";
}

// The numbers keep the copies that share a data folder apart, so the locks lie in it: a session's own folder
// may go while a copy still runs, and copies of several sessions have several.
void make_paths(const std::string& program_folder) {
    const std::string data_folder = make_data_folder();
    startup_state.instance = claim_instance(data_folder, PROGRAM_NAME);
    if (!startup_state.instance.held())
        startup_state.instance = claim_instance(user_runtime_folder(), PROGRAM_NAME);
    program_paths = make_program_paths(program_folder, data_folder, startup_state.instance.number());
    program_paths.program_file = executable_file();
    program_paths.settings_folder = program_folder_below(user_settings_folder());
    log_path = program_paths.log_path;
    set_egdb_log_path(program_paths.egdb_log_path);
}

}  // namespace

bool wants_server_mode(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i)
        if (std::string_view(argv[i]).find("-s") != std::string_view::npos) return true;
    return false;
}

void begin_startup(const StartupOptions& options) {
    reset_startup();
    make_paths(enter_program_folder());
    program_flags.server_mode = options.server_mode;
    if (options.load_languages) options.load_languages();
    startup_state.saved_settings = options.saved_settings;
    load_or_default_settings(options.saved_settings);
    program_flags.autoconnect_enabled = can_read_file(program_paths.data_folder + AUTOCONNECT_FILE);
    // What only such matches can turn off again must not stay on without them.
    if (!program_flags.autoconnect_enabled) settings2.match_incremental = 0;
}

EngineStartStatus finish_startup() {
    // A console command makes the threads that it is to search with.
    if (startup_state.saved_settings) threads_init();
    const EngineStartStatus status = start_engine();
    if (status != ENGINE_STARTED) return status;
    const bool table_there = startup_state.saved_settings ? apply_settings() == 0 : tt_allocate() == 0;
    log_system_info();
    return table_there ? ENGINE_STARTED : ENGINE_NO_MEMORY;
}

void reset_startup() {
    startup_state = StartupState{};
    program_paths = ProgramPaths{};
    program_flags = ProgramFlags{};
    log_path.clear();
    set_egdb_log_path("");
}
