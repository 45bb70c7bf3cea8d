// How fast games are found in a large text, which is what a user waits for when a file of games is loaded.
// The text is 25,000,000 bytes of the games in tests/data/games, over and over. The target is below 150 ms.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "base/files.h"
#include "records/pdn_game.h"
#include "records/pdn_replay.h"

namespace {

constexpr size_t TEXT_BYTES = 25000000;

std::string real_games() {
    const std::filesystem::path folder =
        std::filesystem::path(__FILE__).parent_path().parent_path() / "tests" / "data" / "games";
    std::string games;
    for (const char* name : {"babasy1.pdn", "loi20.pdn", "opening1.pdn", "sur01.pdn", "toprest1.pdn"}) {
        std::string text;
        if (read_file(folder / name, text) != 0) std::abort();
        games += text;
    }
    return games;
}

std::string large_text(const std::string& piece) {
    std::string text;
    text.reserve(TEXT_BYTES + piece.size());
    while (text.size() < TEXT_BYTES) text += piece;
    text.resize(TEXT_BYTES);
    return text;
}

void index_text(benchmark::State& state, const std::string& text) {
    PdnOffsets offsets;
    for (auto _ : state) {
        if (pdn_index_games(text.c_str(), offsets) != 0) state.SkipWithError("no memory");
        benchmark::DoNotOptimize(offsets.data());
    }
    state.counters["games"] = pdn_game_count(offsets);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void index_games(benchmark::State& state) { index_text(state, large_text(real_games())); }

// Texts that a careless scanner would read many times over.
void index_awkward(benchmark::State& state) {
    static const std::vector<std::string> pieces = {"/FEN",     "/FEN \"", "(",  "[a \"",
                                                    "12-34 - ", "1 ",      "*x", "7"};
    const std::string& piece = pieces[static_cast<size_t>(state.range(0))];
    state.SetLabel(piece);
    index_text(state, large_text(piece));
}

void parse_games(benchmark::State& state) {
    const std::string text = large_text(real_games());
    for (auto _ : state) {
        PdnTable table;
        if (pdn_parse_games(text.c_str(), table) != 0) state.SkipWithError("no memory");
        benchmark::DoNotOptimize(table.data());
    }
}

void replay_games(benchmark::State& state) {
    const std::string text = real_games();
    PdnTable table;
    if (pdn_parse_games(text.c_str(), table) != 0) state.SkipWithError("no memory");
    int64_t moves = 0;
    for (auto _ : state) {
        for (const PdnGame& game : table) {
            ReplayState replay;
            for (PdnNode* node = pdn_start_position(game.get(), replay); node;
                 node = pdn_next_move(node, replay))
                ++moves;
        }
    }
    state.SetItemsProcessed(moves);
}

BENCHMARK(index_games)->Unit(benchmark::kMillisecond);
BENCHMARK(index_awkward)->DenseRange(0, 7)->Unit(benchmark::kMillisecond);
BENCHMARK(parse_games)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(replay_games)->Unit(benchmark::kMillisecond);

}  // namespace
