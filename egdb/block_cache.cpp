#include "egdb/block_cache.h"

#include <algorithm>
#include <new>

#include "egdb/block_codes.h"

namespace {

constexpr int32_t BLOCKS_OF_A_GROUP = 512;

const char* data_extension(const EgdbDatabase& database) { return egdb_format(database.type).data_extension; }

int64_t block_bytes(const EgdbDatabase& database) { return egdb_format(database.type).block_bytes; }

// Reads the bytes from an offset on, all of which are in the file unless it has been cut. False if they
// cannot be had.
bool read_region(const EgdbDatabase& database, const DbFile& file, int64_t offset, uint8_t* data,
                 size_t bytes, const char* seek_failure) {
    size_t got = 0;
    switch (read_input(file.file_handle, offset, data, bytes, got)) {
        case INPUT_READ:
            if (got == bytes) return true;
            egdb_log(database, "%s%s%s has become shorter\n", database.folder.c_str(), file.name.data(),
                     data_extension(database));
            return false;
        case INPUT_NO_SEEK:
            egdb_log(database, "%s", seek_failure);
            return false;
        default:
            egdb_log(database, "Error reading file\n");
            return false;
    }
}

bool open_data_file(const EgdbDatabase& database, DbFile& file) {
    const std::string path = database.folder + file.name.data() + data_extension(database);
    if (open_input(path, file.file_handle)) return true;
    egdb_log(database, "Cannot open %s\n", path.c_str());
    return false;
}

uint32_t key_of(const EgdbDatabase& database, const DbFile& file, uint32_t block) {
    return block_key(static_cast<uint32_t>(&file - database.files.data()), block);
}

int32_t bytes_in_block(const EgdbDatabase& database, const DbFile& file, uint32_t block) {
    const int64_t bytes = block_bytes(database);
    return static_cast<int32_t>(std::min(bytes, file.data_bytes - block * bytes));
}

// Once for each file: a set of other catalogues disagrees in every block.
void log_unsound(const EgdbDatabase& database, DbFile& file, uint32_t block) {
    if (file.told_unsound) return;
    file.told_unsound = true;
    egdb_log(database,
             "%s%s%s: block %u does not agree with the index: damaged, or written with other catalogues\n",
             database.folder.c_str(), file.name.data(), data_extension(database), block);
}

// Numbers the sub-blocks of one Subslice of an autoloaded file. False if its bytes disagree with the index.
bool number_autoloaded(const EgdbDatabase& database, Subslice& subslice, const uint8_t* data) {
    subslice.autoload_subindices.assign(subslice.last_subidx + subslice.num_idx_blocks * SUBBLOCKS - 63, 0);
    for (uint32_t r = 0; r < subslice.num_idx_blocks; ++r) {
        const uint32_t block = subslice.first_idx_block + r;
        const uint8_t* const bytes = data + block * WLD_BLOCK_BYTES;
        const BlockPart part = block_part(subslice, block, bytes_in_block(database, *subslice.file, block));
        if (!is_part_sound(part, bytes)) {
            log_unsound(database, *subslice.file, block);
            return false;
        }
        std::array<uint32_t, SUBBLOCKS> numbers{};
        number_subblocks(part, bytes, numbers);
        const size_t first = size_t{r} * SUBBLOCKS;
        const size_t count = std::min<size_t>(SUBBLOCKS, subslice.autoload_subindices.size() - first);
        std::copy_n(numbers.begin(), count,
                    subslice.autoload_subindices.begin() + static_cast<std::ptrdiff_t>(first));
    }
    return true;
}

template <typename Visit>
bool visit_subslices(const EgdbDatabase& database, const DbFile& file, const Visit& visit) {
    for (const SubdbSlot& slot : *database.cprsubdatabase) {
        for (int32_t i = 0; slot.subslices && i < slot.count; ++i) {
            Subslice& subslice = slot.subslices[static_cast<size_t>(i)];
            if (subslice.file == &file && subslice.singlevalue == NO_SINGLE_VALUE && !visit(subslice))
                return false;
        }
    }
    return true;
}

// Checks a loaded block against the index, in each Subslice that has bytes in it, and finds the position
// numbers of its sub-blocks. False if it disagrees.
bool number_block(const EgdbDatabase& database, CacheBlock& cache_block) {
    const Subslice* subslice = cache_block.subdb;
    const auto block = static_cast<uint32_t>(cache_block.blocknum);
    while (subslice->first_idx_block == block && subslice->startbyte > 0 && subslice->prev)
        subslice = subslice->prev;
    cache_block.subindices.fill(0);
    const bool mtc = database.type == EGDB_MTC;
    do {
        const BlockPart part = block_part(*subslice, block, bytes_in_block(database, *subslice->file, block));
        if (!(mtc ? is_mtc_part_sound : is_part_sound)(part, cache_block.data)) {
            log_unsound(database, *subslice->file, block);
            return false;
        }
        if (!mtc) number_subblocks(part, cache_block.data, cache_block.subindices);
        subslice = subslice->next;
    } while (subslice && subslice->first_idx_block == block);
    return true;
}

}  // namespace

int autoload_file(EgdbDatabase& database, DbFile& file, int64_t& memory_counter) {
    if (!open_data_file(database, file)) return 1;
    const auto bytes = static_cast<size_t>(file.num_cache_blocks) * WLD_BLOCK_BYTES;
    file.autoload_data = allocate_large(std::max<size_t>(bytes, 1));
    if (!file.autoload_data) {
        egdb_log(database, "Cannot allocate memory for autoload array\n");
        return 1;
    }
    memory_counter += static_cast<int64_t>(bytes);
    auto* const data = static_cast<uint8_t*>(file.autoload_data.get());
    const bool read = read_region(
        database, file, 0, data, static_cast<size_t>(file.data_bytes),
        database.type == EGDB_WLD_FIXED_CODES ? "ERROR: autoload seek failed\n" : "autoload seek failed\n");
    file.file_handle.close();
    if (!read) return 1;
    file.autoload = 1;
    try {
        const bool sound = visit_subslices(database, file, [&](Subslice& subslice) {
            if (!number_autoloaded(database, subslice, data)) return false;
            memory_counter += static_cast<int64_t>(subslice.autoload_subindices.size() * sizeof(uint32_t));
            return true;
        });
        return sound ? 0 : 1;
    } catch (const std::bad_alloc&) {
        egdb_log(database, "Cannot allocate memory for autoload subindices array\n");
        return 1;
    }
}

int open_for_blocks(EgdbDatabase& database, DbFile& file, int64_t& memory_counter) {
    if (!open_data_file(database, file)) return 1;
    if (database.type == EGDB_WLD_VALUE_LISTS) return 0;
    try {
        file.cache_bufferi.assign(static_cast<size_t>(file.num_cache_blocks), -1);
    } catch (const std::bad_alloc&) {
        egdb_log(database, "Cannot allocate memory for cache_bufferi array\n");
        return 1;
    }
    memory_counter += int64_t{file.num_cache_blocks} * static_cast<int64_t>(sizeof(int32_t));
    return 0;
}

int allocate_cache(EgdbDatabase& database, int32_t blocks) {
    try {
        database.ccbs.assign(static_cast<size_t>(blocks), {});
    } catch (const std::bad_alloc&) {
        egdb_log(database, "Cannot allocate memory for ccbs\n");
        return 1;
    }
    const int64_t bytes = block_bytes(database);
    egdb_log(database, "Allocating %d cache buffers of size %d\n", blocks, static_cast<int>(bytes));
    for (int32_t first = 0; first < blocks; first += BLOCKS_OF_A_GROUP) {
        const int32_t last = std::min(first + BLOCKS_OF_A_GROUP, blocks);
        LargeMemory group = allocate_large(static_cast<size_t>((last - first) * bytes));
        if (!group) {
            egdb_log(database, "aligned_large_alloc failure on cache buffers\n");
            return 1;
        }
        for (int32_t i = first; i < last; ++i) {
            CacheBlock& block = database.ccbs[static_cast<size_t>(i)];
            block.next = i + 1 < blocks ? i + 1 : 0;
            block.prev = i > 0 ? i - 1 : blocks - 1;
            block.data = static_cast<uint8_t*>(group.get()) + (i - first) * bytes;
        }
        database.buffers.push_back(std::move(group));
    }
    database.numcacheblocks = blocks;
    database.lru_head = 0;
    if (database.type != EGDB_WLD_VALUE_LISTS) return 0;
    try {
        make_block_hash(database.hash, blocks);
        return 0;
    } catch (const std::bad_alloc&) {
        egdb_log(database, "Cannot allocate memory for cache hashtable\n");
        return 1;
    }
}

int32_t get_block_for(EgdbDatabase& database, const Subslice& subslice, uint32_t block) {
    database.statistics.lru_cache_loads.fetch_add(1, std::memory_order_relaxed);
    const int32_t victim = database.lru_head;
    CacheBlock& cache_block = database.ccbs[static_cast<size_t>(victim)];
    DbFile& file = *subslice.file;
    if (database.hash.is_used()) {
        set_hashed(database.hash, victim, key_of(database, file, block));
    } else {
        if (cache_block.blocknum >= 0)
            cache_block.subdb->file->cache_bufferi[static_cast<size_t>(cache_block.blocknum)] = -1;
        file.cache_bufferi[block] = victim;
    }
    cache_block.subdb = &subslice;
    cache_block.blocknum = static_cast<int32_t>(block);
    cache_block.is_sound =
        read_region(database, file, block * block_bytes(database), cache_block.data,
                    static_cast<size_t>(bytes_in_block(database, file, block)), "seek failed\n") &&
        number_block(database, cache_block);
    database.lru_head = cache_block.next;
    return victim;
}

int32_t cached_block(const EgdbDatabase& database, const DbFile& file, uint32_t block) {
    return database.hash.is_used() ? find_hashed(database.hash, key_of(database, file, block))
                                   : file.cache_bufferi[block];
}

void touch_cache_block(EgdbDatabase& database, int32_t cache_block) {
    database.statistics.lru_cache_hits.fetch_add(1, std::memory_order_relaxed);
    std::vector<CacheBlock>& ring = database.ccbs;
    const auto at = [&](int32_t i) -> CacheBlock& { return ring[static_cast<size_t>(i)]; };
    const int32_t head = database.lru_head;
    CacheBlock& block = at(cache_block);
    if (cache_block == at(head).prev) return;
    if (cache_block == head) {
        database.lru_head = block.next;
        return;
    }
    at(block.prev).next = block.next;
    at(block.next).prev = block.prev;
    block.prev = at(head).prev;
    block.next = head;
    at(block.prev).next = cache_block;
    at(head).prev = cache_block;
}

const Subslice* find_subdb_of_block(const EgdbDatabase& database, const DbFile& file, uint32_t block) {
    const Subslice* found = nullptr;
    visit_subslices(database, file, [&](const Subslice& subslice) {
        if (subslice.first_idx_block > block || subslice.first_idx_block + subslice.num_idx_blocks <= block)
            return true;
        found = &subslice;
        return false;
    });
    return found;
}
