// The text and the event that two threads share.
#include <atomic>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/manual_event.h"
#include "base/shared_text.h"

TEST(SharedText, KeepsWhatWasPublishedAndCutsWhatIsTooLong) {
    SharedText<20> text;
    char buffer[20];
    ASSERT_TRUE(text.read(buffer));
    EXPECT_STREQ(buffer, "");
    for (size_t length = 0; length < 40; ++length) {
        const std::string published(length, static_cast<char>('a' + length % 26));
        const uint32_t before = text.current_version();
        text.publish(published.c_str());
        EXPECT_NE(text.current_version(), before);
        ASSERT_TRUE(text.read(buffer));
        EXPECT_EQ(buffer, published.substr(0, 19));
    }
    text.publish("short");
    ASSERT_TRUE(text.read(buffer));
    EXPECT_STREQ(buffer, "short");
}

TEST(SharedText, IsNeverTorn) {
    static SharedText<2000> text;
    std::atomic<bool> done{false};
    std::thread writer([&] {
        char line[2000];
        for (int i = 0; i < 60000; ++i) {
            // All characters and the length tell the same number.
            const int kind = i % 20;
            const size_t length = static_cast<size_t>(50 + kind * 97);
            std::memset(line, 'a' + kind, length);
            line[length] = '\0';
            text.publish(line);
        }
        done = true;
    });
    char buffer[2000];
    int whole = 0;
    while (!done || whole == 0) {
        if (!text.read(buffer) || buffer[0] == '\0') continue;
        const int kind = buffer[0] - 'a';
        ASSERT_EQ(std::strlen(buffer), static_cast<size_t>(50 + kind * 97));
        ASSERT_EQ(std::strspn(buffer, std::string(1, buffer[0]).c_str()), std::strlen(buffer));
        ++whole;
    }
    writer.join();
    EXPECT_GT(whole, 0);
}

TEST(SharedText, AReaderGivesUpOnAWriterThatStandsStill) {
    SharedText<20> text;
    text.publish("before");
    ++text.version;
    char buffer[20] = "untouched";
    EXPECT_FALSE(text.read(buffer));
    EXPECT_STREQ(buffer, "untouched");
}

TEST(ManualEvent, StaysSignalledUntilItIsReset) {
    ManualEvent event;
    EXPECT_FALSE(event.is_signalled());
    EXPECT_FALSE(event.wait_for(1));
    event.signal();
    EXPECT_TRUE(event.wait_for(0));
    EXPECT_TRUE(event.wait_for(0));
    event.reset();
    EXPECT_FALSE(event.wait_for(0));
}

TEST(ManualEvent, PublishesWhatWasWrittenBefore) {
    ManualEvent event;
    int value = 0;
    for (int i = 1; i <= 500; ++i) {
        event.reset();
        std::thread other([&] {
            value = i;
            event.signal();
        });
        ASSERT_TRUE(event.wait_for(10000));
        EXPECT_EQ(value, i);
        other.join();
    }
}
