// Which blocks of which files are in the cache, as a table of lists: how the form with value lists finds
// them. Under the lock of the cache.
#pragma once

#include <cstdint>
#include <vector>

struct BlockHash {
    // One for each cache block, in one of the lists while it holds something.
    struct Node {
        uint32_t key = 0;
        int32_t bucket = -1;  // -1: in none
        int32_t prev = -1;
        int32_t next = -1;
    };
    std::vector<Node> nodes;
    std::vector<int32_t> buckets;  // the first node of each list, or -1

    bool is_used() const { return !buckets.empty(); }
};

// For that many cache blocks. May throw bad_alloc.
void make_block_hash(BlockHash& hash, int32_t cache_blocks);

constexpr uint32_t block_key(uint32_t file, uint32_t block) { return file << 23 | block; }
uint32_t hash_of_key(uint32_t key);

// The cache block of a key, or -1.
int32_t find_hashed(const BlockHash& hash, uint32_t key);
// The cache block holds the block of that key from now on, and no other.
void set_hashed(BlockHash& hash, int32_t cache_block, uint32_t key);

// Of the lists that are not empty.
float average_list_length(const BlockHash& hash);
