// Any text as the index of a data file of three blocks and a bit. What is accepted must be safe to look up
// by: numbers in their ranges, position numbers that rise, blocks inside the file, a chain without loops.
#include <algorithm>
#include <memory>

#include "check.h"
#include "egdb/catalogues.h"
#include "egdb/index_file.h"

namespace {

constexpr int64_t DATA_BYTES = 3 * WLD_BLOCK_BYTES + 70;

void check_subslice(const EgdbDatabase& database, const Subslice& subslice) {
    if (subslice.singlevalue != NO_SINGLE_VALUE) {
        FUZZ_CHECK(subslice.singlevalue <= 3 && subslice.indices.empty());
        return;
    }
    const size_t blocks = subslice.num_idx_blocks;
    FUZZ_CHECK(subslice.file == &database.files[0]);
    FUZZ_CHECK(blocks >= 1 && subslice.first_idx_block + blocks <= 4);
    FUZZ_CHECK(subslice.indices.size() == blocks && subslice.catalogidx.size() == blocks &&
               subslice.vmap.size() == blocks);
    FUZZ_CHECK(subslice.indices[0] == 0 && subslice.indices.back() < subslice.positions);
    FUZZ_CHECK(std::is_sorted(subslice.indices.begin(), subslice.indices.end()));
    for (const uint8_t catalogue : subslice.catalogidx) FUZZ_CHECK(catalogue < CATALOGUES);
    FUZZ_CHECK(subslice.startbyte < WLD_BLOCK_BYTES && subslice.first_subidx == subslice.startbyte / 64);
    FUZZ_CHECK(subslice.last_subidx < SUBBLOCKS);
    FUZZ_CHECK(blocks > 1 || subslice.last_subidx >= subslice.first_subidx || !subslice.next);
    if (const Subslice* const next = subslice.next) {
        FUZZ_CHECK(next->prev == &subslice);
        FUZZ_CHECK(next->first_idx_block * WLD_BLOCK_BYTES + next->startbyte >
                   subslice.first_idx_block * WLD_BLOCK_BYTES + subslice.startbyte);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto database = std::make_unique<EgdbDatabase>();
    database->cprsubdatabase = std::make_unique<Cprsubdatabase>();
    DbFile& file = database->files[0];
    file.data_bytes = DATA_BYTES;
    file.num_cache_blocks = 4;
    int64_t memory = 0;
    if (read_index_text(*database, file, reinterpret_cast<const char*>(data), size, "", memory) != 0)
        return 0;
    FUZZ_CHECK(memory >= 0);
    for (const SubdbSlot& slot : *database->cprsubdatabase)
        for (int32_t i = 0; slot.subslices && i < slot.count; ++i)
            check_subslice(*database, slot.subslices[static_cast<size_t>(i)]);
    return 0;
}
