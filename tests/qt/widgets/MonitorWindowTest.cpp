#include "qt/widgets/MonitorWindow.h"
#include "MainWindowDesk.h"

#include <QAction>
#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QPushButton>

#include <gtest/gtest.h>

#include <fstream>

using namespace zav;
using zav::test::Desk;
using zav::test::kExamples;

// A whole run through the window on the demo recordings: steps 1 and 2 once, then two cycles
// on one frequency with the receiver as the operator left it.
TEST(MonitorWindow, ARunInItsOwnThreadFillsStatePlotAndTableWhileTheStepsWait) {
    Desk d;
    d.model->state.transfer.URL.clear(); // nothing posted from a test
    d.model->chooseRecording = nullptr;
    d.dialogs.files = {kExamples + "soundcard.wav", kExamples + "receiver.wav",
                       kExamples + "external.wav", kExamples + "external.wav"};
    // Opened from the main window's menu, which ties the steps to the run.
    for (QAction* a : d.window->findChildren<QAction*>())
        if (a->text() == "&Monitor...")
            a->trigger();
    auto* window = static_cast<MonitorWindow*>(
        d.window->findChild<QWidget*>(MonitorWindow::kObjectName, Qt::FindDirectChildrenOnly));
    ASSERT_TRUE(window);
    window->show();
    window->frequencies()->setText("7.1");
    window->every()->setText("1s");
    window->cycles()->setText("2");
    window->start();
    EXPECT_TRUE(window->viewModel().running);
    EXPECT_FALSE(d.window->stepButton(1)->isEnabled()) << "the manual steps wait while it runs";
    EXPECT_FALSE(window->frequencies()->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->viewModel().running; }, 30000));

    EXPECT_TRUE(d.window->stepButton(1)->isEnabled());
    EXPECT_EQ(window->viewModel().stateText, "Finished, cycle 2");
    // The three prompts, asked from the run's thread and answered here.
    int prompts = 0;
    for (const auto& m : d.dialogs.messages)
        prompts += m.buttons == MessageButtons::OkCancel;
    EXPECT_EQ(prompts, 3);
    ASSERT_EQ(window->table()->rowCount(), 1);
    EXPECT_EQ(window->table()->item(0, 0)->text() + " " + window->table()->item(0, 2)->text(),
              "7.100 MHz 2");
    // One line of readings and a dashed line per P.372 curve at 7.1 MHz.
    const auto series = window->chartView()->chart()->series();
    ASSERT_EQ(series.size(), 1 + 5);
    EXPECT_EQ(static_cast<QLineSeries*>(series[0])->count(), 2);
    std::ifstream log(d.dir / "log.tab");
    int rows = 0;
    for (std::string line; std::getline(log, line);)
        ++rows;
    EXPECT_EQ(rows, 1 + 2);

    // A plan the window cannot run is said, and nothing starts.
    window->every()->setText("soon");
    window->start();
    EXPECT_FALSE(window->viewModel().running);
    EXPECT_NE(d.dialogs.messages.back().text.find("Every:"), std::string::npos);
}
