// The real main window over the real model with the outside world faked, the windows it opens
// (their size, access keys and names) and the monitor window.
#include "ExampleDesk.h"
#include "qt/widgets/MonitorWindow.h"
#include "qt/widgets/ResultTable.h"
#include "qt/widgets/SetupPanel.h"
#include "qt/widgets/WorkingDialog.h"
#include "testsupport/ScratchDir.h"

#include <QtCharts>
#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;
namespace fs = std::filesystem;

namespace {

const std::string kExamples = std::string(ZAV_SOURCE_DIR) + "/examples/";

struct Desk : ExampleDesk {
    std::unique_ptr<MainWindow> window;

    Desk() : ExampleDesk(ScratchDir()) {
        window = std::make_unique<MainWindow>(*model, dialogs, settings, desktop, nullptr);
        window->show();
        QApplication::setActiveWindow(window.get());
        QTest::qWait(20);
    }
    QLineEdit* field(SetupField f) {
        return static_cast<QLineEdit*>(window->setupPanel()->fieldWidget(f));
    }
    // Types into a box and leaves it with Tab (or presses a shortcut), as the operator would.
    void type(SetupField f, const QString& text, Qt::Key then = Qt::Key_Tab) {
        field(f)->setFocus();
        field(f)->selectAll();
        QTest::keyClicks(field(f), text);
        QTest::keyClick(field(f), then, then == Qt::Key_Tab ? Qt::NoModifier : Qt::ControlModifier);
        QTest::qWait(20);
    }
    void runSteps(const std::vector<const char*>& waves) {
        for (const char* wave : waves)
            dialogs.files.push_back(kExamples + wave);
        for (int step = 1; step <= int(waves.size()); ++step)
            QTest::mouseClick(window->stepButton(step), Qt::LeftButton);
    }
};

// The captions that share an access key (the letter after a single "&") with an earlier one.
std::string clashes(const QStringList& captions) {
    static const QRegularExpression single("(?<!&)&([^&])");
    QString keys, out;
    for (const QString& caption : captions)
        if (const auto m = single.match(caption); m.hasMatch()) {
            out += keys.contains(m.captured(1).toLower()) ? caption + "; " : "";
            keys += m.captured(1).toLower();
        }
    return out.toStdString();
}

// Laptop screens: 1366x768 at 100 % and 1920x1080 at 150 % leave about 1280x650 logical
// pixels once the title bar and a panel are off.
constexpr int kBudgetWidth = 1280, kBudgetHeight = 650, kMainWindowMinHeight = 620;

// What is wrong with one window: too large a minimum size, two captions (buttons, group boxes,
// labels of boxes, menu titles) on one access key, a control without a name.
std::string faults(QWidget* window, int heightBudget = kBudgetHeight) {
    QStringList captions;
    std::string out;
    for (QWidget* w : window->findChildren<QWidget*>()) {
        if (!w->isVisibleTo(window) || w->window() != window)
            continue;
        if (auto* button = qobject_cast<QAbstractButton*>(w))
            captions << button->text();
        else if (auto* box = qobject_cast<QGroupBox*>(w))
            captions << box->title();
        else if (auto* label = qobject_cast<QLabel*>(w); label && label->buddy())
            captions << label->text();
        QAccessibleInterface* a = QAccessible::queryAccessibleInterface(w);
        if ((w->focusPolicy() & Qt::TabFocus) && !w->focusProxy() &&
            (!a || a->text(QAccessible::Name).trimmed().isEmpty()))
            out += w->objectName().toStdString() + " unnamed; ";
    }
    if (auto* main = qobject_cast<QMainWindow*>(window))
        for (QAction* menu : main->menuBar()->actions())
            captions << menu->text();
    const QSize minimum = window->minimumSizeHint().expandedTo(window->minimumSize());
    if (minimum.width() > kBudgetWidth || minimum.height() > heightBudget)
        out += "minimum size " + std::to_string(minimum.height());
    out = clashes(captions) + out;
    return out.empty() ? out : window->windowTitle().toStdString() + ": " + out;
}

// What faults() finds in the window that `open` shows (a modal one blocks in it), which is
// then closed: from its own event loop, since closed while it is still being shown it would
// leave that loop waiting for ever.
std::string faultsOfNextWindow(const std::function<void()>& open) {
    const QWidgetList before = QApplication::topLevelWidgets();
    std::optional<std::string> found;
    auto look = [&] {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (!found && w->isVisible() && !before.contains(w) && !qobject_cast<QMenu*>(w))
                found = faults(w), w->close();
    };
    const int outerLoops = QThread::currentThread()->loopLevel();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QThread::currentThread()->loopLevel() > outerLoops)
            look();
    });
    poll.start(20);
    open();
    QTest::qWait(30);
    look();
    return found.value_or("no window");
}

} // namespace

TEST(MainWindow, LeavingABoxOrAShortcutValidatesFirstAndTabFollowsTheSetUp) {
    Desk d;
    d.type(SetupField::Bandwidth, "0");
    EXPECT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_TRUE(d.field(SetupField::Bandwidth)->hasFocus());
    d.type(SetupField::Bandwidth, "2700.6");
    EXPECT_EQ(d.field(SetupField::Bandwidth)->text().toStdString() + d.model->setup.Bandwidth,
              "27012701");
    // A shortcut typed in a box with a refused value does not run its command.
    d.dialogs.files.push_back((d.dir / "site.zav").string());
    d.type(SetupField::Bandwidth, "0", Qt::Key_S);
    EXPECT_EQ(d.dialogs.messages.size() + d.dialogs.fileRequests.size(), 2u);
    EXPECT_TRUE(d.field(SetupField::Bandwidth)->hasFocus());
    d.type(SetupField::Bandwidth, "2400", Qt::Key_S);
    EXPECT_TRUE(fs::exists(d.dir / "site.zav") && d.model->setup.Bandwidth == "2400");
    QWidget* w = d.window->setupPanel()->fieldWidget(SetupField::Tester);
    for (int i = 1; i < kSetupFieldCount; ++i) {
        do
            w = w->nextInFocusChain();
        while (!(w->focusPolicy() & Qt::TabFocus));
        EXPECT_EQ(w, d.window->setupPanel()->fieldWidget(static_cast<SetupField>(i))) << i;
    }
}

TEST(MainWindow, ThreeStepsFillTheGridsEnableTheOutputsAndSayWhatEachDid) {
    Desk d;
    EXPECT_FALSE(d.window->stepButton(2)->isEnabled());
    d.runSteps({"soundcard.wav"});
    EXPECT_TRUE(d.window->stepButton(2)->hasFocus());
    d.runSteps({"soundcard.wav", "receiver.wav", "external.wav"});
    ResultTable *meas = d.window->measurementsGrid(), *calc = d.window->resultsGrid();
    const auto& grid = d.model->steps.gridCalc;
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(meas->item(row, 2)->text().toStdString(),
                  d.model->steps.gridMeas.Text(row + 1, 3));
    EXPECT_EQ(calc->item(1, 0)->text().toStdString(), grid.Text(9));
    EXPECT_TRUE(d.window->recordTsvButton()->hasFocus());
    EXPECT_EQ(d.window->statusMessage().toStdString(), d.model->steps.verdict);

    QTest::mouseClick(d.window->recordTsvButton(), Qt::LeftButton);
    EXPECT_EQ(d.window->statusMessage().toStdString(),
              "Row 1 appended to " + (d.dir / "log.tab").string());
    EXPECT_FALSE(d.window->action("&Record TSV")->isEnabled());
    d.window->action("&Copy text results to Clipboard")->trigger();
    EXPECT_EQ(d.devices.clipboard.rfind("Program\tZAV\r\n", 0), 0u);
    // Selected cells go to the clipboard as the grid's own text, under its own headings.
    calc->setFocus();
    calc->setRangeSelected(QTableWidgetSelectionRange(1, 1, 2, 2), true);
    QTest::keyClick(calc, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(d.devices.clipboard, "Detector\tFS (dBuV/m)\tNormalised FS (dBuV/m)\r\nRMS\t" +
                                       grid.Text(2, 2) + "\t" + grid.Text(2, 3) + "\r\nQP\t" +
                                       grid.Text(3, 2) + "\t" + grid.Text(3, 3) + "\r\n");

    d.runSteps({"external.wav"}); // a sound card far too loud: orange, and said in words
    const QString tip = meas->item(1, 0)->toolTip();
    EXPECT_EQ(meas->item(1, 0)->foreground().color(), QColor(255, 128, 0));
    EXPECT_TRUE(!tip.isEmpty() && d.window->statusMessage() == tip);
}

TEST(MainWindow, ProfilesAndClosingGoThroughTheModel) {
    Desk d;
    d.dialogs.files.push_back((d.dir / "site.zav").string());
    d.window->action("Save &profile")->trigger();
    EXPECT_TRUE(d.window->windowTitle().startsWith("ZAV - site - V"));
    d.dialogs.files.push_back((d.dir / "example.zav").string());
    d.window->action("&Open profile")->trigger();
    EXPECT_EQ(d.model->state.recent.Caption[1], (d.dir / "site.zav").string());

    // Closing saves the profile and the place, and removes the recordings.
    d.runSteps({"soundcard.wav"});
    const fs::path recording = d.model->steps.TempWave + ".wav";
    ASSERT_TRUE(fs::exists(recording));
    d.type(SetupField::Tester, "Closing time");
    d.window->resize(731, 577);
    d.window->action("E&xit")->trigger();
    EXPECT_FALSE(fs::exists(recording));
    EXPECT_NE(ReadFile(d.dir / "example.zav").find("Tester=Closing time\r\n"), std::string::npos);
    MainWindow again(*d.model, d.dialogs, d.settings, d.desktop, nullptr);
    EXPECT_EQ(again.size(), QSize(731, 577));
}

// Steps 1 and 2 once, then two cycles on one frequency, in the run's own thread.
TEST(MonitorWindow, ARunInItsOwnThreadFillsStatePlotAndTableWhileTheStepsWait) {
    Desk d;
    d.model->state.transfer.URL.clear(); // nothing posted from a test
    for (const char* wave : {"soundcard.wav", "receiver.wav", "external.wav", "external.wav"})
        d.dialogs.files.push_back(kExamples + wave);
    for (QAction* a : d.window->findChildren<QAction*>()) // the menu ties the steps to the run
        if (a->text() == "&Monitor...")
            a->trigger();
    auto* window = static_cast<MonitorWindow*>(
        d.window->findChild<QWidget*>(MonitorWindow::kObjectName, Qt::FindDirectChildrenOnly));
    ASSERT_TRUE(window);
    window->show();
    window->frequencies()->setText("7.1"), window->every()->setText("1s");
    window->cycles()->setText("2");
    window->start();
    EXPECT_FALSE(d.window->stepButton(1)->isEnabled() || window->frequencies()->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->viewModel().running; }, 30000));
    EXPECT_TRUE(d.window->stepButton(1)->isEnabled());
    EXPECT_EQ(window->viewModel().stateText, "Finished, cycle 2");
    EXPECT_EQ(d.dialogs.fileRequests.size(), 4u); // asked from the run's thread, answered here
    ASSERT_EQ(window->table()->rowCount(), 1);
    EXPECT_EQ(window->table()->item(0, 0)->text() + " " + window->table()->item(0, 2)->text(),
              "7.100 MHz 2");
    EXPECT_EQ(static_cast<QLineSeries*>(window->chartView()->chart()->series()[0])->count(), 2);
}

// Every window reached from the main window fits a laptop's screen, has no two items on one
// access key and names every control; the suite runs this again under QT_SCALE_FACTOR=1.5.
TEST(WindowLayout, EveryWindowFitsHasUniqueAccessKeysAndNamedControls) {
    Desk d;
    d.runSteps({"soundcard.wav", "receiver.wav", "external.wav"});
    ASSERT_TRUE(d.window->action("Transfer results")->isEnabled());
    EXPECT_EQ(faults(d.window.get(), kMainWindowMinHeight), "");
    d.model->state.InputDevice = "no such input";
    for (const char* command :
         {"Transfer results", "CalibrateRx", "GPS setup...", "Check for updates", "About ZAV",
          "Plot wave", "Input level...", "getPositionButton"}) {
        QAction* action = d.window->action(command);
        EXPECT_EQ(faultsOfNextWindow([&] {
                      action ? action->trigger()
                             : d.window->findChild<QPushButton*>(command)->click();
                  }),
                  "")
            << command;
    }
    WorkingDialog working(d.window.get());
    working.show();
    EXPECT_EQ(faults(&working), "");
}
