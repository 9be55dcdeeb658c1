// Fixed locale and time zone, no scratch folder outliving its test; for Qt a QApplication.
#include "ScratchDir.h"

#include <clocale>
#include <ctime>
#ifdef ZAV_QT_MAIN
#include <QApplication>
#endif

int main(int argc, char** argv) {
    setenv("TZ", "UTC", 1);
    tzset();
#ifdef ZAV_QT_MAIN
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
#endif
    std::setlocale(LC_ALL, "C"); // Qt takes the environment's locale; the tests do not
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new zav::test::ScratchDirCleanup);
    return RUN_ALL_TESTS();
}
