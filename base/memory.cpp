#include "base/memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>

namespace {
constexpr size_t HUGE_PAGE = size_t{2} << 20;

void* map_pages(size_t bytes) {
    void* const raw = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return raw == MAP_FAILED ? nullptr : raw;
}

}  // namespace

void* (*map_memory)(size_t bytes) = map_pages;

void LargeMemoryDeleter::operator()(void* memory) const { munmap(memory, bytes); }

LargeMemory allocate_large(size_t bytes) {
    // One huge page more than asked for, so that an aligned block can be cut out of it.
    if (bytes == 0 || bytes > SIZE_MAX - 2 * HUGE_PAGE) return {};
    const size_t rounded = (bytes + HUGE_PAGE - 1) / HUGE_PAGE * HUGE_PAGE;
    void* const raw = map_memory(rounded + HUGE_PAGE);
    if (!raw) return {};
    char* const start = static_cast<char*>(raw);
    const size_t misalignment = reinterpret_cast<uintptr_t>(raw) % HUGE_PAGE;
    const size_t head = misalignment ? HUGE_PAGE - misalignment : 0;
    if (head) munmap(start, head);
    munmap(start + head + rounded, HUGE_PAGE - head);
    madvise(start + head, rounded, MADV_HUGEPAGE);
    // Have the pages now: the first search would otherwise wait for each as it comes upon it.
    std::memset(start + head, 0, rounded);
    return {start + head, LargeMemoryDeleter{rounded}};
}
