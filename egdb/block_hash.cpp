#include "egdb/block_hash.h"

#include <algorithm>
#include <cstddef>

namespace {

size_t bucket_of(const BlockHash& hash, uint32_t key) { return hash_of_key(key) % hash.buckets.size(); }

void take_out(BlockHash& hash, const BlockHash::Node& node) {
    if (node.prev >= 0)
        hash.nodes[static_cast<size_t>(node.prev)].next = node.next;
    else
        hash.buckets[static_cast<size_t>(node.bucket)] = node.next;
    if (node.next >= 0) hash.nodes[static_cast<size_t>(node.next)].prev = node.prev;
}

}  // namespace

void make_block_hash(BlockHash& hash, int32_t cache_blocks) {
    const auto blocks = static_cast<size_t>(cache_blocks);
    hash.nodes.assign(blocks, {});
    hash.buckets.assign(std::max<size_t>(blocks * 3 / 2, 1), -1);
}

uint32_t hash_of_key(uint32_t key) {
    uint32_t h = (key << 15) + ~key;
    h = (h ^ h >> 12) * 5;
    h = (h ^ h >> 4) * 2057;
    return h ^ h >> 16;
}

int32_t find_hashed(const BlockHash& hash, uint32_t key) {
    int32_t at = hash.buckets[bucket_of(hash, key)];
    while (at >= 0 && hash.nodes[static_cast<size_t>(at)].key != key)
        at = hash.nodes[static_cast<size_t>(at)].next;
    return at;
}

void set_hashed(BlockHash& hash, int32_t cache_block, uint32_t key) {
    BlockHash::Node& node = hash.nodes[static_cast<size_t>(cache_block)];
    if (node.bucket >= 0) take_out(hash, node);
    const size_t bucket = bucket_of(hash, key);
    int32_t& first = hash.buckets[bucket];
    node = {key, static_cast<int32_t>(bucket), -1, first};
    if (first >= 0) hash.nodes[static_cast<size_t>(first)].prev = cache_block;
    first = cache_block;
}

float average_list_length(const BlockHash& hash) {
    size_t nodes = 0, lists = 0;
    for (const BlockHash::Node& node : hash.nodes) nodes += node.bucket >= 0;
    for (const int32_t first : hash.buckets) lists += first >= 0;
    return lists ? static_cast<float>(nodes) / static_cast<float>(lists) : 0;
}
