// One job over a long range of numbers, done in chunks by several threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

// Calls `work(first, last)` for the chunks of 0 to `count` - 1, each once, on `threads` threads of which the
// caller's is one. Which thread does which chunk is left to chance, so the work of different chunks must not
// depend on one another. Where the system has no further thread to give, those that are there do it all.
// `work` may throw bad_alloc and nothing else; then so does this, when all threads have ended.
template <typename Work>
void for_chunks(int64_t count, int64_t chunk, int threads, const Work& work) {
    std::atomic<int64_t> next = 0;
    std::atomic<bool> out_of_memory = false;
    const auto run = [&] {
        try {
            while (!out_of_memory) {
                const int64_t first = next.fetch_add(chunk, std::memory_order_relaxed);
                if (first >= count) return;
                work(first, std::min(first + chunk, count));
            }
        } catch (const std::bad_alloc&) {
            out_of_memory = true;
        }
    };
    const int64_t useful = std::min<int64_t>(threads, (count + chunk - 1) / chunk);
    std::vector<std::jthread> helpers;
    try {
        for (int64_t i = 1; i < useful; ++i) helpers.emplace_back(run);
    } catch (const std::system_error&) {
        // Fewer threads, the same result.
    } catch (const std::bad_alloc&) {
        // The same; where memory is short for the work too, that tells it.
    }
    run();
    helpers.clear();
    if (out_of_memory) throw std::bad_alloc();
}
