// Test programs for the Qt layers start here: an application object for widgets (on the
// offscreen platform unless told otherwise), then the same fixed locale and time zone as
// every other test program, and no scratch folder outlives its test.
#include "ScratchDir.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>

int main(int argc, char** argv) {
    setenv("TZ", "UTC", 1);
    tzset();
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    std::setlocale(LC_ALL, "C"); // Qt takes the environment's locale; the tests do not
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new zav::test::ScratchDirCleanup);
    return RUN_ALL_TESTS();
}
