// What an open database is made of: its files, the Slices that they hold and the cache of blocks.
//
// A database is read at its opening by one thread. From then on only lookups touch it, any number of them at
// once: they change nothing but the cache, under its lock, and the statistics.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/input_file.h"
#include "base/memory.h"
#include "base/spin_lock.h"
#include "egdb/block_hash.h"
#include "egdb/driver.h"
#include "egdb/egdb_format.h"
#include "egdb/file_list.h"
#include "egdb/numbering.h"
#include "egdb/statistics.h"

constexpr int64_t WLD_BLOCK_BYTES = 4096;
constexpr int64_t SUBBLOCK_BYTES = 64;
constexpr int SUBBLOCKS = 64;  // of a block
constexpr uint8_t NO_SINGLE_VALUE = 127;

// One for each name of the list.
struct DbFile {
    uint8_t is_present = 0;  // the index file was found and read
    uint8_t pieces = 0;
    uint8_t max_one_side = 0;
    uint8_t autoload = 0;  // the file is held whole in memory
    std::array<char, EGDB_NAME_SIZE> name{};
    int32_t num_cache_blocks = 0;  // size of the data file in blocks, rounded up
    LargeMemory autoload_data;     // the file's bytes if it is autoloaded
    InputFile file_handle;         // open if it is not
    std::vector<int32_t>
        cache_bufferi;          // for each block the cache block that holds it, or -1; if not autoloaded
    int64_t data_bytes = 0;     // size of the data file
    bool told_unsound = false;  // the log has been told that a block disagrees with the index
};

// Up to 2^31 positions of a Slice. Zero is what a record holds that no file tells about.
struct Subslice {
    uint8_t singlevalue = 0;      // the value of all positions, or NO_SINGLE_VALUE: they are stored in blocks
    uint8_t first_subidx = 0;     // sub-block of the first block in which it starts
    uint8_t same_subidx = 0;      // it lies inside one sub-block
    uint8_t last_subidx = 0;      // sub-block of the last block in which it ends
    uint16_t startbyte = 0;       // offset of its first byte in its first block
    uint32_t num_idx_blocks = 0;  // blocks that it touches
    uint32_t first_idx_block = 0;               // number of the first of these in the file
    std::vector<uint32_t> indices;              // position number that starts each block; the first one is 0
    std::vector<uint8_t> catalogidx;            // catalogue of each block; empty in the older forms
    std::vector<uint8_t> vmap;                  // values of the symbols of each block; likewise
    uint8_t code = 0;                           // of all blocks, in the older forms (older_codes.h)
    std::array<uint8_t, 7> values{};            // of the symbols there
    std::vector<uint32_t> autoload_subindices;  // of an autoloaded file: position number at each sub-block
    DbFile* file = nullptr;
    Subslice* next = nullptr;  // the one stored in blocks behind this one in the file
    Subslice* prev = nullptr;
    uint32_t positions = 0;  // how many there are in it
};

inline int32_t code_of_block(const Subslice& subslice, uint32_t r) {
    return subslice.catalogidx.empty() ? subslice.code : subslice.catalogidx[r];
}

struct SubdbSlot {
    std::unique_ptr<Subslice[]> subslices;  // null while no file tells about the Slice
    int32_t count = 0;
};
using Cprsubdatabase = std::array<SubdbSlot, EGDB_SLOTS>;
constexpr int64_t CPRSUBDATABASE_BYTES = 41472;  // counted for it when memory is shared out

// Of a cache block. The blocks form a ring, least recently used first.
struct CacheBlock {
    int32_t next = 0;
    int32_t prev = 0;
    int32_t blocknum = -1;            // number in its file of the block held here, or -1
    const Subslice* subdb = nullptr;  // for which it was loaded
    uint8_t* data = nullptr;
    std::array<uint32_t, SUBBLOCKS> subindices{};  // position number at the first byte of each sub-block
    bool is_sound = false;                         // the codes agree with the index
};

struct EgdbDatabase {
    EgdbType type = EGDB_WLD;
    std::string folder;  // empty or ending in "/"
    int32_t max_pieces = 0;
    int32_t maxkings_1side_8pcs = -1;  // negative for no limit
    void (*log)(const char* text) = nullptr;
    std::unique_ptr<Cprsubdatabase> cprsubdatabase;
    int32_t file_count = 0;
    std::array<DbFile, MAX_EGDB_FILES> files;
    std::vector<DbFile*> autoload_order;  // files that are present, those to be in memory before others first

    int32_t numcacheblocks = 0;
    int32_t lru_head = 0;  // least recently used; the one before it was used last
    std::vector<CacheBlock> ccbs;
    std::vector<LargeMemory> buffers;
    BlockHash hash;  // in place of `cache_bufferi`, of type EGDB_WLD_VALUE_LISTS
    SpinLock lock;   // of the cache: `cache_bufferi`, the ring, the loading of blocks and their sub-indices
    EgdbStatistics statistics;
};

// Writes a formatted line to the database's log, if it has one. What is longer than 1023 bytes is cut.
void egdb_log(const EgdbDatabase& database, const char* format, ...) __attribute__((format(printf, 2, 3)));

// The record of a position's Subslice, or null if no file tells about its Slice.
inline Subslice* find_subslice(const EgdbDatabase& database, const Material& m, int side, int64_t index) {
    const SubdbSlot& slot = (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot(m, side))];
    const int64_t number = index / SUBSLICE_POSITIONS;
    // The number of a position with a man on his promotion row may lie anywhere.
    if (!slot.subslices || index < 0 || number >= slot.count) return nullptr;
    return &slot.subslices[static_cast<size_t>(number)];
}
