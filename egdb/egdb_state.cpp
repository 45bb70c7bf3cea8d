#include "egdb/egdb_state.h"

#include <chrono>
#include <mutex>
#include <new>
#include <thread>

#include "base/detached_thread.h"
#include "egdb/egdb_log.h"
#include "egdb/egdb_open.h"
#include "egdb/engine_egdb.h"
#include "egdb/identify.h"
#include "egdb/open_options.h"

std::atomic<int32_t> egdb_state = EGDB_NOT_OPENED;

namespace {

constexpr const char* WAIT_FOR_WLD = "Wait for WLD database init...";
constexpr const char* WAIT_FOR_MTC = "Wait for MTC database init...";

struct OpenDatabases {
    OpenEgdb wld;
    OpenEgdb mtc;
};

// Never destroyed: an opening or a search may run while the process ends.
OpenDatabases& in_use = *new OpenDatabases;  // the search thread's
OpenDatabases& opened = *new OpenDatabases;  // the opening's, until the state is EGDB_OPENED

// Checks of the files of an open database, during which it is not closed.
std::mutex checks_lock;
int checks_under_way = 0;

// True if the databases may be closed now; no check begins from then on until one is open again.
bool may_close() {
    const std::lock_guard guard(checks_lock);
    if (checks_under_way > 0) return false;
    egdb_state.store(EGDB_NOT_OPENED, std::memory_order_release);
    return true;
}

// A check under way, or none if no database of values is there.
struct FileCheck {
    const EgdbDriver* driver = nullptr;

    FileCheck() {
        const std::lock_guard guard(checks_lock);
        const int32_t state = egdb_state.load(std::memory_order_acquire);
        if (state == EGDB_OPENED) driver = opened.wld.get();
        if (state == EGDB_IN_USE) driver = in_use.wld.get();
        if (driver) ++checks_under_way;
    }
    ~FileCheck() {
        const std::lock_guard guard(checks_lock);
        if (driver) --checks_under_way;
    }
    FileCheck(const FileCheck&) = delete;
    FileCheck& operator=(const FileCheck&) = delete;
};

// Tells the user what the search waits for; nothing of an opening that runs beside searches.
void show(const EgdbSurroundings* surroundings, const char* text) {
    if (surroundings) surroundings->show_message(surroundings->message, text);
}

void log_missing(const char* kind, const std::string& folder) {
    egdb_log_text(("No " + std::string(kind) + " database found in '" + folder + "'\n").c_str());
}

// `maxpieces` is what the engine has open; 0 for none, and no limit.
OpenEgdb open_mtc_folder(const DatabaseOptions& options, int32_t maxpieces,
                         const EgdbSurroundings* surroundings) {
    show(surroundings, WAIT_FOR_MTC);
    OpenEgdb mtc =
        egdb_open(options_text({maxpieces, -1}).c_str(), MTC_CACHE_MB, options.mtc_folder, egdb_log_text);
    if (mtc && mtc->type != EGDB_MTC) {
        log_missing("MTC", options.mtc_folder);
        return nullptr;
    }
    return mtc;
}

OpenEgdb open_wld_folder(const DatabaseOptions& options, const EgdbSurroundings* surroundings) {
    show(surroundings, WAIT_FOR_WLD);
    // What gives distances instead of values is no database for this folder.
    EgdbType type{};
    int32_t pieces = 0;
    if (identify_egdb(options.wld_folder, type, pieces) != 0 || type == EGDB_MTC) {
        log_missing("WLD", options.wld_folder);
        return nullptr;
    }
    const std::string text = options_text({options.wld_max_pieces, options.wld_max_kings_8});
    return egdb_open(text.c_str(), options.wld_cache_mb, options.wld_folder, egdb_log_text);
}

// The state tells the outcome.
void init_wld_and_mtc(const DatabaseOptions& options, const EgdbSurroundings* surroundings) {
    opened.wld = open_wld_folder(options, surroundings);
    if (!opened.wld) {
        egdb_state.store(EGDB_FAILED, std::memory_order_release);
        return;
    }
    if (options.mtc_enable) opened.mtc = open_mtc_folder(options, 0, surroundings);
    egdb_state.store(EGDB_OPENED, std::memory_order_release);
}

// The log is that of this opening alone.
void init_with_new_log(const DatabaseOptions& options, const EgdbSurroundings* surroundings) {
    try {
        empty_egdb_log();
        init_wld_and_mtc(options, surroundings);
    } catch (const std::bad_alloc&) {
        egdb_state.store(EGDB_FAILED, std::memory_order_release);
    }
}

bool init_on_its_own_thread(const DatabaseOptions& options) {
    return start_detached_thread([options] { init_with_new_log(options, nullptr); });
}

void take_over() {
    const std::lock_guard guard(checks_lock);
    in_use = std::move(opened);
    EgdbEngine& engine = egdb_engine;
    const EgdbDriver& wld = *in_use.wld;
    wld.get_pieces(wld.handle, &engine.maxpieces, &engine.maxpieces_1side, &engine.maxkings_9pcs,
                   &engine.maxkings_1side_8pcs);
    engine.no_side_captures = wld.type == EGDB_WLD;
    engine.wld = &wld;
    engine.mtc = in_use.mtc.get();
    egdb_state.store(EGDB_IN_USE, std::memory_order_release);
}

void close_all() {
    EgdbEngine& engine = egdb_engine;
    engine.wld = engine.mtc = nullptr;
    engine.maxpieces = engine.maxpieces_1side = 0;
    engine.maxkings_9pcs = engine.maxkings_1side_8pcs = 0;
    engine.no_side_captures = false;
    in_use = OpenDatabases{};
}

void take_over_if_opened() {
    if (egdb_state.load(std::memory_order_acquire) == EGDB_OPENED) take_over();
}

void reopen(const DatabaseOptions& options, const EgdbSurroundings& surroundings) {
    surroundings.release_table();
    close_all();
    surroundings.allocate_table();
    if (!options.wld_enable) {
        egdb_state.store(EGDB_SWITCHED_OFF, std::memory_order_release);
        return;
    }
    egdb_state.store(EGDB_OPENING, std::memory_order_release);
    if (options.wld_parallel_init && init_on_its_own_thread(options)) return;
    init_with_new_log(options, &surroundings);
    take_over_if_opened();
}

}  // namespace

void egdb_prepare_search(const DatabaseOptions& options, bool& reopen_wld, bool& reopen_mtc,
                         const EgdbSurroundings& surroundings) {
    take_over_if_opened();
    if (egdb_state.load(std::memory_order_acquire) == EGDB_OPENING) return;
    if (reopen_wld) {
        if (!may_close()) return;
        reopen_wld = reopen_mtc = false;
        reopen(options, surroundings);
    } else if (reopen_mtc) {
        reopen_mtc = false;
        egdb_engine.mtc = nullptr;
        in_use.mtc.reset();
        if (options.mtc_enable) in_use.mtc = open_mtc_folder(options, egdb_engine.maxpieces, &surroundings);
        egdb_engine.mtc = in_use.mtc.get();
    }
}

int verify_open_egdb(const VerifyListener& listener, const std::atomic<bool>* abort,
                     const VerifyTexts& texts) {
    const FileCheck check;
    return check.driver ? check.driver->verify(check.driver->handle, listener, abort, texts) : -1;
}

bool wait_for_egdb_opening(int milliseconds) {
    for (int i = 0; egdb_state.load(std::memory_order_acquire) == EGDB_OPENING; ++i) {
        if (i >= milliseconds) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void reset_egdb() {
    while (!wait_for_egdb_opening(1000)) {
    }
    while (!may_close()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    close_all();
    opened = OpenDatabases{};
}
