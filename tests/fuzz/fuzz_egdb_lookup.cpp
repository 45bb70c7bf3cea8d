// Any codes as the data of two Subslices, in each form of database, with an index that agrees with them:
// every lookup must find what the codes stand for one after the other. Then, in half of the inputs, one byte
// is changed behind the index' back: whatever the sums are then, lookups must give what a lookup may give.
//
// Bytes 0 to 7: form; catalogue and its step from block to block; map of values; number of cache blocks, none
// for files held whole; place and change of the damage. Behind them pairs of a code and how often it comes,
// over and over until all positions have one.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "check.h"
#include "egdb/block_cache.h"
#include "egdb/catalogues.h"
#include "egdb/index_file.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_lookup.h"
#include "egdb/older_codes.h"
#include "egdb/position_walk.h"
#include "egdb/wld_lookup.h"

namespace {

constexpr Material KINGS{0, 2, 0, 1};
constexpr size_t HEADER_BYTES = 8;
constexpr std::array<EgdbType, 4> TYPES{EGDB_MTC, EGDB_WLD, EGDB_WLD_VALUE_LISTS, EGDB_WLD_FIXED_CODES};
constexpr int LARGEST_VALUE = 6;  // of the fixed codes, some of which stand for more values than there are

struct Input {
    const uint8_t* data;
    size_t size;
    EgdbType type = TYPES[data[0] % TYPES.size()];

    // The code of the values in a block.
    int code(int64_t block) const {
        if (type == EGDB_WLD) return static_cast<int>((data[1] + block * data[2]) % CATALOGUES);
        if (type == EGDB_WLD_VALUE_LISTS) return FIRST_VALUE_LIST_CODE + data[1] % VALUE_LIST_CATALOGUES;
        return data[1] % 2 ? CODE_WITH_PARTIALS : CODE_WITHOUT_PARTIALS;
    }
    int vmap(int64_t block) const { return static_cast<uint8_t>(data[3] + block * data[2]); }
    int listed_value(int symbol) const { return (data[3] + symbol) % (EGDB_WIN_OR_DRAW + 1); }
    int cache_blocks() const { return type == EGDB_MTC ? data[4] % 4 + 1 : data[4] % 5; }
};

// What was written, byte by byte.
struct Written {
    std::vector<uint8_t> bytes;
    std::vector<uint32_t> starts;   // the position that each byte begins with
    std::array<size_t, 2> first{};  // byte of the Subslices
    std::string index;
};

void append(std::string& text, const char* before, int64_t number) {
    text += before;
    text += std::to_string(number);
}

void append_block(const Input& input, std::string& text, int64_t block) {
    append(text, ",", input.code(block));
    append(text, ",", input.vmap(block));
}

// The lines of a Subslice before its numbers.
void append_base(const Input& input, Written& w, int side) {
    const EgdbFormat format = egdb_format(input.type);
    const auto place = static_cast<int64_t>(w.bytes.size());
    append(w.index, side == BLACK ? "BASE0,2,0,1,0,b:" : "BASE0,2,0,1,0,w:", place / format.unit_bytes);
    append(w.index, "/", place % format.unit_bytes);
    if (input.type == EGDB_WLD) append_block(input, w.index, place / format.block_bytes);
    if (input.type == EGDB_WLD_FIXED_CODES && input.code(0) == CODE_WITH_PARTIALS)
        w.index += "\n# haspartials";
    if (input.type == EGDB_WLD_VALUE_LISTS) {
        append(w.index, "\n# vmap ", input.code(0) - FIRST_VALUE_LIST_CODE);
        for (int symbol = 0; symbol < VALUE_LIST_SYMBOLS; ++symbol)
            append(w.index, symbol ? "," : ": ", input.listed_value(symbol));
    }
    w.index += "\n";
}

uint32_t total_of(const Input& input, int64_t block, uint8_t byte) {
    return input.type == EGDB_MTC ? mtc_totals[byte] : block_code(input.code(block)).totals[byte];
}

void write_subslice(const Input& input, Written& w, int side, size_t& pair) {
    const EgdbFormat format = egdb_format(input.type);
    const size_t pairs = (input.size - HEADER_BYTES) / 2;
    append_base(input, w, side);
    const size_t first = w.first[static_cast<size_t>(side)] = w.bytes.size();
    int left = 0;
    uint8_t byte = 0;
    for (int64_t position = 0; position < slice_size(KINGS);) {
        if (left-- == 0) {
            const uint8_t* const at = input.data + HEADER_BYTES + pair++ % pairs * 2;
            byte = at[0];
            left = at[1] < 240 ? at[1] : (at[1] - 239) * 256;
        }
        const size_t place = w.bytes.size();
        const auto block = static_cast<int64_t>(place) / format.block_bytes;
        const int64_t unit = input.type == EGDB_WLD ? format.block_bytes : format.unit_bytes;
        if (place > first && static_cast<int64_t>(place) % unit == 0) {
            append(w.index, "", position);
            if (input.type == EGDB_WLD) append_block(input, w.index, block);
            w.index += "\n";
        }
        w.bytes.push_back(byte);
        w.starts.push_back(static_cast<uint32_t>(position));
        position += total_of(input, block, byte);
    }
}

int expected(const Input& input, const Written& w, int side, uint32_t position) {
    const auto begin = w.starts.begin() + static_cast<std::ptrdiff_t>(w.first[static_cast<size_t>(side)]);
    const auto end =
        side == BLACK ? w.starts.begin() + static_cast<std::ptrdiff_t>(w.first[1]) : w.starts.end();
    const auto at = static_cast<size_t>(std::upper_bound(begin, end, position) - 1 - w.starts.begin());
    const uint8_t byte = w.bytes[at];
    if (input.type == EGDB_MTC) return mtc_of_byte(byte);
    const auto block = static_cast<int64_t>(at) / WLD_BLOCK_BYTES;
    const int symbol =
        catalogue_symbol(block_code(input.code(block)), byte, static_cast<int32_t>(position - w.starts[at]));
    if (input.type == EGDB_WLD)
        return vmap_values[static_cast<size_t>(input.vmap(block))][static_cast<size_t>(symbol)];
    return input.type == EGDB_WLD_VALUE_LISTS ? input.listed_value(symbol) : symbol;
}

// A folder of this program's own.
struct Folder {
    std::string path;
    Folder() {
        path = (std::filesystem::temp_directory_path() / "tessarin-fuzz-XXXXXX").string();
        FUZZ_CHECK(mkdtemp(path.data()) != nullptr);
        path += "/";
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
};

void write_file(const std::string& path, const void* data, size_t bytes) {
    std::ofstream file(path, std::ios::binary);
    FUZZ_CHECK(file.write(static_cast<const char*>(data), static_cast<std::streamsize>(bytes)).flush());
}

void write_files(const Written& w, EgdbType type, const std::string& folder) {
    const EgdbFormat format = egdb_format(type);
    const std::string base = folder + "db3";
    write_file(base + format.data_extension, w.bytes.data(), w.bytes.size());
    write_file(base + format.index_extension, w.index.data(), w.index.size());
}

// The database of the folder, or null if the codes of a file held whole disagree with its index.
std::unique_ptr<EgdbDatabase> open_folder(const Input& input, const std::string& folder) {
    auto database = std::make_unique<EgdbDatabase>();
    database->type = input.type;
    database->folder = folder;
    database->cprsubdatabase = std::make_unique<Cprsubdatabase>();
    database->file_count = 1;
    DbFile& file = database->files[0];
    file.name = {'d', 'b', '3'};
    int64_t memory = 0;
    FUZZ_CHECK(read_index_file(*database, file, memory) == 0);
    if (input.cache_blocks() == 0)
        return autoload_file(*database, file, memory) == 0 ? std::move(database) : nullptr;
    FUZZ_CHECK(open_for_blocks(*database, file, memory) == 0);
    FUZZ_CHECK(allocate_cache(*database, input.cache_blocks()) == 0);
    return database;
}

int look_up(EgdbDatabase& database, int side, uint32_t position, bool conditional) {
    const Position p = position_from_index(position, KINGS);
    return database.type == EGDB_MTC ? mtc_lookup(database, p, side, conditional)
                                     : static_cast<int>(wld_lookup(database, p, side, conditional));
}

// Positions of a side that are worth asking for: around some of the bytes, and the ends.
std::vector<uint32_t> questions(const Written& w, int side) {
    constexpr size_t BYTES = 24;
    const size_t first = w.first[static_cast<size_t>(side)];
    const size_t count = (side == BLACK ? w.first[1] : w.bytes.size()) - first;
    const auto last = static_cast<uint32_t>(slice_size(KINGS) - 1);
    std::vector<uint32_t> asked{0, last};
    // In steps that come to every part of a block.
    const size_t step = std::max<size_t>(1, count / BYTES * 37 % count);
    for (size_t i = 0, at = 0; i < BYTES; ++i, at = (at + step) % count) {
        const uint32_t start = w.starts[first + at];
        asked.push_back(start);
        asked.push_back(start > 0 ? start - 1 : last);
        asked.push_back(at + 1 < count ? (start + w.starts[first + at + 1]) / 2 : last);
    }
    return asked;
}

void check_lookups(const Input& input, EgdbDatabase& database, const Written& w) {
    const int absent = input.type == EGDB_MTC ? int{NO_MTC} : int{EGDB_NOT_IN_CACHE};
    for (const int side : {BLACK, WHITE}) {
        for (const uint32_t position : questions(w, side)) {
            const int value = expected(input, w, side, position);
            const int first = look_up(database, side, position, true);
            FUZZ_CHECK(first == value || (first == absent && input.cache_blocks() > 0));
            FUZZ_CHECK(look_up(database, side, position, false) == value);
            FUZZ_CHECK(look_up(database, side, position, true) == value);
        }
    }
}

void check_range(const Input& input, EgdbDatabase& database, const Written& w) {
    for (const int side : {BLACK, WHITE}) {
        for (const uint32_t position : questions(w, side)) {
            const int value = look_up(database, side, position, false);
            if (input.type == EGDB_MTC)
                FUZZ_CHECK(value == NO_MTC || (value >= 0 && value <= MTC_LARGEST && value % 2 == 0));
            else
                FUZZ_CHECK(value >= 0 && value <= LARGEST_VALUE);
            FUZZ_CHECK(look_up(database, side, position, true) == value);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < HEADER_BYTES + 2) return 0;
    static const Folder folder;
    const Input input{data, size};
    Written w;
    size_t pair = 0;
    for (const int side : {BLACK, WHITE}) write_subslice(input, w, side, pair);
    write_files(w, input.type, folder.path);
    {
        const auto database = open_folder(input, folder.path);
        FUZZ_CHECK(database != nullptr);
        check_lookups(input, *database, w);
    }
    if (data[7] == 0) return 0;
    w.bytes[static_cast<size_t>(data[5] << 8 | data[6]) * 7 % w.bytes.size()] ^= data[7];
    write_files(w, input.type, folder.path);
    if (const auto database = open_folder(input, folder.path)) check_range(input, *database, w);
    return 0;
}
