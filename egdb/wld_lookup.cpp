#include "egdb/wld_lookup.h"

#include <cstring>
#include <mutex>

#include "egdb/block_cache.h"
#include "egdb/block_codes.h"
#include "egdb/catalogues.h"

namespace {

void count(std::atomic<uint32_t>& counter) { counter.fetch_add(1, std::memory_order_relaxed); }

// Where the decoding of a position begins: inside a sub-block, at an offset to its first byte.
struct DecodeStart {
    const uint8_t* bytes = nullptr;
    uint32_t block = 0;
    uint32_t position = 0;
    int32_t offset = 0;
};

EgdbValue decode(EgdbDatabase& database, const Subslice& subslice, const DecodeStart& start, uint32_t index) {
    const uint32_t r = start.block - subslice.first_idx_block;
    int32_t offset = start.offset;
    const int symbol = decode_symbol(start.bytes, code_of_block(subslice, r), start.position, index, offset);
    if (symbol < 0) {
        egdb_log(database, "db block array index outside block bounds: %d\nFile %s\n", offset,
                 subslice.file->name.data());
        return EGDB_UNKNOWN;
    }
    count(database.statistics.db_returns);
    const auto s = static_cast<size_t>(symbol);
    return static_cast<EgdbValue>(subslice.vmap.empty() ? subslice.values[s]
                                                        : vmap_values[subslice.vmap[r]][s]);
}

EgdbValue lookup_autoloaded(EgdbDatabase& database, const Subslice& subslice, uint32_t index) {
    count(database.statistics.autoload_hits);
    const std::vector<uint32_t>& subindices = subslice.autoload_subindices;
    const uint32_t j = greatest_not_above(subslice.first_subidx, static_cast<uint32_t>(subindices.size()),
                                          subindices.data(), index);
    DecodeStart start;
    start.block = subslice.first_idx_block + j / SUBBLOCKS;
    start.bytes = static_cast<const uint8_t*>(subslice.file->autoload_data.get()) +
                  (int64_t{subslice.first_idx_block} * SUBBLOCKS + j) * SUBBLOCK_BYTES;
    start.position = subindices[j];
    if (j == subslice.first_subidx)
        start.offset = static_cast<int32_t>(subslice.startbyte - j * SUBBLOCK_BYTES);
    return decode(database, subslice, start, index);
}

// Finds the sub-block of block r in a cached block. Under the lock.
DecodeStart find_in_block(const Subslice& subslice, uint32_t r, const CacheBlock& cache_block,
                          uint32_t index) {
    const auto& subindices = cache_block.subindices;
    const bool is_last = r + 1 == subslice.num_idx_blocks;
    const uint32_t first = subslice.first_subidx;
    // The last Subslice of a file doesn't have the mark, so its only sub-block is told by its ends.
    const bool in_first =
        r == 0 && (subslice.same_subidx || first == SUBBLOCKS - 1 ||
                   (is_last && subslice.last_subidx == first) || subindices[first + 1] > index);
    DecodeStart start;
    start.block = subslice.first_idx_block + r;
    if (in_first) {
        start.bytes = cache_block.data + first * SUBBLOCK_BYTES;
        start.offset = static_cast<int32_t>(subslice.startbyte - first * SUBBLOCK_BYTES);
        return start;
    }
    const uint32_t j = greatest_not_above(
        r == 0 ? first + 1 : 0, is_last ? subslice.last_subidx + 1u : SUBBLOCKS, subindices.data(), index);
    start.bytes = cache_block.data + j * SUBBLOCK_BYTES;
    start.position = subindices[j];
    return start;
}

EgdbValue lookup_cached(EgdbDatabase& database, const Subslice& subslice, uint32_t index, bool conditional) {
    const uint32_t r = greatest_not_above(0, subslice.num_idx_blocks, subslice.indices.data(), index);
    const uint32_t block = subslice.first_idx_block + r;
    std::array<uint8_t, SUBBLOCK_BYTES> bytes;
    DecodeStart start;
    {
        const std::lock_guard guard(database.lock);
        int32_t cache_block = cached_block(database, *subslice.file, block);
        if (cache_block >= 0) {
            touch_cache_block(database, cache_block);
        } else {
            if (conditional) return EGDB_NOT_IN_CACHE;
            cache_block = get_block_for(database, subslice, block);
        }
        const CacheBlock& cached = database.ccbs[static_cast<size_t>(cache_block)];
        if (!cached.is_sound) return EGDB_UNKNOWN;
        start = find_in_block(subslice, r, cached, index);
        // The buffer may be used for another block as soon as the lock is free.
        std::memcpy(bytes.data(), start.bytes, bytes.size());
    }
    start.bytes = bytes.data();
    return decode(database, subslice, start, index);
}

EgdbValue lookup_subslice(EgdbDatabase& database, const Subslice& subslice, uint32_t index,
                          bool conditional) {
    if (subslice.singlevalue != NO_SINGLE_VALUE) {
        count(database.statistics.db_returns);
        return static_cast<EgdbValue>(subslice.singlevalue);
    }
    if (subslice.file->autoload) return lookup_autoloaded(database, subslice, index);
    return lookup_cached(database, subslice, index, conditional);
}

}  // namespace

EgdbValue wld_lookup(EgdbDatabase& database, const Position& position, int side, bool conditional) {
    EgdbStatistics& statistics = database.statistics;
    count(statistics.db_requests);
    for (const int loser : {BLACK, WHITE}) {
        if (pieces_of(position, loser)) continue;
        count(statistics.db_returns);
        return side == loser ? EGDB_LOSS : EGDB_WIN;
    }
    const int black = bit_count(position.black), white = bit_count(position.white);
    // The oldest form knows nothing of what the others do not have.
    const EgdbValue absent = database.type == EGDB_WLD_FIXED_CODES ? EGDB_UNKNOWN : EGDB_SUBDB_UNAVAILABLE;
    if (black + white > egdb_type_rules(database.type).most_pieces || black > EGDB_MAX_SIDE ||
        white > EGDB_MAX_SIDE) {
        count(statistics.db_not_present_requests);
        return absent;
    }
    const CanonicalPosition canonical = canonical_position(position, side);
    const int64_t index = position_to_index(canonical.position, canonical.material);
    const Subslice* const subslice = find_subslice(database, canonical.material, canonical.side, index);
    if (!subslice) {
        count(statistics.db_not_present_requests);
        const bool other_side = find_subslice(database, canonical.material, canonical.side ^ 1, 0) != nullptr;
        return other_side ? EGDB_UNKNOWN : absent;
    }
    return lookup_subslice(database, *subslice, static_cast<uint32_t>(index % SUBSLICE_POSITIONS),
                           conditional);
}
