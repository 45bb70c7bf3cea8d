#include <cstdio>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "cli/console.h"
#include "eval/weights.h"
#include "tools/seed_weights.h"
#include "tools/weights_statistics.h"

namespace {

void run_seed(const std::string& path) {
    switch (seed_weights(path)) {
        case 0:
            std::printf("%s: %zu bytes\n", path.c_str(), WEIGHTS_BYTES);
            break;
        case 1:
            fail("cannot write %s", path.c_str());
            break;
        default:
            fail("not enough memory");
            break;
    }
}

void print_scalar(const char* name, int16_t opening, int16_t endgame) {
    std::printf("%-18s %8d %8d\n", name, opening, endgame);
}

void run_stats(const std::string& path) {
    if (!check_weights(path)) return;
    if (load_weights_from(path) != 0) return fail("cannot read %s", path.c_str());
    std::printf("%-18s   points: 0     <1     <2     <4     <8    <16    <32    <64   <128   more   mean\n",
                "pattern table");
    for (size_t table = 0; table < PATTERN_TABLES; ++table)
        for (const bool opening : {true, false}) {
            const Magnitudes found = magnitudes(weights, table, opening);
            std::printf("%zu %-16s ", table, opening ? "opening" : "endgame");
            for (const int64_t count : found.bins)
                std::printf(" %5.1f%%", 100.0 * static_cast<double>(count) / double{PATTERN_ENTRIES});
            std::printf(" %6.2f\n", found.mean);
        }
    const EvalParams& p = weights.params;
    std::printf("%-18s %8s %8s\n", "scalar", "opening", "endgame");
    print_scalar("left-right balance", p.lr_bal_opening, p.lr_bal_endgame);
    print_scalar("tempo", p.tempo_opening, p.tempo_endgame);
    print_scalar("men", p.men_opening, p.men_endgame);
    print_scalar("further kings", p.kings_opening, p.kings_endgame);
    print_scalar("has a king", p.has_kings_opening, p.has_kings_endgame);
}

}  // namespace

void add_weights_command(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("weights", "Make and look at weights files");
    command->require_subcommand(1);
    const auto path = std::make_shared<std::string>();
    CLI::App* const seed = command->add_subcommand(
        "seed", "Write a first weights file from a few plain values, with empty pattern tables");
    seed->add_option("--out", *path, "File to write")->required();
    seed->callback([path] { run_seed(*path); });
    CLI::App* const stats = command->add_subcommand(
        "stats", "Print how large the values of a weights file are: 50 units of the file are a point");
    stats->add_option("file", *path, "Weights file")->required();
    stats->callback([path] { run_stats(*path); });
}
