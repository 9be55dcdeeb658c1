// Every test program starts here: fixed locale and time zone, so results never depend on the
// machine that runs them, and no scratch folder outlives its test.
#include "ScratchDir.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>

int main(int argc, char** argv) {
    setenv("TZ", "UTC", 1);
    tzset();
    std::setlocale(LC_ALL, "C");
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new zav::test::ScratchDirCleanup);
    return RUN_ALL_TESTS();
}
