// The opening book: a probe, the answer at the start of a game, and the loading of a file of 20 MB. The books
// are made of random games, so that the lines from the start position are as long as in a real one.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <set>
#include <vector>

#include "book/book_move.h"
#include "tools/book_file.h"

namespace {

constexpr size_t SMALL_BOOK = 20000;
constexpr size_t LARGE_BOOK = 490000;  // positions that make 20 MB
constexpr const char* BENCH_FILE = "/tmp/tessarin-bench.odb";

// Positions of random games, each with one of its moves as the best, which the game mostly follows.
std::vector<BookPosition> positions_of_games(size_t count) {
    std::mt19937 random(1);
    std::set<std::pair<uint64_t, uint64_t>> seen;
    std::vector<BookPosition> positions;
    MoveList list;
    Position position = START_POSITION;
    for (int ply = 0; positions.size() < count; ++ply) {
        if (ply > 50 || generate_moves(position, list, position.side) == 0 || position.king) {
            position = START_POSITION;
            ply = 0;
            continue;
        }
        const int best =
            static_cast<int>(book_hash(position, position.side) % static_cast<uint32_t>(list.count));
        if (seen.insert({position.black, position.white}).second)
            positions.push_back({position, best, NO_BOOK_MOVE, static_cast<int>(random() % 40) - 20});
        const int next = random() % 3 ? best : static_cast<int>(random() % static_cast<uint32_t>(list.count));
        position = position_after(list[next], position.side ^ 1);
    }
    return positions;
}

const std::vector<BookPosition>& small_positions() {
    static const std::vector<BookPosition> positions = positions_of_games(SMALL_BOOK);
    return positions;
}

bool load(const std::vector<BookPosition>& positions) {
    BookFileFigures figures;
    return write_book(BENCH_FILE, positions, figures) == 0 && load_book_from(BENCH_FILE) == 0;
}

// The shipped book stands beside the program; without it the answer comes from games at random.
bool load_any_book() { return load_book() == 0 || load(small_positions()); }

void probe_known(benchmark::State& state) {
    if (!load(small_positions())) return state.SkipWithError("no book");
    size_t i = 0;
    for (auto _ : state) {
        const Position& position = small_positions()[i++ % SMALL_BOOK].position;
        benchmark::DoNotOptimize(book_probe(opening_book, position, position.side));
    }
}

void probe_unknown(benchmark::State& state) {
    if (!load(small_positions())) return state.SkipWithError("no book");
    size_t i = 0;
    for (auto _ : state) {
        const Position& position = small_positions()[i++ % SMALL_BOOK].position;
        benchmark::DoNotOptimize(book_probe(opening_book, position, position.side ^ 1));
    }
}

void answer_at_the_start(benchmark::State& state) {
    if (!load_any_book()) return state.SkipWithError("no book");
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    char text[BOOK_TEXT_SIZE];
    int index = 0, value = 0;
    for (auto _ : state) {
        const BookTerms terms{BOOK_BEST_MOVES, memory};
        benchmark::DoNotOptimize(book_move(START_POSITION, WHITE, list, terms, index, value, text));
    }
    state.counters["slots"] = static_cast<double>(book_slots(opening_book));
}

void load_20_megabytes(benchmark::State& state) {
    if (!load(positions_of_games(LARGE_BOOK))) return state.SkipWithError("no book");
    const size_t bytes = opening_book.slots.size();
    for (auto _ : state) benchmark::DoNotOptimize(load_book_from(BENCH_FILE));
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
    std::remove(BENCH_FILE);
}

BENCHMARK(probe_known);
BENCHMARK(probe_unknown);
BENCHMARK(answer_at_the_start)->Unit(benchmark::kMicrosecond);
BENCHMARK(load_20_megabytes)->Unit(benchmark::kMillisecond);

}  // namespace
