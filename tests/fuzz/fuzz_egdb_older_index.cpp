// Any text as the index of a data file of two blocks and a bit, in the forms whose index counts in units: the
// first byte chooses the form. What is accepted must be safe to look up by.
#include <algorithm>
#include <array>
#include <memory>

#include "check.h"
#include "egdb/index_file.h"
#include "egdb/older_codes.h"

namespace {

constexpr std::array<EgdbType, 3> TYPES{EGDB_WLD_FIXED_CODES, EGDB_WLD_VALUE_LISTS, EGDB_MTC};

void check_subslice(const EgdbDatabase& database, const Subslice& subslice, int64_t file_blocks) {
    if (subslice.singlevalue != NO_SINGLE_VALUE) {
        FUZZ_CHECK(subslice.singlevalue <= 3 && subslice.indices.empty());
        FUZZ_CHECK(database.type != EGDB_MTC || !subslice.file);
        return;
    }
    const size_t blocks = subslice.num_idx_blocks;
    FUZZ_CHECK(subslice.file == &database.files[0]);
    FUZZ_CHECK(blocks >= 1 && subslice.first_idx_block + static_cast<int64_t>(blocks) <= file_blocks);
    FUZZ_CHECK(subslice.indices.size() == blocks && subslice.catalogidx.empty() && subslice.vmap.empty());
    FUZZ_CHECK(subslice.indices[0] == 0 && subslice.indices.back() < subslice.positions);
    FUZZ_CHECK(std::is_sorted(subslice.indices.begin(), subslice.indices.end()));
    FUZZ_CHECK(subslice.startbyte < egdb_format(database.type).block_bytes);
    if (database.type == EGDB_WLD_FIXED_CODES)
        FUZZ_CHECK(subslice.code == CODE_WITH_PARTIALS || subslice.code == CODE_WITHOUT_PARTIALS);
    if (database.type == EGDB_WLD_VALUE_LISTS) {
        FUZZ_CHECK(subslice.code >= FIRST_VALUE_LIST_CODE &&
                   subslice.code < FIRST_VALUE_LIST_CODE + VALUE_LIST_CATALOGUES);
        for (const uint8_t value : subslice.values) FUZZ_CHECK(value <= EGDB_WIN_OR_DRAW);
    }
    if (const Subslice* const next = subslice.next) FUZZ_CHECK(next->prev == &subslice);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    auto database = std::make_unique<EgdbDatabase>();
    database->type = TYPES[data[0] % TYPES.size()];
    database->cprsubdatabase = std::make_unique<Cprsubdatabase>();
    const int64_t block = egdb_format(database->type).block_bytes;
    DbFile& file = database->files[0];
    file.data_bytes = 2 * block + 70;
    file.num_cache_blocks = 3;
    int64_t memory = 0;
    if (read_index_text(*database, file, reinterpret_cast<const char*>(data + 1), size - 1, "", memory) != 0)
        return 0;
    for (const SubdbSlot& slot : *database->cprsubdatabase)
        for (int32_t i = 0; slot.subslices && i < slot.count; ++i)
            check_subslice(*database, slot.subslices[static_cast<size_t>(i)], file.num_cache_blocks);
    return 0;
}
