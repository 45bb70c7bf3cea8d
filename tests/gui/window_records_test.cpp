// Where windows go: records of any content, screens of any size.
#include "shell/qt/window_records.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace {

const QRect SCREEN(0, 0, 1920, 1040);

bool can_be_taken_hold_of(const QRect& place, const QList<QRect>& areas) {
    for (const QRect& area : areas) {
        const QRect edge = QRect(place.left(), place.top(), place.width(), 24) & area;
        if (edge.width() >= std::min(100, place.width()) && edge.height() >= std::min(24, area.height()))
            return true;
    }
    return false;
}

}  // namespace

TEST(WindowRecords, RoundTrip) {
    WindowRecord record{0, 10, -20, 300, 200};
    const QRect place = place_of_record(record);
    EXPECT_EQ(place, QRect(10, -20, 300, 200));
    WindowRecord other{1, 0, 0, 0, 0};
    store_place(other, place);
    EXPECT_EQ(other, (WindowRecord{1, 10, -20, 300, 200}));
}

TEST(WindowRecords, AnyNumberBecomesAPlaceThatAWindowCanHave) {
    constexpr std::array<int32_t, 7> NUMBERS = {INT_MIN, INT_MIN + 1, -40000, 0, 1, 40000, INT_MAX};
    for (const int32_t x : NUMBERS)
        for (const int32_t width : NUMBERS) {
            const QRect place = place_of_record({1, x, x, width, width});
            EXPECT_GE(place.width(), 40);
            EXPECT_LE(place.width(), 16384);
            EXPECT_LE(std::abs(place.x()), 32767);
            EXPECT_LE(std::abs(place.y()), 32767);
        }
}

TEST(WindowRecords, TheSystemChoosesDefaultPlaces) {
    EXPECT_TRUE(has_default_place({1, DEFAULT_PLACE, DEFAULT_PLACE, 622, 552}));
    EXPECT_TRUE(has_default_place({1, 5, DEFAULT_PLACE, 622, 552}));
    EXPECT_FALSE(has_default_place({1, 0, 0, 622, 552}));
    EXPECT_EQ(place_of_record({1, DEFAULT_PLACE, DEFAULT_PLACE, 622, 552}), QRect(0, 0, 622, 552));
}

TEST(WindowRecords, WellPlacedWindowsStay) {
    for (const QRect place : {QRect(0, 0, 622, 552), QRect(1298, 488, 622, 552), QRect(-300, 10, 622, 552),
                              QRect(1800, 900, 622, 552)})
        EXPECT_EQ(place_in_view(place, {SCREEN}), place);
}

TEST(WindowRecords, WindowsOffTheScreenComeBack) {
    const QRect size(0, 0, 622, 552);
    for (const QPoint at : {QPoint(-5000, 0), QPoint(5000, 300), QPoint(100, -300), QPoint(100, 1030),
                            QPoint(-600, 50), QPoint(1900, 50)}) {
        const QRect moved = place_in_view(size.translated(at), {SCREEN});
        EXPECT_TRUE(SCREEN.contains(moved)) << at.x() << " " << at.y();
        EXPECT_EQ(moved.size(), size.size());
    }
}

TEST(WindowRecords, TheNearerScreenTakesIt) {
    const QRect right(1920, 0, 1280, 1024);
    EXPECT_TRUE(right.contains(place_in_view({4000, 100, 600, 500}, {SCREEN, right})));
    EXPECT_TRUE(SCREEN.contains(place_in_view({-4000, 100, 600, 500}, {SCREEN, right})));
    EXPECT_EQ(place_in_view({2000, 100, 600, 500}, {SCREEN, right}), QRect(2000, 100, 600, 500));
}

TEST(WindowRecords, LargeWindowsShrinkToTheScreen) {
    const QRect small(0, 0, 400, 300);
    EXPECT_EQ(place_in_view({50, 60, 622, 552}, {small}), small);
    EXPECT_EQ(place_in_view({50, 60, 200, 552}, {small}), QRect(50, 0, 200, 300));
}

TEST(WindowRecords, WithoutScreensNothingMoves) {
    EXPECT_EQ(place_in_view({50000, 60, 622, 552}, {}), QRect(50000, 60, 622, 552));
}

TEST(WindowRecords, EveryWindowCanBeTakenHoldOf) {
    std::mt19937 random(7);
    const auto number = [&random](int low, int high) {
        return std::uniform_int_distribution(low, high)(random);
    };
    for (int round = 0; round < 20000; ++round) {
        QList<QRect> areas;
        for (int count = number(1, 3); count > 0; --count)
            areas.append({number(-3000, 3000), number(-2000, 2000), number(120, 3000), number(100, 2000)});
        const QRect place(number(-9000, 9000), number(-9000, 9000), number(40, 4000), number(40, 3000));
        const QRect moved = place_in_view(place, areas);
        ASSERT_TRUE(can_be_taken_hold_of(moved, areas)) << round;
        ASSERT_EQ(place_in_view(moved, areas), moved) << round;
        ASSERT_LE(moved.width(), place.width());
        ASSERT_LE(moved.height(), place.height());
    }
}
