// The start of test programs with windows. They are drawn nowhere unless the environment says where.
#include <gtest/gtest.h>

#include <QApplication>
#include <clocale>

#ifdef __SANITIZE_THREAD__
// The toolkit is not compiled for the thread sanitizer, which does not see how its threads wait for each
// other.
extern "C" const char* __tsan_default_options() { return "ignore_noninstrumented_modules=1"; }
// Between tests is put back what is constant in the program, while its threads are idle.
extern "C" const char* __tsan_default_suppressions() { return "race:reset_startup\n"; }
#endif

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // Numbers have a point in them whatever the user's country, as in the program.
    std::setlocale(LC_NUMERIC, "C");
    return RUN_ALL_TESTS();
}
