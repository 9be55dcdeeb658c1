#include "qt/widgets/MonitorWindow.h"
#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <QAction>
#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QLineEdit>
#include <QLineSeries>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

const std::string kExamples = std::string(ZAV_SOURCE_DIR) + "/examples/";

// A whole run through the window on the demo recordings: steps 1 and 2 once, then two cycles
// on one frequency with the receiver as the operator left it.
TEST(MonitorWindow, ARunInItsOwnThreadFillsStatePlotAndTableWhileTheStepsWait) {
    test::TempDir dir;
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    test::NoDevices devices;
    test::FakeShell shell;
    test::FakeHttp http;
    test::FakeXml xml;
    test::FakeSystemInfo systemInfo;
    test::FakeUpdater updater;
    StartupState startup;
    startup.currentDir = dir.path.string() + "/";
    startup.profilePath = (dir.path / "example.zav").string();
    fs::copy_file(kExamples + "example.zav", startup.profilePath);
    startup.tsvFileName = (dir.path / "log.tab").string();
    MainEnvironment env;
    env.tempDir = startup.currentDir;
    env.processId = "77";
    MainModel model(startup,
                    {dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
    model.open();
    model.state.InputDevice = kFileInputName;
    model.state.transfer.URL.clear(); // nothing posted from a test
    MainWindow main(model, dialogs, settings,
                    {http, xml, shell, systemInfo, updater, devices, devices, devices}, nullptr);
    main.show();
    dialogs.files = {kExamples + "soundcard.wav", kExamples + "receiver.wav",
                     kExamples + "external.wav", kExamples + "external.wav"};

    // Opened from the main window's menu, which ties the steps to the run.
    QAction* open = nullptr;
    for (QAction* a : main.findChildren<QAction*>())
        if (a->text() == "&Monitor...")
            open = a;
    ASSERT_TRUE(open);
    open->trigger();
    auto* found = static_cast<MonitorWindow*>(
        main.findChild<QWidget*>(MonitorWindow::kObjectName, Qt::FindDirectChildrenOnly));
    ASSERT_TRUE(found);
    MonitorWindow& window = *found;
    window.show();
    window.frequencies()->setText("7.1");
    window.every()->setText("1s");
    window.cycles()->setText("2");
    window.start();
    EXPECT_TRUE(window.viewModel().running);
    EXPECT_FALSE(main.stepButton(1)->isEnabled()) << "the manual steps wait while it runs";
    EXPECT_FALSE(window.frequencies()->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.viewModel().running; }, 30000));

    EXPECT_TRUE(main.stepButton(1)->isEnabled());
    EXPECT_EQ(window.viewModel().stateText, "Finished, cycle 2");
    // The three prompts, asked from the run's thread and answered here.
    int prompts = 0;
    for (const auto& m : dialogs.messages)
        prompts += m.buttons == MessageButtons::OkCancel;
    EXPECT_EQ(prompts, 3);
    ASSERT_EQ(window.table()->rowCount(), 1);
    EXPECT_EQ(window.table()->item(0, 0)->text(), "7.100 MHz");
    EXPECT_EQ(window.table()->item(0, 2)->text(), "2");
    // One line of readings and a dashed line per P.372 curve at 7.1 MHz.
    const auto series = window.chartView()->chart()->series();
    ASSERT_EQ(series.size(), 1 + 5);
    EXPECT_EQ(static_cast<QLineSeries*>(series[0])->count(), 2);
    EXPECT_EQ(series[0]->name(), "7.100 MHz");
    std::ifstream log(dir.path / "log.tab");
    int rows = 0;
    for (std::string line; std::getline(log, line);)
        ++rows;
    EXPECT_EQ(rows, 1 + 2);

    // A plan the window cannot run is said, and nothing starts.
    window.every()->setText("soon");
    window.start();
    EXPECT_FALSE(window.viewModel().running);
    EXPECT_NE(dialogs.messages.back().text.find("Every:"), std::string::npos);
}

} // namespace
