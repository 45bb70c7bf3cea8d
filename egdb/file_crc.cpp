#include "egdb/file_crc.h"

#include <array>

#include "base/checksum.h"

namespace {
constexpr size_t PIECE_BYTES = 16384;
}

int file_crc(const InputFile& file, const std::atomic<bool>* abort, uint32_t& crc) {
    std::array<uint8_t, PIECE_BYTES> piece;
    crc = 0;
    uint32_t sum = 0;
    int64_t offset = 0;
    size_t got = 0;
    do {
        if (abort && abort->load(std::memory_order_relaxed)) return 1;
        if (read_input(file, offset, piece.data(), piece.size(), got) != INPUT_READ) return 1;
        sum = crc32(piece.data(), got, sum);
        offset += static_cast<int64_t>(got);
    } while (got == piece.size());
    crc = sum;
    return 0;
}
