// What an open database counts.
#pragma once

#include <atomic>
#include <cstdint>

// Plain counters: with several threads they are approximate.
struct EgdbStatistics {
    std::atomic<uint32_t> lru_cache_hits = 0;
    std::atomic<uint32_t> lru_cache_loads = 0;
    std::atomic<uint32_t> autoload_hits = 0;
    std::atomic<uint32_t> db_requests = 0;
    std::atomic<uint32_t> db_returns = 0;
    std::atomic<uint32_t> db_not_present_requests = 0;
    std::atomic<float> avg_ht_list_length = 0;  // of types that find their blocks by a hash table
};
