#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "base/clock.h"
#include "base/files.h"
#include "base/system_info.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/egdb_open_command.h"
#include "cli/egdb_text.h"
#include "cli/egdb_verify_command.h"
#include "egdb/catalogues.h"
#include "egdb/egdb_open.h"
#include "egdb/wld_lookup.h"
#include "tools/egdb_build.h"
#include "tools/egdb_catalogue_design.h"
#include "tools/egdb_mtc_build.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_solver.h"
#include "tools/egdb_whole.h"

namespace {

constexpr int CATALOGUE_TURNS = 2;
constexpr int64_t CATALOGUE_SAMPLES = 520;  // of each number of pieces, about

void log_line(const char* text) { std::fprintf(stderr, "%s", text); }

// Shows how far the work is until it has ended.
struct ProgressWatch {
    const EgdbBuildProgress& progress;
    std::atomic<bool> ended = false;
    std::thread thread;

    explicit ProgressWatch(const EgdbBuildProgress& watched)
        : progress(watched), thread([this] { watch(); }) {}
    ~ProgressWatch() {
        ended = true;
        thread.join();
        show_progress("");
    }

    void watch() const {
        const int64_t start = clock_ms();
        while (!ended) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const auto done = static_cast<double>(progress.done), all = static_cast<double>(progress.all);
            const double here = done - static_cast<double>(progress.kept);  // by this run
            if (done <= 0 || all <= 0) continue;
            char percent[16];
            std::snprintf(percent, sizeof percent, "%.1f", 100 * done / all);
            show_progress(std::string(percent) + " percent" + time_left_text(start, here, all - done));
        }
    }
};

void print_file(const EgdbBuiltFile& file, const char* left_out, const char* asked) {
    const auto bytes = static_cast<double>(file.data_bytes + file.index_bytes);
    std::printf("%s positions %lld %s %lld data %lld index %lld, %.4f bytes a position, %.4f %s\n",
                file.name.c_str(), static_cast<long long>(file.positions), left_out,
                static_cast<long long>(file.free_positions), static_cast<long long>(file.data_bytes),
                static_cast<long long>(file.index_bytes), bytes / static_cast<double>(file.positions),
                bytes / static_cast<double>(std::max<int64_t>(1, file.positions - file.free_positions)),
                asked);
}

struct BuildOptions {
    EgdbBuildOptions build;
    bool mtc = false;
};

void run_build(const BuildOptions& options) {
    const int pieces = options.build.pieces;
    if (options.mtc && pieces > EGDB_MOST_MTC_BUILT)
        return fail("moves to conversion are built up to %d pieces", EGDB_MOST_MTC_BUILT);
    catch_interrupt();
    const int64_t memory = options.mtc ? mtc_build_memory(pieces) : build_memory(pieces);
    std::printf("memory: at most %lld MB\n", static_cast<long long>(memory >> 20));
    std::fflush(stdout);
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    EgdbBuildStatus status;
    {
        const ProgressWatch watch(progress);
        status =
            (options.mtc ? build_mtc_database : build_database)(options.build, interrupted, progress, result);
    }
    for (const EgdbBuiltFile& file : result.files)
        print_file(file, options.mtc ? "without a number" : "left out",
                   options.mtc ? "a number" : "one looked up");
    switch (status) {
        case EGDB_BUILT:
            return;
        case EGDB_BUILD_STOPPED:
            return fail("stopped; the same command goes on from here");
        case EGDB_BUILD_NO_MEMORY:
            return fail("not enough memory");
        case EGDB_BUILD_TOO_LONG:
            return fail("there are endings of %d plies and more to the next conversion", LONGEST_DISTANCE);
        case EGDB_BUILD_CANNOT_WRITE:
            return fail("cannot write %s", result.failed_file.c_str());
        case EGDB_BUILD_CANNOT_READ:
            open_whole_database(options.build.folder, pieces,
                                log_line);  // tells which file, and what is wrong
            return fail("cannot read the database in %s", result.failed_file.c_str());
    }
}

std::unique_ptr<EgdbDatabase> open_database(const std::string& folder) {
    auto database = open_whole_database(folder, EGDB_MAX_PIECES, nullptr);
    if (database) return database;
    // Once more for the reason.
    open_whole_database(folder, EGDB_MAX_PIECES, log_line);
    fail("no database can be read in %s", folder.c_str());
    return nullptr;
}

struct FileFigures {
    int64_t positions = 0;
    int64_t single = 0;
    int64_t coded = 0;
    int64_t blocks = 0;
};

void run_stats(const std::string& folder) {
    const auto database = open_database(folder);
    if (!database) return;
    int64_t positions = 0, bytes = 0;
    for (int32_t i = 0; i < database->file_count; ++i) {
        const DbFile& file = database->files[static_cast<size_t>(i)];
        FileFigures figures;
        for (const SubdbSlot& slot : *database->cprsubdatabase) {
            for (int32_t s = 0; slot.subslices && s < slot.count; ++s) {
                const Subslice& subslice = slot.subslices[static_cast<size_t>(s)];
                if (subslice.file != &file) continue;
                figures.positions += subslice.positions;
                figures.blocks += subslice.num_idx_blocks;
                ++(subslice.singlevalue == NO_SINGLE_VALUE ? figures.coded : figures.single);
            }
        }
        const int64_t index = file_size(database->folder + file.name.data() + ".idx1");
        std::printf(
            "%s positions %lld subslices %lld single values %lld blocks %lld data %lld index %lld, "
            "%.4f bytes a position\n",
            file.name.data(), static_cast<long long>(figures.positions),
            static_cast<long long>(figures.coded + figures.single), static_cast<long long>(figures.single),
            static_cast<long long>(figures.blocks), static_cast<long long>(file.data_bytes),
            static_cast<long long>(index),
            static_cast<double>(file.data_bytes + index) /
                static_cast<double>(std::max<int64_t>(1, figures.positions)));
        positions += figures.positions;
        bytes += file.data_bytes + index;
    }
    std::printf("all positions %lld bytes %lld, %.4f bytes a position\n", static_cast<long long>(positions),
                static_cast<long long>(bytes), static_cast<double>(bytes) / static_cast<double>(positions));
}

struct ProbeOptions {
    std::string folder;
    std::string mtc_folder;
    std::string fen;
};

// `mtc` may be null.
void probe_line(EgdbDatabase& database, const EgdbDriver* mtc, const std::string& fen) {
    Position position;
    if (!read_position(fen, position)) return;
    if (!is_legal_setup(position)) return fail("not a legal position: %.200s", fen.c_str());
    const char* const text = has_capture(position, position.side)
                                 ? "capture"
                                 : egdb_value_text(wld_lookup(database, position, position.side, false));
    std::printf("%s %s", fen.c_str(), text);
    if (mtc) std::printf(" %d", static_cast<int>(mtc->lookup(mtc->handle, position, position.side, false)));
    std::printf("\n");
}

void run_probe(const ProbeOptions& options) {
    const auto database = open_database(options.folder);
    if (!database) return;
    OpenEgdb mtc;
    if (!options.mtc_folder.empty()) {
        mtc = egdb_open("", MTC_CACHE_MB, options.mtc_folder, nullptr);
        if (!mtc || mtc->type != EGDB_MTC)
            return fail("no moves-to-conversion database can be read in %s", options.mtc_folder.c_str());
    }
    if (options.fen != "-") return probe_line(*database, mtc.get(), options.fen);
    std::string line;
    while (std::getline(std::cin, line)) {
        const size_t end = line.find_last_not_of(" \t\r");
        if (end == std::string::npos) continue;
        line.resize(end + 1);
        probe_line(*database, mtc.get(), line);
    }
}

// Samples of all materials of that many pieces. The number of stretches is known once they have been gone
// through.
void add_samples_of(const SolvedSet& set, int pieces, std::vector<DesignSample>& samples) {
    int64_t passed = 0;
    std::vector<DesignSample> unused;
    for (const Material& m : solving_order(pieces))
        add_design_samples(*find_solved(set, m), INT64_MAX, passed, unused);
    const int64_t stride = std::max<int64_t>(2, passed / CATALOGUE_SAMPLES);
    passed = 0;
    for (const Material& m : solving_order(pieces))
        add_design_samples(*find_solved(set, m), stride, passed, samples);
}

// Solves the endings and designs the catalogues for them. Until all is done nothing is written, so that an
// interrupt may end it anywhere.
void run_catalogues(const std::string& out, int pieces, int threads) {
    if (!can_replace_file(out)) return fail("cannot write %s", out.c_str());
    SolvedSet set;
    std::vector<DesignSample> samples;
    const SolveControl control{threads, nullptr, nullptr};
    int64_t left = 0, done = 0;
    for (int n = 2; n <= pieces; ++n)
        for (const Material& m : solving_order(n)) left += solving_work(m);
    int64_t start = clock_ms();
    for (int n = 2; n <= pieces; ++n) {
        for (const Material& m : solving_order(n)) {
            show_progress("solving " + std::to_string(n) + " pieces" +
                          time_left_text(start, static_cast<double>(done), static_cast<double>(left)));
            if (solve_material(m, set, control) != 0) return fail("not enough memory");
            done += solving_work(m);
            left -= solving_work(m);
        }
        if (n > 2) add_samples_of(set, n, samples);
    }
    show_progress("designing catalogues");
    start = clock_ms();
    const auto made =
        design_all_catalogues(samples, CATALOGUE_TURNS, threads, [start](int turn, int64_t bytes) {
            show_progress("turn " + std::to_string(turn + 1) + ": " + std::to_string(bytes) +
                          " bytes for all samples" +
                          time_left_text(start, turn + 1, CATALOGUE_TURNS - turn - 1));
        });
    show_progress("");
    const std::string text = catalogue_source(made);
    if (replace_file(out, text.data(), text.size()) != 0) fail("cannot write %s", out.c_str());
}

void add_build(CLI::App& egdb) {
    CLI::App* const command = egdb.add_subcommand(
        "build", "Build win/loss/draw databases; a build that was stopped is continued by the same command");
    const auto options = std::make_shared<BuildOptions>();
    EgdbBuildOptions& build = options->build;
    build.threads = processor_count();
    command->add_option("DIR", build.folder, "Folder of the database, made if it is not there")->required();
    command->add_flag("--mtc", options->mtc, "Build moves to conversion instead");
    command
        ->add_option("--pieces", build.pieces,
                     "Most pieces on the board; the program opens sets of up to 5, with --mtc of up to 4")
        ->check(CLI::Range(2, EGDB_MOST_BUILT))
        ->capture_default_str();
    command->add_option("--threads", build.threads, "Threads to work with")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    command->callback([options] { run_build(*options); });
}

void add_catalogues(CLI::App& egdb) {
    CLI::App* const command = egdb.add_subcommand(
        "catalogues",
        "Design the byte-code catalogues anew and write them as a source file. They are part of the file\n"
        "format: databases must be built again after it");
    const auto out = std::make_shared<std::string>();
    const auto pieces = std::make_shared<int>(4);
    const auto threads = std::make_shared<int>(processor_count());
    command->add_option("FILE", *out)->required();
    command->add_option("--pieces", *pieces, "Most pieces of the endings to learn from")
        ->check(CLI::Range(3, 5))
        ->capture_default_str();
    command->add_option("--threads", *threads, "Threads to work with")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    command->callback([out, pieces, threads] { run_catalogues(*out, *pieces, *threads); });
}

}  // namespace

void add_egdb_command(CLI::App& program) {
    CLI::App* const egdb =
        program.add_subcommand("egdb", "Endgame databases: build, probe, verify and look into them");
    egdb->require_subcommand(1);
    add_build(*egdb);
    const auto folder = std::make_shared<std::string>();
    CLI::App* const stats =
        egdb->add_subcommand("stats", "Print what the files of a win/loss/draw database hold");
    stats->add_option("DIR", *folder)->required();
    stats->callback([folder] { run_stats(*folder); });
    CLI::App* const probe =
        egdb->add_subcommand("probe", "Print the value of positions for the side to move");
    const auto asked = std::make_shared<ProbeOptions>();
    probe->add_option("DIR", asked->folder)->required();
    probe->add_option("FEN", asked->fen, "Position, or - for one position on each line of standard input")
        ->required();
    probe->add_option(
        "--mtc", asked->mtc_folder,
        "Folder of a database of moves to conversion, whose number is told behind the value: 1\n"
        "where it has none");
    probe->callback([asked] { run_probe(*asked); });
    add_egdb_open_command(*egdb);
    add_egdb_verify_command(*egdb);
    add_catalogues(*egdb);
}
