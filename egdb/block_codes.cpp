#include "egdb/block_codes.h"

#include "egdb/mtc_codes.h"
#include "egdb/older_codes.h"

namespace {

template <typename Totals>
bool adds_up(const BlockPart& part, const Totals& totals, const uint8_t* bytes) {
    int64_t position = part.first_position;
    for (int32_t o = part.first_byte; o < part.end_byte; ++o) {
        if (position >= part.end_position) return false;
        position += totals[bytes[o]];
    }
    return part.is_last ? position >= part.end_position : position == part.end_position;
}

}  // namespace

BlockPart block_part(const Subslice& subslice, uint32_t block, int32_t block_bytes) {
    const uint32_t r = block - subslice.first_idx_block;
    BlockPart part;
    part.first_byte = r == 0 ? subslice.startbyte : 0;
    part.end_byte = block_bytes;
    part.first_position = subslice.indices[r];
    part.catalogue = code_of_block(subslice, r);
    part.is_last = r + 1 == subslice.num_idx_blocks;
    part.end_position = part.is_last ? subslice.positions : subslice.indices[r + 1];
    if (part.is_last && subslice.next && subslice.next->first_idx_block == block)
        part.end_byte = subslice.next->startbyte;
    return part;
}

bool is_part_sound(const BlockPart& part, const uint8_t* bytes) {
    return adds_up(part, block_code(part.catalogue).totals, bytes);
}

bool is_mtc_part_sound(const BlockPart& part, const uint8_t* bytes) {
    return adds_up(part, mtc_totals, bytes);
}

void number_subblocks(const BlockPart& part, const uint8_t* bytes,
                      std::span<uint32_t, SUBBLOCKS> subindices) {
    const CatalogueTable& table = block_code(part.catalogue);
    uint32_t position = part.first_position;
    for (int32_t o = part.first_byte; o < part.end_byte; ++o) {
        if (o % SUBBLOCK_BYTES == 0) subindices[static_cast<size_t>(o / SUBBLOCK_BYTES)] = position;
        position += table.totals[bytes[o]];
    }
}

int decode_symbol(const uint8_t* bytes, int32_t catalogue_number, int64_t start, uint32_t index,
                  int32_t& offset) {
    const CatalogueTable& table = block_code(catalogue_number);
    int64_t position = start;
    while (position <= index) {
        if (offset >= SUBBLOCK_BYTES) return -1;
        position += table.totals[bytes[offset++]];
    }
    const uint8_t row = bytes[offset - 1];
    return catalogue_symbol(table, row, static_cast<int32_t>(index - (position - table.totals[row])));
}
