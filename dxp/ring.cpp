#include "dxp/ring.h"

namespace {

constexpr uint32_t next_index(uint32_t index) { return (index + 1) % DXP_RING_SIZE; }

}  // namespace

int32_t dxp_ring_put(DxpRing& ring, char byte) {
    if (byte == '\0' && ring.length == 0) return DXP_PUT_KEPT;
    if (byte != '\0' && ring.length == DXP_MAX_TEXT) return DXP_PUT_TOO_LONG;
    const uint32_t at = ring.write_index.load(std::memory_order_relaxed);
    if (next_index(at) == ring.read_index.load(std::memory_order_acquire)) return DXP_PUT_FULL;
    if (byte != '\0') {
        if (ring.length++ == 0) ring.letter = byte;
    } else if (dxp_type_of_letter(ring.letter) == DXP_NO_MESSAGE) {
        return DXP_PUT_UNKNOWN_LETTER;
    }
    ring.bytes[at] = byte;
    ring.write_index.store(next_index(at), std::memory_order_release);
    if (byte != '\0') return DXP_PUT_KEPT;
    ring.length = 0;
    return dxp_type_of_letter(ring.letter);
}

size_t dxp_ring_take(DxpRing& ring, char* text) {
    const uint32_t end = ring.write_index.load(std::memory_order_acquire);
    uint32_t at = ring.read_index.load(std::memory_order_relaxed);
    size_t length = 0;
    while (at != end && ring.bytes[at] != '\0') {
        text[length++] = ring.bytes[at];
        at = next_index(at);
    }
    if (at == end)
        length = 0;  // nothing, or a message that is still coming in
    else
        ring.read_index.store(next_index(at), std::memory_order_release);
    text[length] = '\0';
    return length;
}
