// The bytes between the receive thread, which puts them in, and the interface thread, which takes whole
// messages out. One index is each one's own, so there is no lock; a message is seen by the reader only once
// its NUL is in.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "dxp/messages.h"

constexpr uint32_t DXP_RING_SIZE = 1024;  // one byte of it stays unused

struct DxpRing {
    std::atomic<uint32_t> read_index{0};   // moved by the reader
    std::atomic<uint32_t> write_index{0};  // moved by the writer
    std::array<char, DXP_RING_SIZE> bytes{};

    // The writer's: of the message that is coming in.
    uint32_t length = 0;
    char letter = '\0';
};

enum DxpPut : int32_t {
    DXP_PUT_KEPT = 0,             // the message goes on
    DXP_PUT_UNKNOWN_LETTER = -1,  // a whole message, of no known type
    DXP_PUT_TOO_LONG = -2,        // more than DXP_MAX_TEXT bytes without a NUL
    DXP_PUT_FULL = -3,            // there is no room: unread text would be overwritten
};

// The writer puts in a byte. Returns the type of the message that it completes, or one of DxpPut. After
// DXP_PUT_FULL nothing has changed, and the same byte may be put in once the reader has made room: a full
// ring always holds a whole message. After another negative answer nothing more may be put in. A NUL without
// a message is dropped.
int32_t dxp_ring_put(DxpRing& ring, char byte);

// The reader takes the oldest complete message out, without its NUL, into DXP_TEXT_SIZE bytes with a NUL.
// Returns its length; 0 and an empty text if there is none.
size_t dxp_ring_take(DxpRing& ring, char* text);
