#include "MainWindowDesk.h"
#include "qt/widgets/ResultTable.h"

#include <QAction>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

#include <fstream>

using namespace zav;
using zav::test::Desk;
using zav::test::kExamples;
namespace fs = std::filesystem;

TEST(MainWindow, LeavingABoxOrAShortcutValidatesFirstAndARefusalKeepsTheFocus) {
    Desk d;
    d.typeAndLeave(SetupField::Bandwidth, "0");
    ASSERT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_TRUE(d.field(SetupField::Bandwidth)->hasFocus());
    d.typeAndLeave(SetupField::Bandwidth, "2700.6");
    EXPECT_EQ(d.field(SetupField::Bandwidth)->text(), "2701");
    EXPECT_EQ(d.model->setup.Bandwidth, "2701");

    // A shortcut typed in a box with a refused value does not run its command.
    QLineEdit* bandwidth = d.field(SetupField::Bandwidth);
    bandwidth->setFocus();
    bandwidth->selectAll();
    QTest::keyClicks(bandwidth, "0");
    const std::string saved = (d.dir / "site.zav").string();
    d.dialogs.files.push_back(saved);
    QTest::keyClick(bandwidth, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(d.dialogs.messages.size(), 2u);
    EXPECT_TRUE(d.dialogs.fileRequests.empty());
    QTest::qWait(10);
    EXPECT_TRUE(bandwidth->hasFocus());
    bandwidth->selectAll();
    QTest::keyClicks(bandwidth, "2400");
    QTest::keyClick(bandwidth, Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(fs::exists(saved));
    EXPECT_EQ(d.model->setup.Bandwidth, "2400");
    // Tab walks the set-up in the order of entry.
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
    d.model->options.Verbose = false;
    d.model->chooseRecording = nullptr; // the operator picks each file
    d.dialogs.files = {kExamples + "soundcard.wav", kExamples + "receiver.wav",
                       kExamples + "external.wav"};
    EXPECT_FALSE(d.window->stepButton(2)->isEnabled());
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    EXPECT_TRUE(d.window->stepButton(2)->hasFocus());
    QTest::mouseClick(d.window->stepButton(2), Qt::LeftButton);
    QTest::mouseClick(d.window->stepButton(3), Qt::LeftButton);
    ASSERT_EQ(d.dialogs.fileRequests.size(), 3u);

    ResultTable* meas = d.window->measurementsGrid();
    ResultTable* calc = d.window->resultsGrid();
    for (int row = 1; row <= 6; ++row)
        EXPECT_EQ(d.cell(meas, row, 3).toStdString(), d.model->steps.gridMeas.Text(row, 3));
    EXPECT_EQ(d.cell(calc, 2, 1).toStdString(), d.model->steps.gridCalc.Text(9));
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
    const auto& grid = d.model->steps.gridCalc;
    EXPECT_EQ(d.devices.clipboard, "Detector\tFS (dBuV/m)\tNormalised FS (dBuV/m)\r\nRMS\t" +
                                       grid.Text(2, 2) + "\t" + grid.Text(2, 3) + "\r\nQP\t" +
                                       grid.Text(3, 2) + "\t" + grid.Text(3, 3) + "\r\n");
}

TEST(MainWindow, ALoudSoundCardIsOrangeAndSaidInWords) {
    Desk d;
    d.recordings.push_back(kExamples + "external.wav"); // far too loud for a sound card
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    const QTableWidgetItem* rms = d.window->measurementsGrid()->item(1, 0);
    EXPECT_EQ(rms->foreground().color(), QColor(255, 128, 0));
    EXPECT_FALSE(rms->toolTip().isEmpty());
    EXPECT_EQ(d.window->statusMessage(), rms->toolTip());
}

TEST(MainWindow, OptionsProfilesAndClosingGoThroughTheModel) {
    Desk d;
    d.window->action("&Measurement interval as samples")->trigger();
    EXPECT_EQ(d.field(SetupField::Interval)->text(), "8");

    const std::string saved = (d.dir / "site.zav").string();
    d.dialogs.files.push_back(saved);
    d.window->action("Save &profile")->trigger();
    EXPECT_TRUE(d.window->windowTitle().startsWith("ZAV - site - V"));
    d.typeAndLeave(SetupField::Tester, "Changed");
    d.dialogs.files.push_back((d.dir / "example.zav").string());
    d.window->action("&Open profile")->trigger();
    EXPECT_EQ(d.field(SetupField::Tester)->text(), "Demo");
    EXPECT_EQ(d.model->state.recent.Caption[1], saved); // saved before it was left

    // Closing saves the profile and the place, and removes the recordings.
    d.recordings.push_back(kExamples + "soundcard.wav");
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    const std::string recording = d.model->steps.TempWave + ".wav";
    ASSERT_TRUE(fs::exists(recording));
    d.typeAndLeave(SetupField::Tester, "Closing time");
    d.window->resize(731, 577);
    d.window->action("E&xit")->trigger();
    EXPECT_FALSE(fs::exists(recording));
    std::ifstream profile(d.dir / "example.zav");
    const std::string text((std::istreambuf_iterator<char>(profile)), {});
    EXPECT_NE(text.find("Tester=Closing time\r\n"), std::string::npos);
    MainWindow again(*d.model, d.dialogs, d.settings, d.desktop, nullptr);
    EXPECT_EQ(again.size(), QSize(731, 577));
}
