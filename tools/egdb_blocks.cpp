#include "tools/egdb_blocks.h"

#include <algorithm>
#include <cstdio>

#include "egdb/catalogues.h"
#include "tools/parallel_chunks.h"

namespace {

constexpr int64_t FIRST_TRIAL_BYTES = 192;
constexpr size_t SECOND_TRIALS = 16;
constexpr size_t CAREFUL_TRIALS = 2;

// A catalogue with a value map, and how far it gets.
struct Trial {
    int catalogue = 0;
    SymbolValues values{};
    int64_t end = -1;
    int64_t used = 0;
    std::vector<int32_t> rows;
};

// Better: further, or as far as the end in fewer bytes. Equal ones keep their order.
bool is_better(const Trial& a, const Trial& b, int64_t size) {
    const int64_t a_end = std::min(a.end, size), b_end = std::min(b.end, size);
    return a_end != b_end ? a_end > b_end : a.used < b.used;
}

void sort_trials(std::vector<Trial>& trials, int64_t size, size_t number) {
    std::stable_sort(trials.begin(), trials.end(),
                     [&](const Trial& a, const Trial& b) { return is_better(a, b, size); });
    trials.resize(std::min(trials.size(), number));
}

// All that can code the planes: where no value is unknown, the catalogues of three symbols with the values in
// any order.
std::vector<Trial> all_trials(const ValuePlanes& planes) {
    std::vector<Trial> trials;
    const bool four = planes.counts[EGDB_UNKNOWN] != 0;
    for (int c = four ? FIRST_FOUR_SYMBOL_CATALOGUE : 0;
         c < (four ? CATALOGUES : FIRST_FOUR_SYMBOL_CATALOGUE); ++c) {
        SymbolValues values{0, 1, 2, 3};
        do {
            if (four || values[3] == EGDB_UNKNOWN) trials.push_back({c, values, -1, 0, {}});
        } while (std::next_permutation(values.begin(), values.end()));
    }
    return trials;
}

// Codes the block that begins at `start` as far as it gets in that many bytes.
Trial code_block(const Coders& coders, const ValuePlanes& planes, int64_t start, int64_t bytes, int threads) {
    std::vector<Trial> trials = all_trials(planes);
    const auto try_all = [&](int64_t most) {
        for_chunks(static_cast<int64_t>(trials.size()), 1, threads, [&](int64_t i, int64_t) {
            Trial& trial = trials[static_cast<size_t>(i)];
            trial.end = code_quickly(planes, coders.trees[static_cast<size_t>(trial.catalogue)], trial.values,
                                     start, most, trial.used);
        });
    };
    try_all(std::min(bytes, FIRST_TRIAL_BYTES));
    sort_trials(trials, planes.size, SECOND_TRIALS);
    if (bytes > FIRST_TRIAL_BYTES) try_all(bytes);
    sort_trials(trials, planes.size, CAREFUL_TRIALS);
    for_chunks(static_cast<int64_t>(trials.size()), 1, threads, [&](int64_t i, int64_t) {
        Trial& trial = trials[static_cast<size_t>(i)];
        trial.end = code_well(planes, coders.trees[static_cast<size_t>(trial.catalogue)], trial.values, start,
                              bytes, trial.rows);
        trial.used = static_cast<int64_t>(trial.rows.size());
    });
    sort_trials(trials, planes.size, 1);
    return std::move(trials[0]);
}

template <typename... Numbers>
void append_line(std::string& text, const char* format, Numbers... numbers) {
    char line[128];
    std::snprintf(line, sizeof line, format, numbers...);
    text += line;
}

// The only value that stands in the planes, by its character; 0 if there are several.
char single_value(const ValuePlanes& planes) {
    static constexpr std::array<char, 4> CHARACTERS{'.', '+', '-', '='};
    int found = -1;
    for (int v = 0; v < 4; ++v) {
        if (planes.counts[static_cast<size_t>(v)] == 0) continue;
        if (found >= 0) return 0;
        found = v;
    }
    return found < 0 ? '.' : CHARACTERS[static_cast<size_t>(found)];
}

}  // namespace

std::vector<CodeRow> catalogue_rows(int number) {
    const CatalogueTable& table = catalogue(number);
    std::vector<CodeRow> rows(CATALOGUE_ROWS);
    for (size_t row = 0; row < CATALOGUE_ROWS; ++row)
        for (const uint8_t* entry = catalogue_entries + table.offsets[row]; *entry != END_OF_ROW; entry += 3)
            rows[row].push_back({entry[0], static_cast<uint16_t>(entry[1] | entry[2] << 8)});
    return rows;
}

Coders make_coders() {
    Coders coders;
    for (int i = 0; i < CATALOGUES; ++i) coders.trees.push_back(code_tree(catalogue_rows(i)));
    return coders;
}

void append_subslice(EgdbFilePair& pair, const Coders& coders, const ValuePlanes& planes, const Material& m,
                     int subslice, int side, int threads) {
    pair.positions += planes.size;
    pair.free_positions += planes.free_positions;
    append_line(pair.index, "BASE%d,%d,%d,%d,%d,%c:", m.bm, m.bk, m.wm, m.wk, subslice,
                side == BLACK ? 'b' : 'w');
    if (const char value = single_value(planes)) {
        append_line(pair.index, "%c\n", value);
        ++pair.single_subslices;
        return;
    }
    ++pair.coded_subslices;
    for (int64_t at = 0; at < planes.size;) {
        const auto offset = static_cast<int64_t>(pair.data.size());
        const int64_t in_block = offset % EGDB_BLOCK_BYTES;
        const Trial block = code_block(coders, planes, at, EGDB_BLOCK_BYTES - in_block, threads);
        if (at == 0)
            append_line(pair.index, "%lld/%lld,%d,%d\n", static_cast<long long>(offset / EGDB_BLOCK_BYTES),
                        static_cast<long long>(in_block), block.catalogue, vmap_byte(block.values));
        else
            append_line(pair.index, "%lld,%d,%d\n", static_cast<long long>(at), block.catalogue,
                        vmap_byte(block.values));
        for (const int32_t row : block.rows) pair.data.push_back(static_cast<uint8_t>(row));
        at = block.end;
    }
}
