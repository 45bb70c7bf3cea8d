// Large tables: memory from the system, zero-filled, aligned to two megabytes and marked for huge pages where
// the system has them, which saves address-translation misses in the transposition table and the weights.
#pragma once

#include <cstddef>
#include <memory>

struct LargeMemoryDeleter {
    size_t bytes = 0;
    void operator()(void* memory) const;
};

// The system call by which the memory is had: `bytes` zero bytes, or null. Tests put one in that fails;
// nothing else changes it.
extern void* (*map_memory)(size_t bytes);

// Owns one large block; empty when the allocation failed.
using LargeMemory = std::unique_ptr<void, LargeMemoryDeleter>;

// `bytes` zero bytes, or an empty owner if the system has no memory for them.
LargeMemory allocate_large(size_t bytes);
