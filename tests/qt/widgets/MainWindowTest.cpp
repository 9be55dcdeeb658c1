#include "qt/widgets/MainWindow.h"
#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/SetupPanel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

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
namespace fs = std::filesystem;

namespace {

const std::string kExamples = std::string(ZAV_SOURCE_DIR) + "/examples/";

// The real window over the real model, with the outside world faked.
struct Desk {
    fs::path dir = test::ScratchDir();
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    test::NoDevices devices;
    test::FakeShell shell;
    test::FakeHttp http;
    test::FakeXml xml;
    test::FakeSystemInfo systemInfo;
    test::FakeUpdater updater;
    DesktopPorts desktop{http, xml, shell, systemInfo, updater, devices, devices, devices};
    std::unique_ptr<MainModel> model;
    std::unique_ptr<MainWindow> window;
    std::deque<std::string> recordings;

    Desk() {
        // A copy: closing the window saves the profile it has open.
        fs::create_directories(dir);
        const std::string profile = (dir / "example.zav").string();
        fs::copy_file(kExamples + "example.zav", profile, fs::copy_options::overwrite_existing);
        StartupState startup;
        startup.currentDir = dir.string() + "/";
        startup.profilePath = profile;
        startup.profileName = "example";
        startup.tsvFileName = (dir / "log.tab").string();
        MainEnvironment env;
        env.tempDir = dir.string() + "/";
        env.processId = "1A2B";
        env.osVersion = "6.1";
        model = std::make_unique<MainModel>(
            startup,
            MainPorts{dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
        model->chooseRecording = [this]() -> std::optional<std::string> {
            if (recordings.empty())
                return std::nullopt;
            auto next = recordings.front();
            recordings.pop_front();
            return next;
        };
        model->Form_Load();
        model->state.InputDevice = kFileInputName;
        window = std::make_unique<MainWindow>(*model, dialogs, settings, desktop, nullptr);
        window->show();
        QApplication::setActiveWindow(window.get());
        QTest::qWait(20);
    }
    ~Desk() {
        window.reset();
        fs::remove_all(dir);
    }

    QLineEdit* field(SetupField f) {
        return static_cast<QLineEdit*>(window->setupPanel()->fieldWidget(f));
    }
    // Types into a box and leaves it for the next one, as the operator would with Tab.
    void typeAndLeave(SetupField f, const QString& text) {
        QLineEdit* edit = field(f);
        edit->setFocus();
        QTest::qWait(5);
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Tab);
        QTest::qWait(20);
    }
    QString cell(QTableWidget* t, int row, int column) {
        return t->item(row - 1, column - 1)->text();
    }
};

} // namespace

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

    QTest::mouseClick(d.window->recordTsvButton(), Qt::LeftButton);
    EXPECT_TRUE(fs::exists(d.dir / "log.tab"));
    EXPECT_FALSE(d.window->recordTsvButton()->isEnabled());
    EXPECT_FALSE(d.window->action("&Record TSV")->isEnabled());

    d.window->action("&Copy text results to Clipboard")->trigger();
    EXPECT_EQ(d.devices.clipboard.rfind("Program\tZAV\r\n", 0), 0u);

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
    const QColor orange = d.window->measurementsGrid()->item(1, 0)->foreground().color();
    EXPECT_EQ(orange, QColor(255, 128, 0));
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
    d.window->resize(1311, 1077);

    d.window->action("E&xit")->trigger();
    EXPECT_FALSE(fs::exists(recording));
    EXPECT_EQ(d.settings.GetSetting("default", "Profile", ""), (d.dir / "example.zav").string());
    std::ifstream profile(d.dir / "example.zav");
    const std::string text((std::istreambuf_iterator<char>(profile)), {});
    EXPECT_NE(text.find("Tester=Closing time\r\n"), std::string::npos);

    // The next window opens where this one was.
    MainWindow again(*d.model, d.dialogs, d.settings, d.desktop, nullptr);
    EXPECT_EQ(again.size(), QSize(1311, 1077));
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
