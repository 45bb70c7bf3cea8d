#include "tests/tools/older_writer.h"

#include <algorithm>
#include <array>
#include <fstream>

#include "core/movegen.h"
#include "egdb/egdb_format.h"
#include "egdb/older_codes.h"
#include "egdb/position_walk.h"
#include "tools/egdb_names.h"

namespace {

constexpr size_t TRIAL_POSITIONS = 20000;  // by which a catalogue is chosen

// The rows of a code with the value of each symbol, by the value that a row begins with.
struct Rows {
    struct Run {
        uint8_t value;
        int length;
    };
    struct Row {
        uint8_t byte;
        int total;
        std::vector<Run> runs;
    };
    std::array<std::vector<Row>, 7> by_first;  // the longest first
};

Rows rows_of(int code, const std::array<uint8_t, 7>& values, int symbols) {
    const CatalogueTable& table = block_code(code);
    Rows rows;
    for (int byte = 0; byte < CATALOGUE_ROWS; ++byte) {
        const auto row = static_cast<size_t>(byte);
        Rows::Row made{static_cast<uint8_t>(byte), table.totals[row], {}};
        int left = made.total;
        bool usable = true;
        for (const uint8_t* entry = table.entries + table.offsets[row]; left > 0; entry += 3) {
            const int length = entry[1] | entry[2] << 8;
            usable &= entry[0] < symbols;
            made.runs.push_back({values[entry[0]], length});
            left -= length;
        }
        if (usable) rows.by_first[made.runs[0].value].push_back(made);
    }
    for (auto& list : rows.by_first)
        std::stable_sort(list.begin(), list.end(),
                         [](const Rows::Row& a, const Rows::Row& b) { return a.total > b.total; });
    return rows;
}

// Where each run of equal values ends.
std::vector<uint32_t> ends_of_runs(std::span<const uint8_t> values) {
    std::vector<uint32_t> ends(values.size());
    for (size_t i = values.size(); i-- > 0;)
        ends[i] =
            i + 1 < values.size() && values[i + 1] == values[i] ? ends[i + 1] : static_cast<uint32_t>(i + 1);
    return ends;
}

bool fits(const Rows::Row& row, std::span<const uint8_t> values, const std::vector<uint32_t>& ends,
          size_t at) {
    // Only what is behind the end may stand for anything.
    for (const Rows::Run& run : row.runs) {
        if (at >= values.size()) return true;
        if (values[at] != run.value) return false;
        if (at + static_cast<size_t>(run.length) > ends[at] && ends[at] < values.size()) return false;
        at += static_cast<size_t>(run.length);
    }
    return true;
}

// Always the longest row that fits. Calls `put(byte, position)`; empty-handed if no row fits somewhere.
template <typename Put>
bool code_values(const Rows& rows, std::span<const uint8_t> values, const std::vector<uint32_t>& ends,
                 const Put& put) {
    for (size_t at = 0; at < values.size();) {
        const auto& list = rows.by_first[values[at]];
        const auto row = std::find_if(list.begin(), list.end(),
                                      [&](const Rows::Row& r) { return fits(r, values, ends, at); });
        if (row == list.end()) return false;
        put(row->byte, at);
        at += static_cast<size_t>(row->total);
    }
    return true;
}

// How the bytes of a Subslice are made.
struct Coding {
    Rows rows;
    std::string comment;
};

Coding fixed_coding(std::span<const uint8_t> values) {
    const std::array<uint8_t, 7> same{0, 1, 2, 3, 4, 5, 6};
    const bool partial = std::any_of(values.begin(), values.end(), [](uint8_t v) { return v == 0 || v > 3; });
    if (partial) return {rows_of(CODE_WITH_PARTIALS, same, 6), "# this one haspartials\n"};
    return {rows_of(CODE_WITHOUT_PARTIALS, same, 4), "# nothing to tell\n"};
}

// Of all catalogues that have symbols enough the one that codes the beginning best.
Coding listed_coding(std::span<const uint8_t> values) {
    std::array<int64_t, 7> counts{};
    for (const uint8_t v : values) ++counts[v];
    std::array<uint8_t, 7> order{0, 1, 2, 3, 4, 5, 6};
    std::stable_sort(order.begin(), order.begin() + 6,
                     [&](uint8_t a, uint8_t b) { return counts[a] > counts[b]; });
    const bool three = counts[order[3]] == 0;
    const std::span<const uint8_t> trial = values.first(std::min(values.size(), TRIAL_POSITIONS));
    const std::vector<uint32_t> ends = ends_of_runs(trial);
    Coding best;
    int64_t least = INT64_MAX;
    const int half = VALUE_LIST_CATALOGUES / 2;
    for (int c = three ? 0 : half; c < (three ? half : VALUE_LIST_CATALOGUES); c += 3) {
        Rows rows = rows_of(FIRST_VALUE_LIST_CODE + c, order, three ? 3 : 6);
        int64_t bytes = 0;
        code_values(rows, trial, ends, [&](uint8_t, size_t) { ++bytes; });
        if (bytes >= least) continue;
        least = bytes;
        std::string comment = "#\n# vmap " + std::to_string(c) + ": ";
        for (size_t i = 0; i < (three ? 3 : 6); ++i) comment += (i ? "," : "") + std::to_string(order[i]);
        best = {std::move(rows), comment + "\n# more words\n"};
    }
    return best;
}

}  // namespace

void append_older_subslice(OlderFilePair& pair, std::span<const uint8_t> values, const Material& m,
                           int subslice, int side) {
    const int64_t unit = egdb_format(pair.type).unit_bytes;
    pair.index += "BASE" + std::to_string(m.bm) + "," + std::to_string(m.bk) + "," + std::to_string(m.wm) +
                  "," + std::to_string(m.wk) + "," + std::to_string(subslice) +
                  (side == BLACK ? ",b:" : ",w:");
    if (values[0] < 4 &&
        std::all_of(values.begin(), values.end(), [&](uint8_t v) { return v == values[0]; })) {
        pair.index += std::string(1, ".+-="[values[0]]) + "\n";
        return;
    }
    const Coding coding = pair.type == EGDB_WLD_FIXED_CODES ? fixed_coding(values) : listed_coding(values);
    const auto start = static_cast<int64_t>(pair.data.size());
    pair.index += std::to_string(start / unit) + "/" + std::to_string(start % unit) + "\n" + coding.comment;
    code_values(coding.rows, values, ends_of_runs(values), [&](uint8_t byte, size_t position) {
        const auto offset = static_cast<int64_t>(pair.data.size());
        if (offset > start && offset % unit == 0) pair.index += std::to_string(position) + "\n";
        pair.data.push_back(byte);
    });
}

void write_older_database(const std::string& folder, EgdbType type, const SolvedSet& set, int pieces) {
    const EgdbFormat format = egdb_format(type);
    for (int n = 2; n <= pieces; ++n) {
        OlderFilePair pair{type, {}, {}};
        for (const EgdbFileName& name : egdb_names_of(type, n)) {
            for (const Material& m : materials_of(name)) {
                const SolvedMaterial& solved = *find_solved(set, m);
                for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
                    std::vector<uint8_t> values(static_cast<size_t>(slice_size(m)));
                    for (size_t i = 0; i < values.size(); ++i)
                        values[i] = static_cast<uint8_t>(
                            packed_value(solved.values[static_cast<size_t>(side)], static_cast<int64_t>(i)));
                    append_older_subslice(pair, values, m, 0, side);
                }
            }
            const std::string path = folder + name.text.data();
            std::ofstream(path + format.data_extension, std::ios::binary)
                << std::string(pair.data.begin(), pair.data.end());
            std::ofstream(path + format.index_extension, std::ios::binary) << pair.index;
        }
    }
}
