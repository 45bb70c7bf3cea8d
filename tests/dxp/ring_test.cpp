// The ring between the receive thread and the interface thread.
#include "dxp/ring.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::string_literals;

// The last answer; what comes behind a negative one is not put in.
int32_t put(DxpRing& ring, const std::string& bytes) {
    int32_t last = DXP_PUT_KEPT;
    for (const char byte : bytes) {
        last = dxp_ring_put(ring, byte);
        if (last < 0) break;
    }
    return last;
}

std::string take(DxpRing& ring) {
    char text[DXP_TEXT_SIZE];
    const size_t length = dxp_ring_take(ring, text);
    EXPECT_EQ(text[length], '\0');
    return {text, length};
}

}  // namespace

TEST(DxpRing, AMessageComesOutOnceItsNulIsIn) {
    DxpRing ring;
    EXPECT_EQ(take(ring), "");
    EXPECT_EQ(put(ring, "E3"), DXP_PUT_KEPT);
    EXPECT_EQ(take(ring), "");
    EXPECT_EQ(put(ring, "0"), DXP_PUT_KEPT);
    EXPECT_EQ(take(ring), "");
    EXPECT_EQ(put(ring, "\0"s), DXP_GAMEEND);
    EXPECT_EQ(take(ring), "E30");
    EXPECT_EQ(take(ring), "");
}

TEST(DxpRing, EveryLetterHasItsType) {
    DxpRing ring;
    const std::string letters = "RAMECBKF";
    const int32_t types[] = {DXP_GAMEREQ, DXP_GAMEACC, DXP_MOVE,    DXP_GAMEEND,
                             DXP_CHAT,    DXP_BACKREQ, DXP_BACKACC, DXP_GAMEREQ_FISCHER};
    for (size_t i = 0; i < letters.size(); ++i)
        EXPECT_EQ(put(ring, letters.substr(i, 1) + "\0"s), types[i]) << letters[i];
    for (const char letter : letters) EXPECT_EQ(take(ring), std::string(1, letter));
}

TEST(DxpRing, MessagesComeOutInTheirOrder) {
    DxpRing ring;
    EXPECT_EQ(put(ring, "K0\0E30\0"s), DXP_GAMEEND);
    EXPECT_EQ(put(ring, "M00"), DXP_PUT_KEPT);
    EXPECT_EQ(take(ring), "K0");
    EXPECT_EQ(take(ring), "E30");
    EXPECT_EQ(take(ring), "");
    EXPECT_EQ(put(ring, "00322800\0"s), DXP_MOVE);
    EXPECT_EQ(take(ring), "M0000322800");
}

TEST(DxpRing, ALoneNulIsNoMessage) {
    DxpRing ring;
    EXPECT_EQ(put(ring, "\0\0\0"s), DXP_PUT_KEPT);
    EXPECT_EQ(take(ring), "");
    EXPECT_EQ(put(ring, "K0\0"s), DXP_BACKACC);
    EXPECT_EQ(put(ring, std::string(5000, '\0')), DXP_PUT_KEPT) << "and takes no room";
    EXPECT_EQ(put(ring, "K1\0"s), DXP_BACKACC);
    EXPECT_EQ(take(ring), "K0");
    EXPECT_EQ(take(ring), "K1");
    EXPECT_EQ(take(ring), "");
}

TEST(DxpRing, AnUnknownLetterIsFoundAtTheEndOfItsMessage) {
    DxpRing ring;
    EXPECT_EQ(put(ring, "K0\0"s), DXP_BACKACC);
    EXPECT_EQ(put(ring, "X12"), DXP_PUT_KEPT);
    EXPECT_EQ(put(ring, "\0"s), DXP_PUT_UNKNOWN_LETTER);
    EXPECT_EQ(take(ring), "K0") << "what came before is there";
    EXPECT_EQ(take(ring), "");
}

TEST(DxpRing, TheLongestTextIsTakenAndNoLongerOne) {
    DxpRing ring;
    const std::string longest = "C" + std::string(DXP_MAX_TEXT - 1, 'c');
    EXPECT_EQ(longest.size(), 132u);
    EXPECT_EQ(put(ring, longest + "\0"s), DXP_CHAT);
    EXPECT_EQ(take(ring), longest);
    EXPECT_EQ(put(ring, longest), DXP_PUT_KEPT);
    EXPECT_EQ(put(ring, "c"), DXP_PUT_TOO_LONG) << "the 133rd byte without a NUL";
}

TEST(DxpRing, UnreadTextIsNeverOverwritten) {
    DxpRing ring;
    std::string sent;
    int32_t answer = DXP_PUT_KEPT;
    while ((answer = put(ring, "K0\0"s)) == DXP_BACKACC) sent += "K0\0"s;
    EXPECT_EQ(answer, DXP_PUT_FULL);
    EXPECT_EQ(sent.size(), 1023u);
    std::string read;
    for (std::string text = take(ring); !text.empty(); text = take(ring)) read += text + "\0"s;
    EXPECT_EQ(read, sent);
}

// A byte for which there was no room leaves no trace.
TEST(DxpRing, AFullRingGoesOnOnceThereIsRoom) {
    DxpRing ring;
    for (int i = 0; i < 1020 / 4; ++i) ASSERT_EQ(put(ring, "Cab\0"s), DXP_CHAT);
    ASSERT_EQ(put(ring, "Mes"), DXP_PUT_KEPT);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(put(ring, "s"), DXP_PUT_FULL);
    EXPECT_EQ(put(ring, "\0"s), DXP_PUT_FULL);
    EXPECT_EQ(take(ring), "Cab");
    EXPECT_EQ(put(ring, "sag"), DXP_PUT_KEPT);
    EXPECT_EQ(put(ring, "e"), DXP_PUT_KEPT);
    EXPECT_EQ(put(ring, "\0"s), DXP_PUT_FULL);
    EXPECT_EQ(take(ring), "Cab");
    EXPECT_EQ(put(ring, "\0"s), DXP_MOVE);
    for (int i = 2; i < 1020 / 4; ++i) EXPECT_EQ(take(ring), "Cab");
    EXPECT_EQ(take(ring), "Message");
    EXPECT_EQ(take(ring), "");
}

TEST(DxpRing, MessagesGoOverTheEndOfTheRing) {
    DxpRing ring;
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = "C" + std::string(random() % DXP_MAX_TEXT, static_cast<char>('a' + i % 26));
        ASSERT_EQ(put(ring, text + "\0"s), DXP_CHAT);
        ASSERT_EQ(take(ring), text);
    }
}

// The indices are all that keeps the two threads apart.
TEST(DxpRing, AWriterAndAReaderMeetNowhere) {
    const auto ring = std::make_unique<DxpRing>();
    constexpr int MESSAGES = 20000;
    std::jthread writer([&] {
        for (int i = 0; i < MESSAGES; ++i) {
            const std::string text =
                "C" + std::string(static_cast<size_t>(i % 131), static_cast<char>('a' + i % 26)) + "\0"s;
            for (const char byte : text)
                while (dxp_ring_put(*ring, byte) == DXP_PUT_FULL) std::this_thread::yield();
        }
    });
    for (int i = 0; i < MESSAGES;) {
        const std::string text = take(*ring);
        if (text.empty()) {
            std::this_thread::yield();
            continue;
        }
        EXPECT_EQ(text, "C" + std::string(static_cast<size_t>(i % 131), static_cast<char>('a' + i % 26)));
        ++i;
    }
}
