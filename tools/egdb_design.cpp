#include "tools/egdb_design.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>

#include "tools/parallel_chunks.h"

namespace {

constexpr size_t ROWS = CATALOGUE_ROWS;
constexpr size_t MOST_RUNS = 5;  // of a row
constexpr size_t FIRST_CANDIDATES = 1500;
constexpr size_t JOINED_CANDIDATES = 160;
constexpr int JOIN_ROUNDS = 3;
constexpr int64_t EVERYTHING = INT64_MAX / 2;

// The sample with a value for each free position: that of the runs on both sides if they agree, else symbol 0
// if it is one of them, else that of the run before. So the rarer runs come out short.
std::vector<SymbolRun> definite_runs(const DesignSample& sample) {
    std::vector<SymbolRun> runs;
    const auto add = [&](uint8_t symbol, int64_t length) {
        while (length > 0) {
            if (!runs.empty() && runs.back().symbol == symbol && runs.back().length < LONGEST_RUN) {
                const int64_t part = std::min<int64_t>(length, LONGEST_RUN - runs.back().length);
                runs.back().length = static_cast<uint16_t>(runs.back().length + part);
                length -= part;
            } else {
                runs.push_back({symbol, static_cast<uint16_t>(std::min(length, LONGEST_RUN))});
                length -= runs.back().length;
            }
        }
    };
    const auto symbol_at = [&](int64_t at) -> int {  // -1 for a free position
        const uint64_t bit = uint64_t{1} << (at & 63);
        int fits = 0, found = -1;
        for (int s = 0; s < 4; ++s) {
            if (sample.planes.unfit[sample.values[static_cast<size_t>(s)]][static_cast<size_t>(at >> 6)] &
                bit)
                continue;
            ++fits;
            found = s;
        }
        return fits == 1 ? found : -1;
    };
    int before = -1;
    int64_t open = 0;
    for (int64_t at = 0; at < sample.planes.size; ++at) {
        const int symbol = symbol_at(at);
        if (symbol < 0) {
            ++open;
            continue;
        }
        const bool rest = before < 0 || symbol == 0 || before == symbol;
        add(static_cast<uint8_t>(rest ? symbol : before), open);
        add(static_cast<uint8_t>(symbol), 1);
        open = 0;
        before = symbol;
    }
    return runs;
}

using RowCounts = std::map<CodeRow, int64_t>;

int64_t row_length(const CodeRow& row) {
    int64_t sum = 0;
    for (const SymbolRun& run : row) sum += run.length;
    return sum;
}

// Counts what a row could stand for that begins with a run or behind its first position. The last run of a
// row is a whole one or the first position of one.
void count_sequences(const std::vector<SymbolRun>& runs, uint16_t longest, RowCounts& counts) {
    for (size_t i = 0; i < runs.size(); ++i) {
        for (uint16_t skip = 0; skip <= 1 && skip < runs[i].length; ++skip) {
            CodeRow row;
            int64_t length = 0;
            for (size_t d = 0; d < MOST_RUNS && i + d < runs.size(); ++d) {
                SymbolRun run = runs[i + d];
                if (d == 0) run.length = static_cast<uint16_t>(run.length - skip);
                if (length + 1 > longest) break;
                if (d > 0 && run.length > 1) {
                    row.push_back({run.symbol, 1});
                    ++counts[row];
                    row.pop_back();
                }
                length += run.length;
                if (length > longest) break;
                row.push_back(run);
                ++counts[row];
            }
        }
    }
}

// Rows that no catalogue does without: each symbol by itself, and the longest run of symbol 0.
std::vector<CodeRow> basic_rows(const CatalogueRules& rules) {
    std::vector<CodeRow> rows = rules.fixed_rows;
    for (int s = 0; s < rules.symbols; ++s) rows.push_back({{static_cast<uint8_t>(s), 1}});
    rows.push_back({{0, rules.longest}});
    std::sort(rows.begin() + static_cast<std::ptrdiff_t>(rules.fixed_rows.size()), rows.end());
    rows.erase(std::unique(rows.begin() + static_cast<std::ptrdiff_t>(rules.fixed_rows.size()), rows.end()),
               rows.end());
    return rows;
}

// Runs of growing lengths.
std::vector<CodeRow> run_ladder(const CatalogueRules& rules) {
    std::vector<CodeRow> rows;
    for (int s = 0; s < rules.symbols; ++s)
        for (int64_t length = 2; length < rules.longest; length += std::max<int64_t>(1, length / 12))
            rows.push_back({{static_cast<uint8_t>(s), static_cast<uint16_t>(length)}});
    return rows;
}

// The rows with the most counts, the longer ones first among equals, in a fixed order.
std::vector<CodeRow> most_counted(const RowCounts& counts, size_t number, bool by_length) {
    std::vector<std::pair<int64_t, const CodeRow*>> ranked;
    for (const auto& [row, count] : counts)
        if (count > 1) ranked.emplace_back(by_length ? count * row_length(row) : count, &row);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    ranked.resize(std::min(ranked.size(), number));
    std::vector<CodeRow> rows;
    rows.reserve(ranked.size());
    for (const auto& [count, row] : ranked) rows.push_back(*row);
    return rows;
}

// The rows being thinned out. The first `kept` of them stay.
struct Candidates {
    std::vector<CodeRow> rows;
    size_t kept = 0;

    void add(const std::vector<CodeRow>& more) {
        for (const CodeRow& row : more)
            if (std::find(rows.begin(), rows.end(), row) == rows.end()) rows.push_back(row);
    }
};

// Codes all samples, and counts the uses of each row and, if wanted, what follows what.
std::vector<int64_t> count_uses(const std::vector<const DesignSample*>& samples, const Candidates& candidates,
                                uint16_t longest, RowCounts* joined) {
    const CodeTree tree = code_tree(candidates.rows);
    std::vector<int64_t> uses(candidates.rows.size());
    std::map<std::pair<int32_t, int32_t>, int64_t> pairs;
    for (const DesignSample* sample : samples) {
        std::vector<int32_t> coded;
        code_well(sample->planes, tree, sample->values, 0, EVERYTHING, coded);
        for (const int32_t row : coded) ++uses[static_cast<size_t>(row)];
        for (size_t i = 1; joined && i < coded.size(); ++i) ++pairs[{coded[i - 1], coded[i]}];
    }
    if (!joined) return uses;
    for (const auto& [pair, count] : pairs) {
        CodeRow row = candidates.rows[static_cast<size_t>(pair.first)];
        for (const SymbolRun& run : candidates.rows[static_cast<size_t>(pair.second)]) {
            if (row.back().symbol == run.symbol)
                row.back().length =
                    static_cast<uint16_t>(std::min<int64_t>(LONGEST_RUN, row.back().length + run.length));
            else
                row.push_back(run);
        }
        if (row.size() <= MOST_RUNS && row_length(row) <= longest) (*joined)[row] += count;
    }
    return uses;
}

// Takes out the rows used least until `number` are left.
void thin_out(Candidates& candidates, const std::vector<int64_t>& uses, size_t number) {
    if (candidates.rows.size() <= number) return;
    std::vector<size_t> order(candidates.rows.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin() + static_cast<std::ptrdiff_t>(candidates.kept), order.end(),
                     [&](size_t a, size_t b) { return uses[a] > uses[b]; });
    order.resize(number);
    std::sort(order.begin() + static_cast<std::ptrdiff_t>(candidates.kept), order.end());
    std::vector<CodeRow> rows;
    rows.reserve(order.size());
    for (const size_t i : order) rows.push_back(std::move(candidates.rows[i]));
    candidates.rows = std::move(rows);
}

void thin_out_to_catalogue(Candidates& candidates, const std::vector<const DesignSample*>& samples,
                           uint16_t longest) {
    while (candidates.rows.size() > ROWS) {
        const std::vector<int64_t> uses = count_uses(samples, candidates, longest, nullptr);
        thin_out(candidates, uses, std::max(ROWS, candidates.rows.size() * 3 / 4));
    }
}

// The values by how many positions of the sample have them, the one that most have first.
SymbolValues values_by_frequency(const ValuePlanes& planes) {
    std::array<int64_t, 4> counts{};
    for (size_t v = 0; v < 4; ++v)
        for (const uint64_t word : planes.unfit[v]) counts[v] -= bit_count(word);
    SymbolValues values{1, 2, 3, 0};
    std::stable_sort(values.begin(), values.end(),
                     [&](uint8_t a, uint8_t b) { return counts[a] > counts[b]; });
    return values;
}

// All orders of the values; with three symbols those that leave the last one in its place.
std::vector<SymbolValues> value_orders(const SymbolValues& values, int symbols) {
    std::vector<SymbolValues> orders;
    for (const uint8_t a : values)
        for (const uint8_t b : values)
            for (const uint8_t c : values) {
                if (a == b || a == c || b == c) continue;
                const auto last =
                    static_cast<uint8_t>(values[0] + values[1] + values[2] + values[3] - a - b - c);
                if (symbols == 4 || last == values[3]) orders.push_back({a, b, c, last});
            }
    return orders;
}

// Gives the sample the catalogue and the values that code it shortest.
void choose_catalogue(DesignSample& sample, const std::vector<CodeTree>& trees,
                      const std::vector<CatalogueRules>& rules) {
    sample.bytes = INT64_MAX;
    for (size_t c = 0; c < trees.size(); ++c) {
        for (const SymbolValues& values : value_orders(sample.values, rules[c].symbols)) {
            int64_t used = 0;
            if (code_quickly(sample.planes, trees[c], values, 0, EVERYTHING, used) < 0) continue;
            if (used >= sample.bytes) continue;
            sample.bytes = used;
            sample.catalogue = c;
            sample.values = values;
        }
    }
}

// The catalogues that are free to be made, for samples in the order of their density.
void share_out_by_density(std::vector<DesignSample>& samples, const std::vector<CatalogueRules>& rules) {
    std::vector<size_t> order(samples.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto density = [&](size_t i) {
        return static_cast<double>(samples[i].planes.size) /
               static_cast<double>(definite_runs(samples[i]).size());
    };
    std::vector<double> densities(samples.size());
    for (size_t i = 0; i < samples.size(); ++i) densities[i] = density(i);
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return densities[a] > densities[b]; });
    std::vector<size_t> free;
    for (size_t c = 0; c < rules.size(); ++c)
        if (!rules[c].fixed) free.push_back(c);
    for (size_t i = 0; i < order.size(); ++i)
        samples[order[i]].catalogue = free[i * free.size() / order.size()];
}

}  // namespace

Catalogue256 design_catalogue(const std::vector<const DesignSample*>& samples, const CatalogueRules& rules) {
    Candidates candidates;
    candidates.rows = basic_rows(rules);
    candidates.kept = candidates.rows.size();
    candidates.add(run_ladder(rules));
    RowCounts counts;
    for (const DesignSample* sample : samples) count_sequences(definite_runs(*sample), rules.longest, counts);
    candidates.add(most_counted(counts, FIRST_CANDIDATES / 2, true));
    candidates.add(most_counted(counts, FIRST_CANDIDATES, false));
    counts.clear();
    thin_out_to_catalogue(candidates, samples, rules.longest);
    for (int i = 0; i < JOIN_ROUNDS; ++i) {
        RowCounts joined;
        count_uses(samples, candidates, rules.longest, &joined);
        candidates.add(most_counted(joined, JOINED_CANDIDATES, false));
        thin_out_to_catalogue(candidates, samples, rules.longest);
    }
    // Too few samples leave room: it goes to the shortest runs that are not there.
    for (uint16_t length = 2; candidates.rows.size() < ROWS; ++length) candidates.add({{{0, length}}});
    return std::move(candidates.rows);
}

std::vector<Catalogue256> design_catalogues(std::vector<DesignSample>& samples,
                                            const std::vector<CatalogueRules>& rules, int turns, int threads,
                                            const std::function<void(int turn, int64_t bytes)>& report) {
    for (DesignSample& sample : samples) sample.values = values_by_frequency(sample.planes);
    share_out_by_density(samples, rules);
    std::vector<Catalogue256> made(rules.size());
    std::vector<CodeTree> trees(rules.size());
    for (int turn = 0; turn < turns; ++turn) {
        for_chunks(static_cast<int64_t>(rules.size()), 1, threads, [&](int64_t c, int64_t) {
            const auto i = static_cast<size_t>(c);
            std::vector<const DesignSample*> own;
            for (const DesignSample& sample : samples)
                if (sample.catalogue == i) own.push_back(&sample);
            if (own.empty() && turn > 0) return;
            made[i] = rules[i].fixed ? rules[i].fixed_rows : design_catalogue(own, rules[i]);
            trees[i] = code_tree(made[i]);
        });
        for_chunks(static_cast<int64_t>(samples.size()), 16, threads, [&](int64_t first, int64_t last) {
            for (int64_t i = first; i < last; ++i)
                choose_catalogue(samples[static_cast<size_t>(i)], trees, rules);
        });
        int64_t bytes = 0;
        for (const DesignSample& sample : samples) bytes += sample.bytes;
        report(turn, bytes);
    }
    return made;
}
