#include "MainWindowDesk.h"
#include "qt/widgets/ResultTable.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>

using namespace zav;
using zav::test::Desk;
using zav::test::kExamples;
namespace fs = std::filesystem;

TEST(MainWindow, LeavingABoxValidatesAndARefusedValueKeepsTheFocus) {
    Desk d;
    d.typeAndLeave(SetupField::Bandwidth, "0");
    ASSERT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_EQ(d.dialogs.messages[0].text, "Bandwidth must be > 0 and  <= 200000");
    EXPECT_EQ(d.dialogs.messages[0].title, "Value error:");
    EXPECT_TRUE(d.field(SetupField::Bandwidth)->hasFocus());

    d.typeAndLeave(SetupField::Bandwidth, "2700.6");
    EXPECT_EQ(d.field(SetupField::Bandwidth)->text(), "2701");
    EXPECT_EQ(d.model->setup.Bandwidth, "2701");
    EXPECT_EQ(d.dialogs.messages.size(), 1u);

    // Enter checks the box where it stands and selects the tidied text.
    QLineEdit* freq = d.field(SetupField::Frequency);
    freq->setFocus();
    freq->selectAll();
    QTest::keyClicks(freq, "0.1");
    QTest::keyClick(freq, Qt::Key_Return);
    EXPECT_EQ(freq->text(), "0.100");
    EXPECT_EQ(freq->selectedText(), "0.100");
}

TEST(MainWindow, ThreeStepsFromFilesFillTheGridsAndEnableTheOutputs) {
    Desk d;
    d.model->options.Verbose = false;
    EXPECT_FALSE(d.window->stepButton(2)->isEnabled());
    EXPECT_FALSE(d.window->recordTsvButton()->isEnabled());
    for (const char* f : {"soundcard.wav", "receiver.wav", "external.wav"})
        d.recordings.push_back(kExamples + f);
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    EXPECT_TRUE(d.window->stepButton(2)->isEnabled());
    EXPECT_TRUE(d.window->stepButton(2)->hasFocus());
    QTest::mouseClick(d.window->stepButton(2), Qt::LeftButton);
    QTest::mouseClick(d.window->stepButton(3), Qt::LeftButton);

    QTableWidget* meas = d.window->measurementsGrid();
    QTableWidget* calc = d.window->resultsGrid();
    EXPECT_EQ(meas->horizontalHeaderItem(2)->text(), "External");
    EXPECT_EQ(meas->verticalHeaderItem(1)->text(), "RMS (V)");
    EXPECT_EQ(calc->horizontalHeaderItem(0)->text(), "Rx (dBm)");
    for (int row = 1; row <= 6; ++row)
        EXPECT_EQ(d.cell(meas, row, 3).toStdString(), d.model->steps.gridMeas.Text(row, 3));
    EXPECT_EQ(d.cell(calc, 2, 1).toStdString(), d.model->steps.gridCalc.Text(9));
    EXPECT_FALSE(d.cell(calc, 4, 3).isEmpty());
    EXPECT_TRUE(d.window->recordTsvButton()->isEnabled());
    EXPECT_TRUE(d.window->recordTsvButton()->hasFocus());
    EXPECT_TRUE(d.window->action("&Save text file")->isEnabled());

    // The judgement of the last step in words, and each action's account in the status bar.
    EXPECT_EQ(d.window->statusMessage().toStdString(), d.model->steps.verdict);
    EXPECT_EQ(d.window->statusMessage().left(15), "External noise ");
    QTest::mouseClick(d.window->recordTsvButton(), Qt::LeftButton);
    EXPECT_TRUE(fs::exists(d.dir / "log.tab"));
    EXPECT_EQ(d.window->statusMessage().toStdString(),
              "Row 1 appended to " + (d.dir / "log.tab").string());
    EXPECT_FALSE(d.window->recordTsvButton()->isEnabled());
    EXPECT_FALSE(d.window->action("&Record TSV")->isEnabled());

    d.window->action("&Copy text results to Clipboard")->trigger();
    EXPECT_EQ(d.devices.clipboard.rfind("Program\tZAV\r\n", 0), 0u);
    EXPECT_EQ(d.window->statusMessage(), "Text results copied to the clipboard");
    const std::string wave = (d.dir / "kept").string();
    d.dialogs.files.push_back(wave);
    d.window->action("Save wave file")->trigger();
    EXPECT_EQ(d.window->statusMessage().toStdString(), "Recording saved to " + wave);

    // The results grid: the reader's units on screen, the grid's own text on the clipboard.
    ResultTable* results = d.window->resultsGrid();
    EXPECT_EQ(results->horizontalHeaderItem(1)->text(), QString::fromUtf8("FS (dB\u00b5V/m)"));
    EXPECT_EQ(results->horizontalHeaderItem(2)->text(),
              QString::fromUtf8("Normalised FS (dB\u00b5V/m in 1 Hz)"));
    results->setFocus();
    EXPECT_TRUE(results->hasFocus());
    results->setRangeSelected(QTableWidgetSelectionRange(1, 1, 2, 2), true);
    QTest::keyClick(results, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(d.devices.clipboard, "Detector\tFS (dBuV/m)\tNormalised FS (dBuV/m)\r\n"
                                   "RMS\t" +
                                       d.model->steps.gridCalc.Text(2, 2) + "\t" +
                                       d.model->steps.gridCalc.Text(2, 3) + "\r\nQP\t" +
                                       d.model->steps.gridCalc.Text(3, 2) + "\t" +
                                       d.model->steps.gridCalc.Text(3, 3) + "\r\n");
    EXPECT_EQ(d.window->statusMessage(), "Selected cells copied to the clipboard");

    // Repeating step 1 clears what stood on it.
    d.recordings.push_back(kExamples + "soundcard.wav");
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    EXPECT_TRUE(d.cell(calc, 2, 1).isEmpty());
    EXPECT_FALSE(d.window->stepButton(3)->isEnabled());
}

TEST(MainWindow, LoudSoundCardIsOrangeAndTheMessageComesThroughTheDialogs) {
    Desk d;
    d.recordings.push_back(kExamples + "external.wav"); // far too loud for a sound card
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    ASSERT_GE(d.dialogs.messages.size(), 2u);
    EXPECT_EQ(d.dialogs.messages[0].buttons, MessageButtons::OkCancel);
    EXPECT_EQ(d.dialogs.messages[1].text, "Check voltage range.");
    const QTableWidgetItem* rms = d.window->measurementsGrid()->item(1, 0);
    EXPECT_EQ(rms->foreground().color(), QColor(255, 128, 0));
    // Not the colour alone: the cell's tooltip and the status bar say it in words.
    EXPECT_TRUE(rms->toolTip().startsWith("Sound card noise ")) << rms->toolTip().toStdString();
    EXPECT_TRUE(rms->toolTip().endsWith("choose a quieter input"));
    EXPECT_EQ(d.window->statusMessage(), rms->toolTip());
}

TEST(MainWindow, OptionsFlipWithTheirLabelsAndChecks) {
    Desk d;
    QAction* antFact = d.window->action("Antenna&Factor");
    ASSERT_NE(antFact, nullptr);
    EXPECT_FALSE(antFact->isChecked());
    antFact->trigger();
    EXPECT_TRUE(antFact->isChecked());
    QLabel* label = nullptr;
    for (QLabel* l : d.window->setupPanel()->findChildren<QLabel*>())
        if (l->text().startsWith("Factor"))
            label = l;
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), "Factor (d&B/m)");
    EXPECT_EQ(d.field(SetupField::AntGain)->text().toStdString(), d.model->setup.AntGain);

    QAction* samples = d.window->action("&Measurement interval as samples");
    EXPECT_FALSE(samples->isChecked()); // the example profile counts milliseconds
    samples->trigger();
    EXPECT_EQ(d.field(SetupField::Interval)->text(), "8");
    EXPECT_TRUE(d.window->stepButton(1)->hasFocus());
}

TEST(MainWindow, OpenAndSaveProfilesThroughTheFileChoosers) {
    Desk d;
    EXPECT_EQ(d.window->windowTitle().toStdString(), d.model->Caption);
    const std::string saved = (d.dir / "site.zav").string();
    d.dialogs.files.push_back(saved);
    d.window->action("Save &profile")->trigger();
    EXPECT_TRUE(fs::exists(saved));
    EXPECT_TRUE(d.window->windowTitle().startsWith("ZAV - site - V"));

    d.typeAndLeave(SetupField::Tester, "Changed");
    d.dialogs.files.push_back(kExamples + "example.zav");
    d.window->action("&Open profile")->trigger();
    EXPECT_EQ(d.field(SetupField::Tester)->text(), "Demo");
    EXPECT_TRUE(d.window->windowTitle().startsWith("ZAV - example - V"));
    // Opening saved the outgoing profile first.
    EXPECT_EQ(d.model->state.recent.Caption[1], saved);
}

TEST(MainWindow, ClosingSavesProfileSettingsAndPlaceAndRemovesTheRecordings) {
    Desk d;
    d.model->options.Verbose = false;
    d.recordings.push_back(kExamples + "soundcard.wav");
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    const std::string recording = d.model->steps.TempWave + ".wav";
    ASSERT_TRUE(fs::exists(recording));
    d.typeAndLeave(SetupField::Tester, "Closing time");
    d.window->resize(731, 577); // within the offscreen screen

    d.window->action("E&xit")->trigger();
    EXPECT_FALSE(fs::exists(recording));
    EXPECT_EQ(d.settings.GetSetting("default", "Profile", ""), (d.dir / "example.zav").string());
    std::ifstream profile(d.dir / "example.zav");
    const std::string text((std::istreambuf_iterator<char>(profile)), {});
    EXPECT_NE(text.find("Tester=Closing time\r\n"), std::string::npos);

    // The next window opens where this one was.
    MainWindow again(*d.model, d.dialogs, d.settings, d.desktop, nullptr);
    EXPECT_EQ(again.size(), QSize(731, 577));
}

TEST(MainWindow, TabWalksTheSetupInTheOrderOfEntry) {
    Desk d;
    QWidget* w = d.window->setupPanel()->fieldWidget(SetupField::Tester);
    for (int i = 1; i < kSetupFieldCount; ++i) {
        w = w->nextInFocusChain();
        while (!(w->focusPolicy() & Qt::TabFocus))
            w = w->nextInFocusChain();
        EXPECT_EQ(w, d.window->setupPanel()->fieldWidget(static_cast<SetupField>(i))) << i;
    }
}

TEST(MainWindow, ShortcutsCheckTheBoxBeingTypedInFirst) {
    Desk d;
    QLineEdit* bandwidth = d.field(SetupField::Bandwidth);
    bandwidth->setFocus();
    bandwidth->selectAll();
    QTest::keyClicks(bandwidth, "0");
    const std::string saved = (d.dir / "site.zav").string();
    d.dialogs.files.push_back(saved);
    QTest::keyClick(bandwidth, Qt::Key_S, Qt::ControlModifier);
    ASSERT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_EQ(d.dialogs.messages[0].text, "Bandwidth must be > 0 and  <= 200000");
    EXPECT_TRUE(d.dialogs.fileRequests.empty()); // refused: the command did not run
    QTest::qWait(10);
    EXPECT_TRUE(bandwidth->hasFocus());

    bandwidth->selectAll();
    QTest::keyClicks(bandwidth, "2400");
    QTest::keyClick(bandwidth, Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(fs::exists(saved));
    EXPECT_EQ(d.model->setup.Bandwidth, "2400");

    // Each standard key reaches its command.
    EXPECT_EQ(d.window->action("Open profile")->shortcut(), QKeySequence(QKeySequence::Open));
    EXPECT_EQ(d.window->action("Exit")->shortcut(), QKeySequence(QKeySequence::Quit));
    EXPECT_EQ(d.window->action("Manual")->shortcut(), QKeySequence(QKeySequence::HelpContents));
    QTest::keyClick(bandwidth, Qt::Key_F1);
    EXPECT_EQ(d.shell.opened.size(), 1u);
}

TEST(MainWindow, TheRecordingChooserIsTitledAfterTheStepItRecords) {
    Desk d;
    d.model->options.Verbose = false;
    d.model->chooseRecording = nullptr; // the operator picks each file
    d.dialogs.files = {kExamples + "soundcard.wav", kExamples + "receiver.wav"};
    QTest::mouseClick(d.window->stepButton(1), Qt::LeftButton);
    QTest::mouseClick(d.window->stepButton(2), Qt::LeftButton);
    ASSERT_EQ(d.dialogs.fileRequests.size(), 2u);
    EXPECT_EQ(d.dialogs.fileRequests[0].title, "Sound Card Internal Noise");
    EXPECT_EQ(d.dialogs.fileRequests[1].title, "Receiver Internal Noise");
}
