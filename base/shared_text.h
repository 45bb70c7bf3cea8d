// A text that one thread rewrites while another shows it, handed over whole.
//
// A sequence lock: the version is odd while the text is rewritten, and a reader who saw it odd or changing
// reads again. The writer never waits, whatever readers do. Each step of the payload is atomic and ordered by
// itself, so there is no fence that a thread sanitizer would not understand.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Texts of up to SIZE - 1 characters; what is longer is cut.
template <size_t SIZE>
struct SharedText {
    static constexpr size_t WORDS = (SIZE + sizeof(uint64_t) - 1) / sizeof(uint64_t);

    std::atomic<uint32_t> version{0};
    std::array<std::atomic<uint64_t>, WORDS> words{};

    // By one thread at a time.
    void publish(const char* text) {
        const size_t length = strnlen(text, SIZE - 1);
        const uint32_t before = version.load(std::memory_order_relaxed);
        version.store(before + 1, std::memory_order_relaxed);
        for (size_t at = 0; at <= length; at += sizeof(uint64_t)) {
            char bytes[sizeof(uint64_t)] = {};
            if (at < length) std::memcpy(bytes, text + at, std::min(length - at, sizeof bytes));
            uint64_t word = 0;
            std::memcpy(&word, bytes, sizeof word);
            words[at / sizeof(uint64_t)].store(word, std::memory_order_release);
        }
        version.store(before + 2, std::memory_order_release);
    }

    // The version of the text that is there; it changes with every text published.
    uint32_t current_version() const { return version.load(std::memory_order_acquire); }

    // Copies the text into SIZE bytes. False, and the buffer is untouched, if the writer was faster each
    // time; the next try will do.
    bool read(char* buffer) const {
        constexpr int TRIES = 100;
        char copy[WORDS * sizeof(uint64_t)];
        for (int i = 0; i < TRIES; ++i) {
            const uint32_t before = version.load(std::memory_order_acquire);
            if (before & 1) continue;
            size_t at = 0;
            for (bool ended = false; !ended && at < sizeof copy; at += sizeof(uint64_t)) {
                const uint64_t word = words[at / sizeof(uint64_t)].load(std::memory_order_acquire);
                std::memcpy(copy + at, &word, sizeof word);
                ended = std::memchr(copy + at, '\0', sizeof word) != nullptr;
            }
            if (version.load(std::memory_order_relaxed) != before) continue;
            std::memcpy(buffer, copy, std::min(SIZE, at));
            return true;
        }
        return false;
    }
};
