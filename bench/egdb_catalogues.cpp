// What each byte-code catalogue saves in a win/loss/draw database: the blocks that it codes, and how many
// bytes more the same positions would take with the best of the others.
//
//   egdb_catalogues DATABASE PIECES
//
// Both are counted with the quick coding, of which the builder's careful one saves some more. The first bytes
// of a block choose the candidates, as in the builder.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/system_info.h"
#include "egdb/catalogues.h"
#include "tools/egdb_blocks.h"
#include "tools/egdb_whole.h"

namespace {

constexpr int USAGE_STATUS = 2;
constexpr int64_t FIRST_TRIAL_BYTES = 192;
constexpr size_t QUICK_TRIALS = 8;
constexpr size_t CAREFUL_TRIALS = 2;
constexpr int64_t ANY_BYTES = int64_t{1} << 40;

struct CatalogueUse {
    int64_t blocks = 0;
    int64_t bytes = 0;
    int64_t bytes_without = 0;
};
using Uses = std::array<CatalogueUse, CATALOGUES>;

struct Block {
    int64_t first = 0;  // position numbers
    int64_t end = 0;
    int catalogue = 0;
    SymbolValues values{};
};

// A catalogue with a value map, and how good it is: the least is best.
struct Trial {
    int catalogue = 0;
    SymbolValues values{};
    int64_t cost = 0;
};

void keep_best(std::vector<Trial>& trials, size_t number) {
    std::stable_sort(trials.begin(), trials.end(),
                     [](const Trial& a, const Trial& b) { return a.cost < b.cost; });
    trials.resize(std::min(trials.size(), number));
}

const CodeTree& tree_of(const Coders& coders, const Trial& trial) {
    return coders.trees[static_cast<size_t>(trial.catalogue)];
}

// The bytes that a block takes. `planes` ends where it does.
int64_t careful_bytes(const Coders& coders, const ValuePlanes& planes, int64_t first, const Trial& trial) {
    std::vector<int32_t> rows;
    const int64_t end = code_well(planes, tree_of(coders, trial), trial.values, first, ANY_BYTES, rows);
    return end < 0 ? ANY_BYTES : static_cast<int64_t>(rows.size());
}

// Those that can code the block, by how far they get with the first bytes.
std::vector<Trial> first_trials(const Coders& coders, const ValuePlanes& planes, const Block& block) {
    std::vector<Trial> trials;
    const bool four = planes.counts[EGDB_UNKNOWN] != 0;
    for (int c = four ? FIRST_FOUR_SYMBOL_CATALOGUE : 0;
         c < (four ? CATALOGUES : FIRST_FOUR_SYMBOL_CATALOGUE); ++c) {
        if (c == block.catalogue) continue;
        Trial trial{c, {0, 1, 2, 3}, 0};
        do {
            if (!four && trial.values[3] != EGDB_UNKNOWN) continue;
            int64_t used = 0;
            trial.cost = -code_quickly(planes, tree_of(coders, trial), trial.values, block.first,
                                       FIRST_TRIAL_BYTES, used);
            if (trial.cost <= 0) trials.push_back(trial);
        } while (std::next_permutation(trial.values.begin(), trial.values.end()));
    }
    return trials;
}

void add_block(Uses& uses, const Coders& coders, ValuePlanes& planes, const Block& block) {
    std::vector<Trial> trials = first_trials(coders, planes, block);
    keep_best(trials, QUICK_TRIALS);
    const int64_t size = planes.size;
    planes.size = block.end;
    for (Trial& trial : trials)
        if (code_quickly(planes, tree_of(coders, trial), trial.values, block.first, ANY_BYTES, trial.cost) <
            0)
            trial.cost = ANY_BYTES;
    keep_best(trials, CAREFUL_TRIALS);
    for (Trial& trial : trials) trial.cost = careful_bytes(coders, planes, block.first, trial);
    keep_best(trials, 1);
    CatalogueUse& use = uses[static_cast<size_t>(block.catalogue)];
    ++use.blocks;
    use.bytes += careful_bytes(coders, planes, block.first, {block.catalogue, block.values, 0});
    use.bytes_without += trials[0].cost;
    planes.size = size;
}

void add_subslice(Uses& uses, const Coders& coders, const Subslice& subslice, const SolvedMaterial& solved,
                  int side, int64_t first) {
    if (subslice.singlevalue != NO_SINGLE_VALUE) return;
    ValuePlanes planes = planes_of(solved, side, first, subslice.positions, processor_count());
    for (size_t i = 0; i < subslice.num_idx_blocks; ++i)
        add_block(uses, coders, planes,
                  {subslice.indices[i],
                   i + 1 < subslice.num_idx_blocks ? subslice.indices[i + 1] : subslice.positions,
                   subslice.catalogidx[i], vmap_values[subslice.vmap[i]]});
}

void print_uses(const Uses& uses) {
    CatalogueUse all;
    for (size_t c = 0; c < uses.size(); ++c) {
        const CatalogueUse& use = uses[c];
        all.blocks += use.blocks;
        all.bytes += use.bytes;
        all.bytes_without += use.bytes_without;
        if (use.blocks == 0) continue;
        std::printf(
            "| %zu | %lld | %lld | %lld | %.2f %% |\n", c, static_cast<long long>(use.blocks),
            static_cast<long long>(use.bytes), static_cast<long long>(use.bytes_without - use.bytes),
            100 * static_cast<double>(use.bytes_without - use.bytes) / static_cast<double>(use.bytes));
    }
    std::printf("all: blocks %lld bytes %lld saved %lld\n", static_cast<long long>(all.blocks),
                static_cast<long long>(all.bytes), static_cast<long long>(all.bytes_without - all.bytes));
}

}  // namespace

int main(int argc, char** argv) {
    const int pieces = argc == 3 ? std::atoi(argv[2]) : 0;
    if (pieces < 2 || pieces > 6) {
        std::fprintf(stderr, "usage: egdb_catalogues DATABASE PIECES\n");
        return USAGE_STATUS;
    }
    const auto database = open_whole_database(argv[1], pieces, nullptr);
    if (!database) return USAGE_STATUS;
    const Coders coders = make_coders();
    SolvedSet set;
    for (int n = 2; n <= pieces; ++n) {
        Uses uses{};
        for (const Material& m : solving_order(n)) {
            auto solved = std::make_unique<SolvedMaterial>();
            if (values_from_database(*database, set, m, processor_count(), *solved) != 0) return 1;
            for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side)
                for (int64_t first = 0; first < slice_size(m); first += SUBSLICE_POSITIONS)
                    add_subslice(uses, coders, *find_subslice(*database, m, side, first), *solved, side,
                                 first);
            set.materials[material_number(m)] = std::move(solved);
        }
        std::printf("%d pieces\n", n);
        print_uses(uses);
        std::fflush(stdout);
    }
    return 0;
}
