#include "tools/egdb_catalogue_design.h"

#include <algorithm>
#include <cmath>

#include "egdb/catalogues.h"

namespace {

constexpr int64_t SAMPLE_BYTES = 512;
constexpr int64_t MOST_SAMPLE_POSITIONS = 1500000;
constexpr size_t FOUR_SYMBOL_STRIDE = 3;  // their data are made up, so fewer do

std::vector<CodeRow> catalogue_0() {
    const auto run = [](int symbol, int length) {
        return SymbolRun{static_cast<uint8_t>(symbol), static_cast<uint16_t>(length)};
    };
    std::vector<CodeRow> rows;
    for (int b = 0; b <= 30; ++b) rows.push_back({run(0, 93 + b)});
    for (int b = 31; b <= 61; ++b) rows.push_back({run(0, 123 + 124 * (b - 30))});
    rows.push_back({run(0, 7935)});
    rows.push_back({run(0, 15871)});
    for (int j = 0; j <= 91; ++j)
        for (int s = 1; s <= 2; ++s) rows.push_back({run(0, 92 - j), run(s, 1)});
    for (int s = 1; s <= 2; ++s)
        for (const int length : {1, 3, 7, 15}) rows.push_back({run(s, length)});
    return rows;
}

// Between two catalogues whose longest rows are told, those of the others fall by the same factor.
void lay_longest_rows(std::vector<CatalogueRules>& rules, size_t first, double first_length, size_t last,
                      double last_length) {
    for (size_t i = first; i <= last; ++i) {
        const double part = static_cast<double>(i - first) / static_cast<double>(last - first);
        rules[i].longest =
            static_cast<uint16_t>(std::lround(first_length * std::pow(last_length / first_length, part)));
    }
}

// A stretch of planes as planes of its own. `first` may lie anywhere.
ValuePlanes stretch_of(const ValuePlanes& planes, int64_t first, int64_t count) {
    ValuePlanes stretch = make_planes(count);
    for (size_t v = 0; v < 4; ++v) {
        const std::vector<uint64_t>& from = planes.unfit[v];
        std::vector<uint64_t>& to = stretch.unfit[v];
        const int shift = static_cast<int>(first & 63);
        for (size_t i = 0; i < to.size(); ++i) {
            const size_t word = static_cast<size_t>(first >> 6) + i;
            to[i] = from[word] >> shift;
            if (shift && word + 1 < from.size()) to[i] |= from[word + 1] << (64 - shift);
        }
        if (count & 63) to.back() &= (uint64_t{1} << (count & 63)) - 1;
    }
    return stretch;
}

// Free positions become value 0.
void mark_free_positions(ValuePlanes& planes) {
    for (int64_t i = 0; i < planes.size; ++i) {
        const auto word = static_cast<size_t>(i >> 6);
        uint64_t unfit = 0;
        for (const auto& plane : planes.unfit) unfit |= plane[word];
        if (!(unfit >> (i & 63) & 1)) set_plane_value(planes, i, EGDB_UNKNOWN);
    }
}

// Numbers of a table in lines of some hundred characters.
struct SourceNumbers {
    static constexpr size_t LINE = 100;
    std::string text;
    size_t in_line = LINE;

    void add(uint32_t number) {
        const std::string digits = std::to_string(number) + ",";
        if (in_line + digits.size() > LINE) begin_line("    ");
        text += digits;
        in_line += digits.size();
    }
    void begin_line(const std::string& start) {
        text += "\n" + start;
        in_line = start == "    " ? start.size() : LINE;
    }
};

}  // namespace

std::vector<CatalogueRules> catalogue_rules() {
    std::vector<CatalogueRules> rules(CATALOGUES);
    for (size_t i = FIRST_FOUR_SYMBOL_CATALOGUE; i < CATALOGUES; ++i) rules[i].symbols = 4;
    rules[0].fixed = true;
    rules[0].fixed_rows = catalogue_0();
    rules[1].fixed_rows = {{{0, 90}, {1, 1}}};
    lay_longest_rows(rules, 0, 15871, 1, 15127);
    lay_longest_rows(rules, 1, 15127, 4, 7303);
    lay_longest_rows(rules, 4, 7303, 29, 1259);
    lay_longest_rows(rules, 30, 6971, 49, 1287);
    return rules;
}

void add_design_samples(const SolvedMaterial& solved, int64_t stride, int64_t& passed,
                        std::vector<DesignSample>& samples) {
    static constexpr SymbolValues ORDERS[] = {{1, 2, 3, 0}, {2, 1, 3, 0}, {3, 1, 2, 0}};
    const CodeTree tree = code_tree(catalogue_0());
    for (int side = 0; side < 2; ++side) {
        if (solved.values[static_cast<size_t>(side)].empty()) continue;
        const ValuePlanes planes = planes_of(solved, side, 0, slice_size(solved.material), 1);
        for (int64_t at = 0; at < planes.size;) {
            int64_t end = at;
            for (const SymbolValues& order : ORDERS) {
                int64_t used = 0;
                end = std::max(end, code_quickly(planes, tree, order, at, SAMPLE_BYTES, used));
            }
            if (passed++ % stride == 0) {
                DesignSample sample;
                sample.planes =
                    stretch_of(planes, at, std::min({end, planes.size, at + MOST_SAMPLE_POSITIONS}) - at);
                samples.push_back(std::move(sample));
            }
            at = end;
        }
    }
}

std::vector<Catalogue256> design_all_catalogues(std::vector<DesignSample>& samples, int turns, int threads,
                                                const std::function<void(int turn, int64_t bytes)>& report) {
    const std::vector<CatalogueRules> rules = catalogue_rules();
    const auto middle = rules.begin() + FIRST_FOUR_SYMBOL_CATALOGUE;
    std::vector<Catalogue256> made =
        design_catalogues(samples, {rules.begin(), middle}, turns, threads, report);
    std::vector<DesignSample> marked;
    for (size_t i = 0; i < samples.size(); i += FOUR_SYMBOL_STRIDE) {
        marked.emplace_back();
        marked.back().planes = std::move(samples[i].planes);
        mark_free_positions(marked.back().planes);
    }
    std::vector<Catalogue256> four = design_catalogues(marked, {middle, rules.end()}, 1, threads, report);
    for (Catalogue256& catalogue : four) made.push_back(std::move(catalogue));
    return made;
}

std::string catalogue_source(const std::vector<Catalogue256>& made) {
    SourceNumbers entries, tables;
    uint32_t offset = 0;
    for (size_t c = 0; c < made.size(); ++c) {
        SourceNumbers totals, offsets;
        entries.begin_line("    // catalogue " + std::to_string(c));
        for (const CodeRow& row : made[c]) {
            uint32_t total = 0;
            offsets.add(offset);
            for (const SymbolRun& run : row) {
                entries.add(run.symbol);
                entries.add(run.length & 0xff);
                entries.add(static_cast<uint32_t>(run.length >> 8));
                total += run.length;
                offset += 3;
            }
            entries.add(END_OF_ROW);
            ++offset;
            totals.add(total);
        }
        tables.begin_line("    {{{");
        tables.text += totals.text;
        tables.begin_line("    }}, {{");
        tables.text += offsets.text;
        tables.begin_line("    }}},");
    }
    return "// Made by `tessarin-cli egdb catalogues`; not to be edited.\n"
           "#include \"egdb/catalogues.h\"\n\n"
           "// clang-format off\n"
           "const uint8_t catalogue_entries[] = {" +
           entries.text + "\n};\n\nconst std::array<CatalogueTable, CATALOGUES> catalogues = {{" +
           tables.text + "\n}};\n// clang-format on\n";
}
