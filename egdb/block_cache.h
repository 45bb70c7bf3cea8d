// Where the bytes of the data files are kept: small files wholly in memory, of the others the blocks used
// last, in a ring of buffers.
#pragma once

#include <cstdint>

#include "egdb/database.h"

// Reads the whole data file into memory, checks it against its index and numbers its sub-blocks. 0; 1 on
// failure, which the log tells. `memory_counter` grows by what was allocated.
int autoload_file(EgdbDatabase& database, DbFile& file, int64_t& memory_counter);

// Opens the data file for reading by blocks. As above.
int open_for_blocks(EgdbDatabase& database, DbFile& file, int64_t& memory_counter);

// Makes a ring of that many empty cache blocks. As above.
int allocate_cache(EgdbDatabase& database, int32_t blocks);

// Loads a block of the Subslice's file in place of the one used least recently. Returns its cache block.
// Under the database's lock, or before lookups run.
int32_t get_block_for(EgdbDatabase& database, const Subslice& subslice, uint32_t block);

// The cache block that holds that block of the file, or -1. Under the lock.
int32_t cached_block(const EgdbDatabase& database, const DbFile& file, uint32_t block);

// Notes that the cache block has just been used. Under the lock.
void touch_cache_block(EgdbDatabase& database, int32_t cache_block);

// A Subslice that has bytes in that block of the file, or null.
const Subslice* find_subdb_of_block(const EgdbDatabase& database, const DbFile& file, uint32_t block);
