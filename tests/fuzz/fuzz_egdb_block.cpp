// Any bytes as a part of a block. The first two are the catalogue and the byte that the part begins at, the
// next three the position that it begins with, how far the number that it is said to hold is from the real
// one, and whether it is the last. Where the check accepts it, decoding from the numbered sub-blocks must
// give for each position what the rows give one after the other.
#include <algorithm>
#include <array>
#include <cstring>

#include "check.h"
#include "egdb/block_codes.h"
#include "egdb/mtc_codes.h"
#include "egdb/older_codes.h"

namespace {

void check_decoding(const BlockPart& part, const uint8_t* bytes) {
    std::array<uint32_t, SUBBLOCKS> subindices{};
    number_subblocks(part, bytes, subindices);
    const CatalogueTable& table = block_code(part.catalogue);
    int64_t position = part.first_position;
    for (int32_t o = part.first_byte; o < part.end_byte; ++o) {
        const int32_t subblock = o / SUBBLOCKS;
        // Before the first boundary decoding starts with the part itself.
        const bool at_start = part.first_byte > subblock * SUBBLOCKS;
        const int64_t start = at_start ? part.first_position : subindices[static_cast<size_t>(subblock)];
        FUZZ_CHECK(start <= position);
        const int32_t total = table.totals[bytes[o]];
        for (const int32_t place : {0, total / 2, total - 1}) {
            int32_t offset = at_start ? part.first_byte - subblock * SUBBLOCKS : 0;
            const int symbol = decode_symbol(bytes + subblock * SUBBLOCKS, part.catalogue, start,
                                             static_cast<uint32_t>(position + place), offset);
            FUZZ_CHECK(symbol == catalogue_symbol(table, bytes[o], place));
            FUZZ_CHECK(offset == o % SUBBLOCKS + 1);
        }
        position += total;
    }
    // Behind the end of a full sub-block there is nothing.
    if (part.end_byte % SUBBLOCKS != 0 || part.end_byte - part.first_byte < SUBBLOCKS) return;
    const int32_t last = part.end_byte / SUBBLOCKS - 1;
    int32_t offset = 0;
    FUZZ_CHECK(decode_symbol(bytes + last * SUBBLOCKS, part.catalogue, subindices[static_cast<size_t>(last)],
                             static_cast<uint32_t>(position), offset) == -1);
    FUZZ_CHECK(offset == SUBBLOCKS);
}

// The check accepts what the bytes add up to and, of the last part, one position less if the last byte has
// more.
template <typename Totals>
void check_sum(BlockPart part, const uint8_t* bytes, const Totals& totals,
               bool (*is_sound)(const BlockPart& part, const uint8_t* bytes), int64_t change) {
    int64_t sum = 0;
    for (int32_t o = part.first_byte; o < part.end_byte; ++o) sum += totals[bytes[o]];
    part.end_position = part.first_position + sum + change;
    const int64_t last_total = totals[bytes[part.end_byte - 1]];
    FUZZ_CHECK(is_sound(part, bytes) == (change == 0 || (change == -1 && part.is_last && last_total > 1)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 7) return 0;
    std::array<uint8_t, WLD_BLOCK_BYTES> block{};
    const size_t first = data[1];
    const size_t count = std::min(size - 6, block.size() - first);
    std::memcpy(block.data() + first, data + 6, count);
    BlockPart part;
    part.catalogue = data[0] % BLOCK_CODES;
    part.first_byte = static_cast<int32_t>(first);
    part.end_byte = static_cast<int32_t>(first + count);
    part.first_position = static_cast<uint32_t>(data[2]) * 1000;
    part.is_last = data[4] % 2 == 1;
    const int64_t change = data[3] % 3 - 1;
    check_sum(part, block.data(), block_code(part.catalogue).totals, is_part_sound, change);
    check_sum(part, block.data(), mtc_totals, is_mtc_part_sound, change);
    check_decoding(part, block.data());
    return 0;
}
