#include "egdb/mtc_lookup.h"

#include "egdb/block_cache.h"
#include "egdb/mtc_codes.h"
#include "egdb/wld_lookup.h"

namespace {

constexpr int MTC_MAX_PIECES = 8;
constexpr int32_t BLOCK_BYTES = egdb_format(EGDB_MTC).block_bytes;

void count(std::atomic<uint32_t>& counter) { counter.fetch_add(1, std::memory_order_relaxed); }

// The byte of a position in block r of its Subslice, from whichever end of the block is nearer: its place in
// the block, or BLOCK_BYTES or more if it isn't there.
int32_t byte_of(const Subslice& subslice, uint32_t r, const uint8_t* bytes, uint32_t index) {
    const std::vector<uint32_t>& indices = subslice.indices;
    if (r + 1 < subslice.num_idx_blocks && indices[r + 1] - index < index - indices[r]) {
        int64_t position = indices[r + 1];
        int32_t offset = BLOCK_BYTES - 1;
        while (position > index && offset >= 0) position -= mtc_totals[bytes[offset--]];
        return offset + 1;
    }
    int64_t position = indices[r];
    int32_t offset = r == 0 ? subslice.startbyte : 0;
    while (position <= index) {
        if (offset >= BLOCK_BYTES) return BLOCK_BYTES;
        position += mtc_totals[bytes[offset++]];
    }
    return offset - 1;
}

int32_t lookup_subslice(EgdbDatabase& database, const Subslice& subslice, uint32_t index, bool conditional) {
    const uint32_t r = greatest_not_above(0, subslice.num_idx_blocks, subslice.indices.data(), index);
    const uint32_t block = subslice.first_idx_block + r;
    int32_t cache_block = subslice.file->cache_bufferi[block];
    if (cache_block >= 0) {
        touch_cache_block(database, cache_block);
    } else {
        if (conditional) return NO_MTC;
        cache_block = get_block_for(database, subslice, block);
    }
    const CacheBlock& cached = database.ccbs[static_cast<size_t>(cache_block)];
    if (!cached.is_sound) return NO_MTC;
    const int32_t offset = byte_of(subslice, r, cached.data, index);
    if (offset >= BLOCK_BYTES) {
        egdb_log(database, "db block array index outside block bounds: %d\nFile %s\n", offset,
                 subslice.file->name.data());
        return NO_MTC;
    }
    count(database.statistics.db_returns);
    return mtc_of_byte(cached.data[offset]);
}

}  // namespace

int32_t mtc_lookup(EgdbDatabase& database, const Position& position, int side, bool conditional) {
    EgdbStatistics& statistics = database.statistics;
    count(statistics.db_requests);
    if (!position.black || !position.white) {
        count(statistics.db_returns);
        return NO_MTC;
    }
    const int black = bit_count(position.black), white = bit_count(position.white);
    if (black + white > MTC_MAX_PIECES || black > EGDB_MAX_SIDE || white > EGDB_MAX_SIDE) {
        count(statistics.db_not_present_requests);
        return NO_MTC;
    }
    const CanonicalPosition canonical = canonical_position(position, side);
    const int64_t index = position_to_index(canonical.position, canonical.material);
    const Subslice* const subslice = find_subslice(database, canonical.material, canonical.side, index);
    if (!subslice || subslice->indices.empty()) {
        count(statistics.db_not_present_requests);
        return NO_MTC;
    }
    return lookup_subslice(database, *subslice, static_cast<uint32_t>(index % SUBSLICE_POSITIONS),
                           conditional);
}
