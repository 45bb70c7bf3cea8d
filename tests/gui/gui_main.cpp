// The start of test programs with windows. They are drawn nowhere unless the environment says where.
#include <gtest/gtest.h>

#include <QApplication>
#include <clocale>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // Numbers have a point in them whatever the user's country, as in the program.
    std::setlocale(LC_NUMERIC, "C");
    return RUN_ALL_TESTS();
}
