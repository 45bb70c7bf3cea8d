// The bytes of the data files: decoding one position, the position numbers inside a block, and the check that
// the bytes agree with the index. Files that were written with other catalogues than ours have run lengths
// that don't add up to their own index; the check finds that before a value is read.
//
// All functions here are re-entrant.
#pragma once

#include <cstdint>
#include <span>

#include "egdb/database.h"

// The part of a block that belongs to one Subslice.
struct BlockPart {
    int32_t first_byte = 0;  // inside the block
    int32_t end_byte = 0;
    uint32_t first_position = 0;
    int64_t end_position = 0;  // where the next block takes over, or the number of positions of the Subslice
    int32_t catalogue = 0;     // number of a block code (older_codes.h)
    bool is_last = false;      // of the Subslice: the last byte may stand for more positions than there are
};

// The part in the block with that number, one of the Subslice's. `block_bytes` is how many bytes of the block
// are in the file.
BlockPart block_part(const Subslice& subslice, uint32_t block, int32_t block_bytes);

// Whether the runs of the bytes add up to what the index says. `bytes` is the block.
bool is_part_sound(const BlockPart& part, const uint8_t* bytes);
// The same for moves to conversion.
bool is_mtc_part_sound(const BlockPart& part, const uint8_t* bytes);

// Fills in the position number of each sub-block of the part that begins in it, at the block's own numbers.
// The part is sound.
void number_subblocks(const BlockPart& part, const uint8_t* bytes, std::span<uint32_t, SUBBLOCKS> subindices);

// Decodes position `index` from bytes of which the first stands for positions from `start` on, not above
// `index`; `offset` counts from a sub-block's first byte. Returns the symbol, or -1 with `offset` behind the
// sub-block if the position isn't there.
int decode_symbol(const uint8_t* bytes, int32_t catalogue, int64_t start, uint32_t index, int32_t& offset);
