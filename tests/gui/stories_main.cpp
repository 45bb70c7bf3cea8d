// The start of the stories: a screen of the test's own before anything asks for one.
#include <gtest/gtest.h>

#include <QApplication>
#include <clocale>

#include "tests/gui/stories.h"

namespace {
constexpr QSize TEST_SCREEN_SIZE(1024, 768);
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::unique_ptr<Screen> screen;
    // Names of tests are asked for where nothing can be shown.
    if (!GTEST_FLAG_GET(list_tests) && missing_tools().isEmpty()) screen = open_screen(TEST_SCREEN_SIZE);
    test_screen = screen.get();
    qputenv("QT_QPA_PLATFORM", screen ? "xcb" : "offscreen");
    if (screen) qputenv("DISPLAY", screen->name.toLocal8Bit());
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    if (screen) begin_stories();
    const int status = RUN_ALL_TESTS();
    end_stories();
    return status;
}
