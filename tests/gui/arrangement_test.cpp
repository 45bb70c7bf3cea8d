// The arrangement of the windows in rooms of all sizes.
#include "shell/qt/arrangement.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "shell/board_geometry.h"

namespace {

ArrangementInput usual_input() {
    ArrangementInput input;
    input.room = QSize(1900, 950);
    input.square_size = 44;
    input.board_frame = QSize(8, 30);
    input.column_width = 220;
    input.heights = {70, 368, 73, 95, 128};
    input.visible = {false, true, true, false, false};
    return input;
}

std::vector<QRect> all_windows(const Arrangement& places) {
    std::vector<QRect> windows(places.panes.begin(), places.panes.end());
    windows.push_back(places.board);
    return windows;
}

void expect_apart(const Arrangement& places) {
    const std::vector<QRect> windows = all_windows(places);
    for (size_t a = 0; a < windows.size(); ++a)
        for (size_t b = a + 1; b < windows.size(); ++b)
            ASSERT_FALSE(windows[a].intersects(windows[b])) << a << " " << b;
}

// What is visible is inside the area, and no window stands at its very edge.
void expect_inside(const ArrangementInput& input, const Arrangement& places) {
    const QRect inside =
        QRect(QPoint(0, 0), places.area).adjusted(WINDOW_GAP, WINDOW_GAP, -WINDOW_GAP, -WINDOW_GAP);
    ASSERT_TRUE(inside.contains(places.board));
    for (size_t i = 0; i < CHILD_WINDOWS; ++i)
        if (input.visible[i]) {
            ASSERT_TRUE(inside.contains(places.panes[i])) << i;
        }
}

}  // namespace

TEST(Arrangement, OneMoreWindowGoesWhereTheFrameGrowsLeast) {
    const std::vector<QRect> others = {QRect(6, 6, 448, 470), QRect(460, 6, 220, 470)};
    const QSize shown(686, 482), wanted(674, 95);
    EXPECT_EQ(free_place(wanted, 220, shown, QSize(1900, 950), others), QRect(6, 482, 674, 95));
    EXPECT_EQ(free_place(wanted, 220, shown, QSize(1360, 570), others), QRect(686, 6, 668, 95)) << "beside";
    EXPECT_EQ(free_place(wanted, 220, shown, QSize(912, 570), others), QRect(686, 6, 220, 95));
    EXPECT_TRUE(free_place(wanted, 220, shown, QSize(911, 570), others).isEmpty()) << "too narrow";
    EXPECT_EQ(free_place(wanted, 220, shown, QSize(911, 583), others), QRect(6, 482, 674, 95));
    EXPECT_TRUE(free_place(wanted, 220, shown, QSize(911, 582), others).isEmpty()) << "too low";
    EXPECT_TRUE(free_place(wanted, 220, shown, QSize(10, 10), {}).isEmpty());
    EXPECT_EQ(free_place(wanted, 180, shown, QSize(1900, 950), std::span(others).first(1)),
              QRect(460, 6, 220, 95))
        << "narrower, within the frame as it is";
    EXPECT_EQ(free_place(QSize(100, 50), 220, shown, QSize(1900, 950), {}), QRect(6, 6, 100, 50));
}

TEST(Arrangement, OneMoreWindowLiesOverNoOther) {
    std::mt19937 random(7);
    const auto number = [&random](int least, int most) {
        return std::uniform_int_distribution(least, most)(random);
    };
    int found = 0;
    for (int i = 0; i < 3000; ++i) {
        const QSize room(number(50, 1500), number(50, 1000));
        std::vector<QRect> others;
        for (int n = number(0, 5); n > 0; --n)
            others.emplace_back(number(-50, 900), number(-50, 700), number(1, 600), number(1, 500));
        const QRect place = free_place(QSize(number(1, 700), number(1, 300)), 100,
                                       QSize(number(50, 800), number(50, 600)), room, others);
        if (place.isEmpty()) continue;
        ++found;
        ASSERT_TRUE(QRect(QPoint(0, 0), room).contains(place));
        for (const QRect& other : others) ASSERT_FALSE(place.intersects(other));
    }
    EXPECT_GT(found, 500);
}

TEST(Arrangement, TheUsualOneIsTight) {
    const ArrangementInput input = usual_input();
    const Arrangement places = arrange_windows(input);
    EXPECT_EQ(places.square_size, 44);
    EXPECT_EQ(places.board, QRect(6, 6, 448, 470));
    EXPECT_EQ(places.area, QSize(6 + 448 + 6 + 220 + 6, 6 + 470 + 6));
    // The column is as high as the board.
    EXPECT_EQ(places.panes[GAME_WINDOW].top(), places.board.top());
    EXPECT_EQ(places.panes[STATUS_WINDOW].bottom(), places.board.bottom());
    EXPECT_EQ(places.panes[GAME_WINDOW].left(), places.board.right() + 1 + WINDOW_GAP);
}

TEST(Arrangement, RowsComeBelow) {
    ArrangementInput input = usual_input();
    input.visible = {true, true, true, true, true};
    const Arrangement places = arrange_windows(input);
    EXPECT_EQ(places.panes[PONDER_WINDOW].left(), places.board.left());
    EXPECT_EQ(places.panes[PONDER_WINDOW].right(), places.board.right());
    EXPECT_EQ(places.panes[CLOCK_WINDOW].top(), places.panes[PONDER_WINDOW].top());
    EXPECT_EQ(places.panes[CLOCK_WINDOW].left(), places.panes[GAME_WINDOW].left());
    EXPECT_EQ(places.panes[DXP_WINDOW].right(), places.panes[GAME_WINDOW].right());
    EXPECT_GT(places.panes[DXP_WINDOW].top(), places.panes[PONDER_WINDOW].bottom());
    expect_apart(places);
    expect_inside(input, places);
}

TEST(Arrangement, HiddenRowsTakeNoRoom) {
    ArrangementInput input = usual_input();
    const int alone = arrange_windows(input).area.height();
    input.visible[DXP_WINDOW] = true;
    EXPECT_EQ(arrange_windows(input).area.height(), alone + 128 + WINDOW_GAP);
    input.visible[DXP_WINDOW] = false;
    input.visible[CLOCK_WINDOW] = true;
    EXPECT_EQ(arrange_windows(input).area.height(), alone + 95 + WINDOW_GAP);
}

TEST(Arrangement, NeverOverlapsAndFitsWhereItCan) {
    std::mt19937 random(11);
    const auto number = [&random](int low, int high) {
        return std::uniform_int_distribution(low, high)(random);
    };
    for (int round = 0; round < 20000; ++round) {
        ArrangementInput input = usual_input();
        input.room = QSize(number(1, 4000), number(1, 2500));
        input.square_size = number(10, 120);
        input.board_frame = QSize(number(0, 20), number(0, 60));
        input.column_width = number(100, 400);
        for (int& height : input.heights) height = number(40, 300);
        for (bool& visible : input.visible) visible = number(0, 1) != 0;
        const Arrangement places = arrange_windows(input);
        expect_apart(places);
        expect_inside(input, places);
        if (HasFatalFailure()) FAIL() << round;
        if (places.square_size > MIN_SQUARE_SIZE) {
            ASSERT_LE(places.area.width(), input.room.width()) << round;
            ASSERT_LE(places.board.bottom(), input.room.height()) << round;
        }
        ASSERT_LE(places.square_size, std::max(input.square_size, MIN_SQUARE_SIZE));
    }
}

TEST(Arrangement, SmallScreensHaveASmallerBoard) {
    for (const QSize room : {QSize(1024, 600), QSize(800, 480), QSize(640, 400), QSize(1280, 720)}) {
        ArrangementInput input = usual_input();
        input.room = room - QSize(12, 130);
        const Arrangement places = arrange_windows(input);
        EXPECT_LE(places.area.width(), input.room.width()) << room.width();
        EXPECT_LE(places.area.height(), input.room.height()) << room.width();
        expect_apart(places);
    }
}
