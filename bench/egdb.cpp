// Lookups in the endgame databases: from files that are held whole and from a warm cache of blocks, on one
// thread and two, and with every block from the disk; lookups in each form of values, of three pieces;
// lookups of moves to conversion, in the database that comes with the program; and the checksum of the
// largest file. The positions are random ones of the largest number of pieces in the folder that
// TESSARIN_EGDB names, or of the database that comes with the program.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "base/files.h"
#include "core/movegen.h"
#include "egdb/file_crc.h"
#include "egdb/identify.h"
#include "egdb/mtc_open.h"
#include "egdb/position_walk.h"
#include "egdb/wld_open.h"
#include "tests/base/scratch_folder.h"
#include "tests/tools/older_writer.h"
#include "tools/egdb_solver.h"

namespace {

constexpr size_t QUESTIONS = 1 << 18;
constexpr int32_t CACHE_MB = 1024;

struct Question {
    Position position;
    int side = BLACK;
};

std::string folder() {
    const char* const named = std::getenv("TESSARIN_EGDB");
    return named ? named : PROJECT_FOLDER "/data/wld_database";
}

int32_t pieces_there() {
    EgdbType type{};
    int32_t pieces = 0;
    return identify_egdb(folder(), type, pieces) == 0 && type == EGDB_WLD ? pieces : 0;
}

// Each material as often as it has positions, as the side to move has no capture.
std::vector<Question> make_questions(int32_t pieces) {
    std::vector<Material> materials;
    std::vector<double> sizes;
    for (int slot = 0; slot < EGDB_SLOTS; slot += 2) {
        const Material m = material_of_slot(slot);
        if (piece_count(m) != pieces || black_count(m) > EGDB_MAX_SIDE || white_count(m) < 1 ||
            black_count(m) < 1 || needs_mirror(m, BLACK))
            continue;
        materials.push_back(m);
        sizes.push_back(static_cast<double>(slice_size(m)));
    }
    std::mt19937_64 random(1);
    std::discrete_distribution<size_t> choose_material(sizes.begin(), sizes.end());
    std::vector<Question> questions;
    while (questions.size() < QUESTIONS) {
        const Material& m = materials[choose_material(random)];
        const auto index = static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m)));
        const Question q{position_from_index(index, m), static_cast<int>(random() % 2)};
        if (!has_capture(q.position, q.side)) questions.push_back(q);
    }
    return questions;
}

const std::vector<Question>& questions() {
    static const std::vector<Question> made = make_questions(pieces_there());
    return made;
}

// Opened once for each way of reading; 0 blocks for whole files.
const EgdbDriver* driver_with(int32_t blocks) {
    struct Opened {
        int32_t blocks;
        OpenEgdb driver;
    };
    static std::vector<Opened> opened;
    for (const Opened& o : opened)
        if (o.blocks == blocks) return o.driver.get();
    EgdbOpenRequest request;
    request.folder = folder();
    request.pieces = pieces_there();
    request.cache_megabytes = CACHE_MB;
    request.autoload = blocks == 0;
    request.cache_blocks = blocks;
    opened.push_back({blocks, open_wld(request)});
    return opened.back().driver.get();
}

void look_up(benchmark::State& state, int32_t blocks) {
    if (pieces_there() == 0) return state.SkipWithError("no database");
    static const EgdbDriver* driver = nullptr;
    if (state.thread_index() == 0) {
        questions();
        driver = driver_with(blocks);
    }
    size_t at = static_cast<size_t>(state.thread_index()) * 7919;
    for (auto _ : state) {
        const Question& q = questions()[at++ % QUESTIONS];
        benchmark::DoNotOptimize(driver->lookup(driver->handle, q.position, q.side, false));
    }
    state.SetItemsProcessed(state.iterations());
}

constexpr int32_t ALL_BLOCKS = 1 << 28;

void whole_files(benchmark::State& state) { look_up(state, 0); }
BENCHMARK(whole_files)->ThreadRange(1, 2)->UseRealTime();

void warm_cache(benchmark::State& state) { look_up(state, ALL_BLOCKS); }
BENCHMARK(warm_cache)->ThreadRange(1, 2)->UseRealTime();

// Nearly every lookup loads a block, which the system has in its memory.
void one_block(benchmark::State& state) { look_up(state, 1); }
BENCHMARK(one_block)->UseRealTime();

void open_database(benchmark::State& state) {
    EgdbOpenRequest request;
    request.folder = folder();
    request.pieces = pieces_there();
    request.cache_megabytes = CACHE_MB;
    for (auto _ : state) benchmark::DoNotOptimize(open_wld(request));
}
BENCHMARK(open_database)->Unit(benchmark::kMillisecond)->UseRealTime();

// Of positions of four pieces, from the cache that the engine has.
void moves_to_conversion(benchmark::State& state) {
    EgdbOpenRequest request;
    request.folder = PROJECT_FOLDER "/data/mtc_database";
    request.pieces = 4;
    request.cache_megabytes = 1;
    const OpenEgdb driver = open_mtc(request);
    if (!driver) return state.SkipWithError("no database");
    static const std::vector<Question> asked = make_questions(4);
    size_t at = 0;
    for (auto _ : state) {
        const Question& q = asked[at++ % QUESTIONS];
        benchmark::DoNotOptimize(driver->lookup(driver->handle, q.position, q.side, false));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(moves_to_conversion);

// Of three pieces, which the older forms are written for first: from whole files, or through a cache that
// holds all blocks.
void form_of_values(benchmark::State& state, EgdbType type, bool whole) {
    static const std::vector<Question> asked = make_questions(3);
    const ScratchFolder scratch;
    EgdbOpenRequest request;
    request.folder = PROJECT_FOLDER "/data/wld_database";
    if (type != EGDB_WLD) {
        SolvedSet set;
        for (int pieces = 2; pieces <= 3; ++pieces)
            for (const Material& m : solving_order(pieces)) solve_material(m, set, {});
        write_older_database(scratch.path, type, set, 3);
        request.folder = scratch.path;
    }
    request.type = type;
    request.pieces = 3;
    request.cache_megabytes = CACHE_MB;
    request.autoload = whole;
    const OpenEgdb driver = open_wld(request);
    if (!driver) return state.SkipWithError("no database");
    size_t at = 0;
    for (auto _ : state) {
        const Question& q = asked[at++ % QUESTIONS];
        benchmark::DoNotOptimize(driver->lookup(driver->handle, q.position, q.side, false));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(form_of_values, newest_whole, EGDB_WLD, true);
BENCHMARK_CAPTURE(form_of_values, value_lists_whole, EGDB_WLD_VALUE_LISTS, true);
BENCHMARK_CAPTURE(form_of_values, fixed_codes_whole, EGDB_WLD_FIXED_CODES, true);
BENCHMARK_CAPTURE(form_of_values, newest_cached, EGDB_WLD, false);
BENCHMARK_CAPTURE(form_of_values, value_lists_cached, EGDB_WLD_VALUE_LISTS, false);
BENCHMARK_CAPTURE(form_of_values, fixed_codes_cached, EGDB_WLD_FIXED_CODES, false);

// As identification and verification read files; the system has it in memory.
void checksum_of_a_file(benchmark::State& state) {
    const std::string path = folder() + "/db" + std::to_string(pieces_there()) + ".cpr1";
    InputFile file;
    if (!open_input(path, file)) return state.SkipWithError("no database");
    uint32_t crc = 0;
    for (auto _ : state) benchmark::DoNotOptimize(file_crc(file, nullptr, crc));
    state.SetBytesProcessed(state.iterations() * file_size(path));
}
BENCHMARK(checksum_of_a_file)->UseRealTime();

}  // namespace
