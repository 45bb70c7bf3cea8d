// Any bytes on the wire, in any pieces, with the reader coming by at any time: what the ring gives is what a
// plain text of all bytes gives when it is cut at its NULs, up to the first thing that ends the connection.
//
// Each piece of the input begins with a byte: so many bytes follow, from 0 to 127; with its highest bit set
// the reader takes out what is there before them.
#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "check.h"
#include "dxp/ring.h"

namespace {

// The slow and obvious ring.
struct SlowRing {
    std::deque<std::string> complete;
    std::string incoming;
    size_t held = 0;  // bytes in the ring

    int32_t put(char byte) {
        if (byte == '\0' && incoming.empty()) return DXP_PUT_KEPT;
        if (byte != '\0' && incoming.size() == DXP_MAX_TEXT) return DXP_PUT_TOO_LONG;
        if (held == DXP_RING_SIZE - 1) return DXP_PUT_FULL;
        if (byte != '\0') {
            incoming += byte;
            ++held;
            return DXP_PUT_KEPT;
        }
        const int32_t type = dxp_type_of_letter(incoming[0]);
        if (type == DXP_NO_MESSAGE) return DXP_PUT_UNKNOWN_LETTER;
        ++held;
        complete.push_back(incoming);
        incoming.clear();
        return type;
    }
    std::string take() {
        if (complete.empty()) return "";
        const std::string text = complete.front();
        complete.pop_front();
        held -= text.size() + 1;
        return text;
    }
};

struct BothRings {
    DxpRing ring;
    SlowRing slow;

    void take_all() {
        char text[DXP_TEXT_SIZE];
        for (;;) {
            const size_t length = dxp_ring_take(ring, text);
            FUZZ_CHECK(text[length] == '\0');
            FUZZ_CHECK(slow.take() == std::string(text, length));
            if (length == 0) return;
        }
    }
    // False once the connection is to end.
    bool put(char byte) {
        const int32_t answer = dxp_ring_put(ring, byte);
        FUZZ_CHECK(answer == slow.put(byte));
        return answer >= 0;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto rings = std::make_unique<BothRings>();
    bool open = true;
    while (open && !input.empty()) {
        const auto head = static_cast<unsigned char>(input[0]);
        input.remove_prefix(1);
        if (head & 0x80) rings->take_all();
        const std::string_view piece = input.substr(0, head & 0x7f);
        input.remove_prefix(piece.size());
        for (const char byte : piece) {
            open = rings->put(byte);
            if (!open) break;
        }
    }
    rings->take_all();
    return 0;
}
