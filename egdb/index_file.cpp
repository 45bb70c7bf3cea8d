#include "egdb/index_file.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <numeric>
#include <string_view>

#include "base/files.h"
#include "egdb/catalogues.h"
#include "egdb/older_codes.h"

namespace {

constexpr size_t GROWTH = 20000;  // entries by which the arrays of a Subslice grow

// Reads as the library's formatted reader does: what matched is taken, whatever follows.
struct FormattedText {
    std::string_view rest;

    bool at_end() const { return rest.empty(); }

    void skip_space() {
        while (!rest.empty() && (rest[0] == ' ' || (rest[0] >= '\t' && rest[0] <= '\r')))
            rest.remove_prefix(1);
    }

    // Takes the character if it is next.
    bool take(char c) {
        if (rest.empty() || rest[0] != c) return false;
        rest.remove_prefix(1);
        return true;
    }

    bool take(std::string_view text) {
        for (const char c : text)
            if (!take(c)) return false;
        return true;
    }

    // A number behind white space. What doesn't fit stands for the largest number, which is out of any range.
    bool take_number(int32_t& number) {
        skip_space();
        size_t i = !rest.empty() && (rest[0] == '-' || rest[0] == '+') ? 1 : 0;
        const bool negative = i == 1 && rest[0] == '-';
        const size_t digits = i;
        int64_t value = 0;
        for (; i < rest.size() && rest[i] >= '0' && rest[i] <= '9'; ++i)
            value = value > INT32_MAX ? value : value * 10 + (rest[i] - '0');
        if (i == digits) return false;
        rest.remove_prefix(i);
        value = negative ? -value : value;
        number = value > INT32_MAX || value < INT32_MIN ? INT32_MAX : static_cast<int32_t>(value);
        return true;
    }

    // Numbers with a character between each two. Returns how many were there.
    template <size_t N>
    int take_numbers(std::array<int32_t, N>& numbers, std::string_view between) {
        for (size_t i = 0; i < N; ++i) {
            if (i > 0 && !take(between[i - 1])) return static_cast<int>(i);
            if (!take_number(numbers[i])) return static_cast<int>(i);
        }
        return N;
    }
};

struct IndexReader {
    EgdbDatabase& database;
    EgdbFormat format;
    DbFile& file;
    const char* path;
    int64_t& memory_counter;
    FormattedText text;
    Subslice* last = nullptr;  // the last one stored in blocks
    int64_t blocks = 0;        // entries read

    // Logs the text with the path behind it.
    int fail(const char* what) const {
        egdb_log(database, "%s %s\n", what, path);
        return 1;
    }
};

enum { NEXT_ENTRY, END_OF_INDEX, FAILED };

// "BASE" and what it tells about. Makes the Slice's records at its first Subslice.
int read_base(IndexReader& reader, Subslice*& subslice) {
    FormattedText& text = reader.text;
    text.skip_space();
    if (text.at_end()) return END_OF_INDEX;
    std::array<int32_t, 5> n{};
    if (!text.take("BASE") || text.take_numbers(n, ",,,,") != 5 || !text.take(',') || text.at_end()) {
        reader.fail("Error parsing");
        return FAILED;
    }
    const int side = text.take('b') ? BLACK : WHITE;
    if (side == WHITE) text.rest.remove_prefix(1);
    text.take(':');
    const Material m{n[0], n[1], n[2], n[3]};
    const bool in_range = n[0] >= 0 && n[0] <= 5 && n[1] >= 0 && n[1] <= 5 && n[2] >= 0 && n[2] <= 5 &&
                          n[3] >= 0 && n[3] <= 5 && black_count(m) <= EGDB_MAX_SIDE &&
                          white_count(m) <= EGDB_MAX_SIDE;
    if (!in_range || n[4] < 0 || n[4] >= subslice_count(m)) {
        reader.fail("Error parsing");
        return FAILED;
    }
    SubdbSlot& slot = (*reader.database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))];
    if (!slot.subslices) {
        slot.count = subslice_count(m);
        slot.subslices.reset(new (std::nothrow) Subslice[static_cast<size_t>(slot.count)]);
        if (!slot.subslices) {
            egdb_log(reader.database, "Cannot allocate subslice subdb\n");
            return FAILED;
        }
        reader.memory_counter += static_cast<int64_t>(sizeof(Subslice)) * slot.count;
    }
    subslice = &slot.subslices[static_cast<size_t>(n[4])];
    if (subslice->file) {  // told about twice: the chain of Subslices would loop
        reader.fail("Error parsing");
        return FAILED;
    }
    subslice->positions =
        static_cast<uint32_t>(std::min(slice_size(m) - n[4] * SUBSLICE_POSITIONS, SUBSLICE_POSITIONS));
    return NEXT_ENTRY;
}

template <typename Entry>
bool push_entry(IndexReader& reader, std::vector<Entry>& entries, Entry entry, const char* failure) {
    if (entries.size() == entries.capacity()) {
        try {
            entries.reserve(entries.size() + GROWTH);
        } catch (const std::bad_alloc&) {
            egdb_log(reader.database, "%s", failure);
            return false;
        }
    }
    entries.push_back(entry);
    return true;
}

bool push_block(IndexReader& reader, Subslice& subslice, uint32_t index) {
    ++reader.blocks;
    ++subslice.num_idx_blocks;
    return push_entry(reader, subslice.indices, index, "std::malloc error for indices array!\n");
}

bool push_block(IndexReader& reader, Subslice& subslice, uint32_t index, int32_t catalogue, int32_t vmap) {
    return push_block(reader, subslice, index) &&
           push_entry(reader, subslice.catalogidx, static_cast<uint8_t>(catalogue),
                      "std::malloc error for catalogidx array!\n") &&
           push_entry(reader, subslice.vmap, static_cast<uint8_t>(vmap),
                      "std::malloc error for vmap array!\n");
}

bool is_block_code(int32_t catalogue, int32_t vmap) {
    return catalogue >= 0 && catalogue < CATALOGUES && vmap >= 0 && vmap <= 255;
}

// Where the Subslice before this one ends. The older forms don't mark those that lie inside one sub-block.
void end_previous(Subslice& previous, uint32_t startbyte, bool mark) {
    const auto subblock = static_cast<uint32_t>(startbyte / SUBBLOCK_BYTES);
    previous.last_subidx = static_cast<uint8_t>(startbyte % SUBBLOCK_BYTES ? subblock
                                                : subblock                 ? subblock - 1
                                                                           : SUBBLOCKS - 1);
    if (mark && previous.num_idx_blocks == 1 && previous.first_subidx == previous.last_subidx)
        previous.same_subidx = 1;
}

int64_t blocks_of(const EgdbFormat& format, int64_t bytes) {
    return (bytes + format.block_bytes - 1) / format.block_bytes;
}

// A Subslice begins behind the one before it, in its last block or at the start of the block behind.
bool follows(const Subslice& previous, int32_t block, int32_t startbyte) {
    const int64_t last_block = int64_t{previous.first_idx_block} + previous.num_idx_blocks - 1;
    if (block == last_block)
        return previous.num_idx_blocks > 1 ? startbyte > 0 : startbyte > previous.startbyte;
    return block == last_block + 1 && startbyte == 0;
}

constexpr size_t COMMENT_BYTES = 120;  // in which the word of a comment is looked for

// What holds where no comment tells.
void begin_codes(const IndexReader& reader, Subslice& subslice) {
    subslice.code = FIRST_VALUE_LIST_CODE;
    if (reader.database.type != EGDB_WLD_FIXED_CODES) return;
    subslice.code = CODE_WITHOUT_PARTIALS;
    std::iota(subslice.values.begin(), subslice.values.end(), uint8_t{0});
}

// "vmap 3: 1,2,3" or with six values: catalogue and values of the symbols. False if they are out of range;
// what has another number of values says nothing.
bool read_value_list(FormattedText text, Subslice& subslice) {
    int32_t catalogue = 0;
    if (!text.take_number(catalogue) || !text.take(':')) return true;
    std::array<int32_t, VALUE_LIST_SYMBOLS> values{};
    const int count = text.take_numbers(values, ",,,,,");
    if (count != 3 && count != VALUE_LIST_SYMBOLS) return true;
    if (catalogue < 0 || catalogue >= VALUE_LIST_CATALOGUES) return false;
    const auto used = static_cast<size_t>(count);
    for (size_t i = 0; i < used; ++i)
        if (values[i] < EGDB_UNKNOWN || values[i] > EGDB_WIN_OR_DRAW) return false;
    subslice.code = static_cast<uint8_t>(FIRST_VALUE_LIST_CODE + catalogue);
    for (size_t i = 0; i < used; ++i) subslice.values[i] = static_cast<uint8_t>(values[i]);
    return true;
}

// Lines that begin with "#", of which the forms look for a word each; the others pass over them.
bool read_comments(IndexReader& reader, Subslice& subslice) {
    FormattedText& text = reader.text;
    for (text.skip_space(); text.take('#'); text.skip_space()) {
        const std::string_view line = text.rest.substr(0, text.rest.find('\n'));
        text.rest.remove_prefix(line.size());
        const std::string_view seen = line.substr(0, COMMENT_BYTES);
        if (reader.database.type == EGDB_WLD_FIXED_CODES &&
            seen.find("haspartials") != std::string_view::npos)
            subslice.code = CODE_WITH_PARTIALS;
        const size_t list = seen.find("vmap");
        if (reader.database.type == EGDB_WLD_VALUE_LISTS && list != std::string_view::npos &&
            !read_value_list({seen.substr(list + 4)}, subslice))
            return false;
    }
    return true;
}

// Puts the Subslice behind the one before it. False if its bytes cannot begin there.
bool begin_subslice(IndexReader& reader, Subslice& subslice, int32_t block, int32_t startbyte) {
    const int64_t block_bytes = reader.format.block_bytes;
    const bool in_file = block >= 0 && startbyte >= 0 && startbyte < block_bytes &&
                         block * block_bytes + startbyte < reader.file.data_bytes;
    if (!in_file) return false;
    if (reader.last ? !follows(*reader.last, block, startbyte) : block != 0 || startbyte != 0) return false;
    subslice.singlevalue = NO_SINGLE_VALUE;
    subslice.first_idx_block = static_cast<uint32_t>(block);
    subslice.startbyte = static_cast<uint16_t>(startbyte);
    subslice.first_subidx = static_cast<uint8_t>(startbyte / SUBBLOCK_BYTES);
    subslice.file = &reader.file;
    subslice.prev = reader.last;
    if (reader.last) {
        reader.last->next = &subslice;
        end_previous(*reader.last, static_cast<uint32_t>(startbyte), reader.database.type == EGDB_WLD);
    }
    reader.last = &subslice;
    return true;
}

// The position can begin the block, or unit, behind one that begins with `before`.
bool is_next_position(const Subslice& subslice, int32_t position, uint32_t before) {
    return position > 0 && static_cast<uint32_t>(position) > before &&
           static_cast<uint32_t>(position) < subslice.positions;
}

// The next block of the Subslice has bytes in the file.
bool is_next_block_in_file(const IndexReader& reader, const Subslice& subslice) {
    return (int64_t{subslice.first_idx_block} + subslice.num_idx_blocks) * reader.format.block_bytes <
           reader.file.data_bytes;
}

// A line for each block, which tells its catalogue and value map too.
int read_coded_blocks(IndexReader& reader, Subslice& subslice) {
    FormattedText& text = reader.text;
    std::array<int32_t, 4> first{};
    if (text.take_numbers(first, "/,,") != 4) {
        // The rest of a short line is passed over if there is any.
        if (text.at_end()) return reader.fail("Bad line in");
        text.rest.remove_prefix(1);
    }
    const auto [block, startbyte, catalogue, vmap] = first;
    if (!is_block_code(catalogue, vmap) || !begin_subslice(reader, subslice, block, startbyte))
        return reader.fail("Bad line in");
    if (!push_block(reader, subslice, 0, catalogue, vmap)) return 1;
    for (;;) {
        text.skip_space();
        std::array<int32_t, 3> line{};
        if (text.take_numbers(line, ",,") != 3) return 0;
        if (!is_next_position(subslice, line[0], subslice.indices.back()) ||
            !is_next_block_in_file(reader, subslice) || !is_block_code(line[1], line[2]))
            return reader.fail("Bad line in");
        if (!push_block(reader, subslice, static_cast<uint32_t>(line[0]), line[1], line[2])) return 1;
    }
}

// A line for each unit, of which several are a block: the first position of each block is kept.
int read_units(IndexReader& reader, Subslice& subslice) {
    FormattedText& text = reader.text;
    const int32_t unit_bytes = reader.format.unit_bytes;
    const int32_t units_of_block = reader.format.block_bytes / unit_bytes;
    std::array<int32_t, 2> first{};
    if (text.take_numbers(first, "/") != 2) return reader.fail("Bad line in");
    const auto [unit, offset] = first;
    if (unit < 0 || offset < 0 || offset >= unit_bytes ||
        !begin_subslice(reader, subslice, unit / units_of_block, unit % units_of_block * unit_bytes + offset))
        return reader.fail("Bad line in");
    begin_codes(reader, subslice);
    if (!read_comments(reader, subslice)) return reader.fail("Bad line in");
    if (!push_block(reader, subslice, 0)) return 1;
    uint32_t before = 0;
    for (int32_t counter = unit % units_of_block;;) {
        text.skip_space();
        int32_t position = 0;
        if (!text.take_number(position)) return 0;
        if (!is_next_position(subslice, position, before)) return reader.fail("Bad line in");
        before = static_cast<uint32_t>(position);
        if (++counter < units_of_block) continue;
        counter = 0;
        if (!is_next_block_in_file(reader, subslice)) return reader.fail("Bad line in");
        if (!push_block(reader, subslice, before)) return 1;
    }
}

int read_blocks(IndexReader& reader, Subslice& subslice) {
    const bool coded = reader.database.type == EGDB_WLD;
    if ((coded ? read_coded_blocks : read_units)(reader, subslice) != 0) return 1;
    // Most Subslices are small: without this they would take more memory than the data.
    subslice.indices.shrink_to_fit();
    subslice.catalogidx.shrink_to_fit();
    subslice.vmap.shrink_to_fit();
    reader.memory_counter += static_cast<int64_t>(subslice.indices.capacity() * sizeof(uint32_t) +
                                                  subslice.catalogidx.capacity() + subslice.vmap.capacity());
    return 0;
}

int read_subslice(IndexReader& reader, Subslice& subslice) {
    FormattedText& text = reader.text;
    const char c = text.at_end() ? '\0' : text.rest[0];
    if (c >= '0' && c <= '9') return read_blocks(reader, subslice);
    if (reader.database.type == EGDB_MTC) {
        egdb_log(reader.database, "Error parsing mtc index file.\n");
        return 1;
    }
    static constexpr std::string_view VALUES = ".+-=";
    const size_t value = c ? VALUES.find(c) : std::string_view::npos;
    if (value == std::string_view::npos) return reader.fail("Bad singlevalue line in");
    text.rest.remove_prefix(1);
    subslice.singlevalue = static_cast<uint8_t>(value);
    subslice.file = &reader.file;
    return 0;
}

void end_index(IndexReader& reader) {
    if (Subslice* const last = reader.last) {
        last->last_subidx = static_cast<uint8_t>((reader.file.data_bytes - 1) / SUBBLOCK_BYTES % SUBBLOCKS);
        const int32_t blocks = static_cast<int32_t>(last->first_idx_block + last->num_idx_blocks);
        if (blocks != reader.file.num_cache_blocks)
            egdb_log(reader.database, "count of index blocks dont match: %d %d\n", blocks,
                     reader.file.num_cache_blocks);
    }
    egdb_log(reader.database, "%10d index blocks: %s\n", static_cast<int>(reader.blocks), reader.path);
}

}  // namespace

void egdb_log(const EgdbDatabase& database, const char* format, ...) {
    if (!database.log) return;
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    database.log(line);
}

int read_index_text(EgdbDatabase& database, DbFile& file, const char* text, size_t length, const char* path,
                    int64_t& memory_counter) {
    IndexReader reader{database, egdb_format(database.type), file, path, memory_counter, {{text, length}}};
    for (;;) {
        Subslice* subslice = nullptr;
        const int status = read_base(reader, subslice);
        if (status == FAILED) return 1;
        if (status == END_OF_INDEX) break;
        if (read_subslice(reader, *subslice) != 0) return 1;
    }
    end_index(reader);
    return 0;
}

int read_index_file(EgdbDatabase& database, DbFile& file, int64_t& memory_counter) {
    const EgdbFormat format = egdb_format(database.type);
    const std::string base = database.folder + file.name.data();
    const std::string data_path = base + format.data_extension, index_path = base + format.index_extension;
    if (!can_read_file(data_path)) {
        if (file.pieces < format.optional_from) {
            egdb_log(database, "Cannot open %s\n", data_path.c_str());
            return 1;
        }
        if (database.type != EGDB_MTC) egdb_log(database, "%s not present\n", data_path.c_str());
        return 0;
    }
    file.data_bytes = file_size(data_path);
    file.num_cache_blocks = static_cast<int32_t>(blocks_of(format, file.data_bytes));
    std::string text;
    if (read_file(index_path, text) != 0) {
        egdb_log(database, "cannot open index file %s\n", index_path.c_str());
        return 1;
    }
    file.is_present = 1;
    return read_index_text(database, file, text.data(), text.size(), index_path.c_str(), memory_counter);
}
