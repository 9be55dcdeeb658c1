#include "app/MainModel.h"
#include "platform/Conversions.h"
#include "platform/MemorySettingsStore.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <deque>
#include <fstream>

using namespace zav;

namespace {

constexpr int kRate = 8000;

// The sound card: each recording is the next queued noise level.
struct QueuedCard : test::NoDevices {
    std::deque<double> levels;
    int recordings = 0;
    Recording RecordWave(const RecordingRequest& request) override {
        if (++recordings, levels.empty())
            return {};
        test::WriteWave(request.wavefile, test::Noise(levels.front(), kRate, recordings), kRate);
        levels.pop_front();
        return {RecordingStatus::Recorded, kRate, kRate, 1790000000};
    }
};

// A main window's model on a scratch folder, its profile the defaults.
struct Desk {
    test::TempDir dir;
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    QueuedCard card;
    test::FakeShell shell;
    std::unique_ptr<MainModel> model;

    explicit Desk(int debugFlag = 0) {
        StartupState startup;
        startup.currentDir = dir.path.string() + "/", startup.profileName = "ZAV";
        startup.profilePath = (dir.path / "ZAV.zav").string(), startup.debugFlag = debugFlag;
        MainEnvironment environment;
        environment.tempDir = dir.path.string() + "/", environment.processId = "1";
        model = std::make_unique<MainModel>(
            startup, MainPorts{dialogs, settings, card, card, card, card, card, shell},
            environment);
        model->open();
        model->options.Verbose = false;
        model->setup.AGC = "30"; // room for the 20 dB between receiver and external noise
    }
    MainModel& m() { return *model; }
    // A quiet sound card, a receiver above it and an external reading 20 dB higher.
    void measure() {
        card.levels = {3, 100, 1000};
        m().Step1(), m().Step2(), m().Step3();
    }
    double fsRms() { return std::stod(m().steps.gridCalc.Text(2, 2)); }
};

} // namespace

TEST(MainModel, TheResultsFollowTheAntennaTheMomentItChanges) {
    Desk d;
    d.measure();
    ASSERT_FALSE(d.m().options.AntFact); // a gain of 0 dBi
    const double before = d.fsRms();
    const auto tab = d.dir.path / "loop.tab";
    std::ofstream(tab) << "#* Loop\n1\t10\n7\t20\n30\t30\n";
    d.dialogs.files.push_back(tab.string());
    d.m().antenna.importAntennaFile(d.dir.path.string());
    ASSERT_EQ(d.m().setup.AntGain, "20.00");
    // The field strength moves by the change of antenna factor, at once.
    EXPECT_NEAR(d.fsRms() - before, 20.0 - GainToFactor(0, 7.0), 0.101);
    EXPECT_EQ(d.m().steps.NumAntFact, 20.0);
}

TEST(MainModel, EveryWayToRunAStepChecksTheBoxesFirst) {
    const std::pair<SetupField, const char*> refused[] = {{SetupField::Bandwidth, "0"},
                                                          {SetupField::Frequency, "0.01"},
                                                          {SetupField::AGC, "5"},
                                                          {SetupField::Interval, "12"}};
    for (int step = 1; step <= 4; ++step) { // each box, each step
        const auto& [field, text] = refused[step - 1];
        Desk d;
        d.measure();
        const std::string external = d.m().steps.gridMeas.Text(2, 3);
        const int recordings = d.card.recordings;
        d.dialogs.messages.clear();
        FieldText(d.m().setup, field) = text;
        d.card.levels = {3};
        (step % 3 == 1 ? d.m().Step1() : step == 2 ? d.m().Step2() : d.m().Step3());
        EXPECT_EQ(d.card.recordings, recordings) << text; // nothing recorded
        EXPECT_EQ(d.m().steps.gridMeas.Text(2, 3), external) << text;
        EXPECT_EQ(d.dialogs.messages.size(), 1u) << text;
        EXPECT_EQ(d.m().focus, FocusTarget::SetupBox) << text;
        EXPECT_EQ(d.m().focusField, field) << text;
    }
    // Accepted values are tidied as leaving their boxes tidies them, and the step runs.
    Desk d;
    d.m().setup.Frequency = "7.1";
    d.card.levels = {3};
    d.m().Step1();
    EXPECT_EQ(d.m().setup.Frequency + std::to_string(d.card.recordings), "7.1001");
}

TEST(MainModel, APositionTakenAfterTheStepsBelongsToTheObservationUntilItIsOutput) {
    Desk d;
    d.m().outputs.TsvFileName = (d.dir.path / "log.tab").string();
    d.measure();
    EXPECT_EQ(d.m().steps.observation.ObsLat, "");
    auto captureAt = [](const char* lat, const char* lon) {
        return [=](SetupRecord& setup) { setup.lat = lat, setup.lon = lon; };
    };
    d.m().GetPosition(captureAt("48.1", "11.5"));
    EXPECT_EQ(d.m().steps.observation.ObsLat + " " + d.m().steps.observation.ObsLon,
              "48.100000 11.500000");
    EXPECT_EQ(d.m().focus, FocusTarget::Step3);
    d.m().GetPosition({}); // a cancelled capture keeps the observation's position
    EXPECT_EQ(d.m().steps.observation.ObsLat, "48.100000");

    d.m().recordTsv(); // the first output: from now on the observation is as it went out
    d.m().GetPosition(captureAt("50.0", "8.0"));
    EXPECT_EQ(d.m().steps.observation.ObsLat, "48.100000");
    // The next observation takes the position the set-up holds when it is recorded.
    d.card.levels = {1000};
    d.m().Step3();
    EXPECT_EQ(d.m().steps.observation.ObsLat, "50.000000");
}
