#include "egdb/older_codes.h"

#include <algorithm>

namespace {

constexpr size_t OLDER_CODES = BLOCK_CODES - CATALOGUES;
constexpr size_t ENTRY_BYTES = 80000;  // room for all rows

struct Codes {
    std::array<uint8_t, ENTRY_BYTES> entries{};
    std::array<std::array<uint16_t, CATALOGUE_ROWS>, OLDER_CODES> totals{};
    std::array<std::array<uint32_t, CATALOGUE_ROWS>, OLDER_CODES> offsets{};
};

struct Writer {
    Codes& codes;
    size_t bytes = 0;
    size_t code = 0;
    size_t row = 0;

    constexpr void begin(size_t number) {
        code = number;
        row = 0;
    }
    constexpr void begin_row() { codes.offsets[code][row] = static_cast<uint32_t>(bytes); }
    constexpr void run(int symbol, int length) {
        codes.entries[bytes++] = static_cast<uint8_t>(symbol);
        codes.entries[bytes++] = static_cast<uint8_t>(length & 255);
        codes.entries[bytes++] = static_cast<uint8_t>(length >> 8);
        codes.totals[code][row] = static_cast<uint16_t>(codes.totals[code][row] + length);
    }
    constexpr void end_row() {
        codes.entries[bytes++] = END_OF_ROW;
        ++row;
    }
    constexpr void run_row(int symbol, int length) {
        begin_row();
        run(symbol, length);
        end_row();
    }
};

constexpr std::array<int, 36> RUNS_WITH_PARTIALS = [] {
    std::array<int, 36> runs{};
    for (size_t i = 0; i < 33; ++i) runs[i] = static_cast<int>(i) + 3;
    runs[33] = 70;
    runs[34] = 106;
    runs[35] = 500;
    return runs;
}();

constexpr std::array<int, 58> RUNS_WITHOUT_PARTIALS = [] {
    constexpr std::array<int, 30> LONG{36,   40,   44,   48,   52,   56,   60,   70,   80,   90,
                                       100,  150,  200,  250,  300,  400,  500,  650,  800,  1000,
                                       1200, 1400, 1600, 2000, 2400, 3200, 4000, 5000, 7500, 10000};
    std::array<int, 58> runs{};
    size_t i = 0;
    for (int n = 5; n <= 32; ++n) runs[i++] = n;
    for (const int n : LONG) runs[i++] = n;
    return runs;
}();

// The last rows are runs of values that there are not; nothing writes them.
constexpr void write_fixed(Writer& writer) {
    writer.begin(CODE_WITHOUT_PARTIALS - CATALOGUES);
    for (int b = 0; b < 256; ++b) {
        if (b >= 81) {
            writer.run_row((b - 81) / 58 + 1, RUNS_WITHOUT_PARTIALS[static_cast<size_t>((b - 81) % 58)]);
            continue;
        }
        writer.begin_row();
        for (int i = 0, rest = b; i < 4; ++i, rest /= 3) writer.run(rest % 3 + 1, 1);
        writer.end_row();
    }
    writer.begin(CODE_WITH_PARTIALS - CATALOGUES);
    for (int b = 0; b < 256; ++b) {
        if (b >= 36) {
            writer.run_row((b - 36) / 36, RUNS_WITH_PARTIALS[static_cast<size_t>((b - 36) % 36)]);
            continue;
        }
        writer.begin_row();
        writer.run(b % 6, 1);
        writer.run(b / 6, 1);
        writer.end_row();
    }
}

constexpr int HALF = VALUE_LIST_CATALOGUES / 2;
constexpr int LONGEST_ROW = 60000;

// Whole numbers at first, then each longer than the one before by a part of it that grows with the catalogue.
constexpr void write_runs(Writer& writer, int symbol, int count, int catalogue) {
    const int short_runs = count / 2;
    int length = 0;
    for (int i = 0; i < count; ++i) {
        length += i < short_runs ? 1 : std::max(1, length * (catalogue % HALF + 1) / 20);
        length = std::min(length, LONGEST_ROW);
        writer.run_row(symbol, length);
    }
}

// Runs of each symbol, most of them of symbol 0, then one of that with another symbol behind it.
constexpr void write_catalogue(Writer& writer, int number) {
    const bool three = number < HALF;
    const int symbols = three ? 3 : VALUE_LIST_SYMBOLS;
    writer.begin(static_cast<size_t>(number));
    write_runs(writer, 0, three ? 96 : 56, number);
    for (int symbol = 1; symbol < symbols; ++symbol) write_runs(writer, symbol, three ? 32 : 16, number);
    for (int length = 1; length <= (three ? 48 : 24); ++length) {
        for (int symbol = 1; symbol < symbols; ++symbol) {
            writer.begin_row();
            writer.run(0, length);
            writer.run(symbol, 1);
            writer.end_row();
        }
    }
}

const Codes older_codes = [] {
    Codes codes;
    Writer writer{codes};
    for (int i = 0; i < VALUE_LIST_CATALOGUES; ++i) write_catalogue(writer, i);
    write_fixed(writer);
    return codes;
}();

const std::array<CatalogueTable, OLDER_CODES> older_tables = [] {
    std::array<CatalogueTable, OLDER_CODES> tables{};
    for (size_t i = 0; i < OLDER_CODES; ++i)
        tables[i] = {older_codes.totals[i], older_codes.offsets[i], older_codes.entries.data()};
    return tables;
}();

}  // namespace

const CatalogueTable& block_code(int number) {
    return number < CATALOGUES ? catalogue(number) : older_tables[static_cast<size_t>(number - CATALOGUES)];
}
