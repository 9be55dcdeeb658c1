#include "app/MainModel.h"
#include "app/Monitor.h"
#include "platform/Conversions.h"
#include "platform/MemorySettingsStore.h"
#include "platform/TextHelpers.h"
#include "platform/UrlCoding.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

using namespace zav;
using Ints = std::vector<int>;
namespace fs = std::filesystem;

namespace {

constexpr int kRate = 8000;

struct QueuedCard : test::NoDevices { // each recording the next queued noise level
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

// Clock, rig, server and sound card in one. The noise is an RMS in sample counts: the card alone,
// the terminated receiver, and the external noise per frequency.
struct Bench : MonitorClock, RigControl, FormPoster, AudioInput {
    test::TempDir dir;
    test::FakeDialogs dialogs;
    test::FakeXml xml;
    std::atomic<bool> stop{false};
    std::map<double, double> external{{3.5, 400}, {7.0, 800}, {10.1, 1600}};
    double soundCard = 3, receiver = 100;
    int recordings = 0, failures = 0, failTune = 0;
    long long elapsedMs = 0;
    bool withRig = true;
    std::function<bool(int)> failRecording = [](int) { return false; };
    std::function<void(int)> onRecording = [](int) {};
    std::vector<RigTuning> tunings;
    std::deque<PostDelivery> script;
    std::vector<std::string> attempts, received, events;
    std::vector<MonitorObservation> observations;

    std::time_t Now() override { return 1790000000 + elapsedMs / 1000; }
    void Sleep(std::chrono::milliseconds d) override { elapsedMs += d.count(); }
    RigOutcome Tune(const RigTuning& t) override {
        tunings.push_back(t);
        if (failTune > 0)
            return --failTune, RigOutcome{false, "Communication timed out", {}};
        return {true, "", {"the rig cannot turn AGC off"}};
    }
    PostAttempt Post(const std::string&, const std::string& body) override {
        attempts.push_back(body);
        const PostDelivery d = script.empty() ? PostDelivery::Answered : script.front();
        if (!script.empty())
            script.pop_front();
        if (d == PostDelivery::Answered)
            received.push_back(body);
        return {d, {200, "<r><cc>0</cc></r>"}, d == PostDelivery::Answered ? "" : "refused"};
    }
    Recording RecordWave(const RecordingRequest& request) override {
        const int n = ++recordings;
        onRecording(n);
        if (failRecording(n))
            return ++failures, Recording{RecordingStatus::Failed, 0, 0, 0};
        // Step 2 once per tuning, then step 3.
        const bool step3 = !tunings.empty() && n - failures > 1 + int(external.size());
        const double rms = n == 1 ? soundCard
                           : !step3
                               ? receiver
                               : external.at(std::round(tunings.back().frequencyHz / 1e5) / 10);
        test::WriteWave(request.wavefile, test::Noise(rms, kRate, unsigned(n)), kRate);
        return {RecordingStatus::Recorded, kRate, kRate, Now()};
    }

    MonitorStatus run(int count, std::function<void(MonitorSetup&)> adjust = {}) {
        MonitorSetup s;
        auto& r = s.setup;
        r.Frequency = "7.000", r.Bandwidth = "2700", r.RxNF = "6.00", r.AntGain = "0.00";
        r.Attenuator = r.Loss = "0.0", r.AGC = "30", r.Interval = "8";
        s.dataLogPath = (dir.path / "log.tab").string(), s.tempWave = (dir.path / "~s").string();
        s.transfer.URL = "127.0.0.1:1/post", s.postEnabled = true;
        if (adjust)
            adjust(s);
        MonitorPlan p;
        for (const auto& [f, level] : external)
            p.frequenciesMHz.push_back(f);
        if (!withRig) // one frequency, as the operator left the receiver
            p.frequenciesMHz = {};
        p.intervalSeconds = 600, p.count = count, p.rigModel = 1;
        xml.elements.emplace("cc", "0"); // accepted unless the test says otherwise
        Monitor monitor(s, p, {dialogs, *this, withRig ? this : nullptr, this, &xml, *this, stop});
        monitor.onEvent = [this](const std::string& e) { events.push_back(e); };
        monitor.onObservation = [this](const MonitorObservation& o) { observations.push_back(o); };
        monitor.Run();
        return monitor.status();
    }
    std::vector<std::vector<std::string>> logRows() const {
        std::vector<std::vector<std::string>> rows;
        std::istringstream in(test::ReadFile(dir.path / "log.tab"));
        for (std::string line, field; std::getline(in, line);) {
            EXPECT_EQ(line.back(), '\r') << "every row whole, CR LF ended";
            std::istringstream fields(line);
            for (rows.emplace_back(); std::getline(fields, field, '\t');)
                rows.back().push_back(field);
        }
        return rows;
    }
    int saw(const std::string& text) const {
        return int(std::count_if(events.begin(), events.end(),
                                 [&](auto& e) { return e.find(text) != std::string::npos; }));
    }
};

TEST(Monitor, CalibratesOnceThenMeasuresEveryFrequencyEachCycle) {
    Bench b;
    const MonitorStatus st = b.run(2);
    EXPECT_EQ(st.state, MonitorState::Finished);
    EXPECT_EQ(b.recordings, 1 + 3 + 2 * 3);
    std::string tuned, column;
    for (const RigTuning& t : b.tunings)
        tuned += std::to_string(t.frequencyHz / 1e6).substr(0, 4) + t.mode +
                 std::to_string(t.passbandHz) + " ";
    EXPECT_EQ(tuned, "3.50USB2700 7.00USB2700 10.1USB2700 3.50USB2700 7.00USB2700 10.1USB2700 "
                     "3.50USB2700 7.00USB2700 10.1USB2700 ");
    // Asked three times in all: sound card, terminated input, antenna.
    ASSERT_EQ(b.dialogs.messages.size(), 3u);
    EXPECT_NE(b.dialogs.messages[1].text.find("terminate input"), std::string::npos);
    EXPECT_NE(b.dialogs.messages[2].text.find("Connect receiver"), std::string::npos);
    const auto rows = b.logRows();
    ASSERT_EQ(rows.size(), 1u + 6u);
    for (const auto& row : rows)
        column += row[8] + " ";
    EXPECT_EQ(column + rows[0][20], "Frequency 3.500 7.000 10.100 3.500 7.000 10.100 RxRms");
    // Twice the RMS per frequency: +6.02 dB of received power, as the Y-factor gives.
    for (int row : {2, 3, 5, 6})
        EXPECT_NEAR(std::stod(rows[row][20]) - std::stod(rows[row - 1][20]), 6.02, 0.3);
    ASSERT_EQ(b.observations.size(), 6u); // the second cycle starts one interval after the first
    EXPECT_NEAR(b.observations[3].time - b.observations[0].time, 600, 1);
    EXPECT_LT(b.observations[0].time, 1790000000 + 60) << "the first cycle starts at once";
    EXPECT_EQ(Ints({st.logged, st.posted, int(b.received.size())}), Ints({6, 6, 6}));
    EXPECT_EQ(b.saw("cannot turn AGC off"), 1) << "the rig's refusal is told once";
    EXPECT_TRUE(b.saw("No antenna file"));
}

// Unattended, a failed verdict is counted and told, never logged nor posted, nor a box opened.
TEST(Monitor, FailedVerdictsAreCountedNotLogged) {
    for (const auto& [external, why] : {std::pair{30000.0, "clipping"},
                                        {5000.0, "over the AGC threshold"},
                                        {2.0, "no noise above the sound card"}}) {
        Bench b;
        b.external[7.0] = external;
        const MonitorStatus st = b.run(2);
        EXPECT_EQ(st.state, MonitorState::Finished);
        EXPECT_EQ(Ints({st.failedVerdicts, st.logged, int(b.received.size()),
                        int(b.dialogs.messages.size())}),
                  Ints({2, 4, 4, 3}))
            << why;
        EXPECT_TRUE(b.saw(std::string("not logged: ") + why));
    }
}

TEST(Monitor, AudioGapsAndRigErrorsAreToldAndTheRunGoesOnWithOrWithoutARig) {
    Bench b;
    // Step 2 at the second frequency once, then cycle 1 at the second frequency.
    b.failRecording = [](int n) { return n == 3 || n == 7; };
    b.onRecording = [&b](int n) { b.failTune = n == 8; }; // then cycle 2's first tuning
    const MonitorStatus st = b.run(3);
    EXPECT_EQ(st.state, MonitorState::Finished);
    EXPECT_EQ(Ints({st.audioGaps, st.rigErrors, st.logged}), Ints({2, 1, 7}));
    EXPECT_TRUE(b.saw("Audio input gap at 7.000 MHz during step 2"));
    EXPECT_TRUE(b.saw("Audio input gap at 7.000 MHz, cycle 1"));
    EXPECT_TRUE(b.saw("Rig: cannot tune to 3.500 MHz: Communication timed out; tried again"));
    EXPECT_EQ(b.logRows().size(), 1u + 7u);
    Bench norig; // one frequency, as the operator left the receiver
    norig.external = {{7.0, 1600}}, norig.withRig = false;
    EXPECT_EQ(norig.run(2).logged, 2);
    EXPECT_EQ(norig.recordings, 1 + 1 + 2);
}

// Every observation arrives once, in order; one that may have gone out is never sent again.
TEST(Monitor, PostsQueueOnDiskWhileTheServerIsDownAndArriveOnceEvenAfterAStop) {
    Bench b;
    b.script.assign(4, PostDelivery::NeverLeft);
    const MonitorStatus st = b.run(3);
    EXPECT_TRUE(b.saw("Server unreachable"));
    EXPECT_EQ(st.posted, 9);
    EXPECT_EQ(st.queued, 0u);
    EXPECT_FALSE(fs::exists(b.dir.path / "log.tab.queue"));
    ASSERT_EQ(b.received.size(), 9u);
    EXPECT_EQ(std::set(b.received.begin(), b.received.end()).size(), 9u);
    for (std::size_t i = 0; i < 9; ++i) // in logged order
        EXPECT_NE(b.received[i].find("&Frequency=" + UrlEncode(b.logRows()[1 + i][8], true) + "&"),
                  std::string::npos);
    Bench uncertain;
    uncertain.script = {PostDelivery::Unknown};
    EXPECT_EQ(uncertain.run(1).postUncertain, 1);
    EXPECT_EQ(uncertain.attempts.size(), 3u) << "the uncertain one is not sent again";
    Bench refused; // the server answers with a non-zero code: refused, not posted
    refused.xml.elements["cc"] = "3";
    const MonitorStatus r = refused.run(1);
    EXPECT_EQ(Ints({r.posted, r.postRefused}), Ints({0, 3}));
    Bench first;
    first.script.assign(100, PostDelivery::NeverLeft);
    EXPECT_EQ(first.run(1).queued, 3u);
    EXPECT_TRUE(first.received.empty());
    const std::string queued = test::ReadFile(first.dir.path / "log.tab.queue");
    // The queued bodies carry the account: only the owner may read them.
    EXPECT_EQ(fs::status(first.dir.path / "log.tab.queue").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    Bench next; // a fresh folder: only the queue is carried over
    std::ofstream(next.dir.path / "log.tab.queue", std::ios::binary) << queued;
    EXPECT_EQ(next.run(1).posted, 6);
    ASSERT_EQ(next.received.size(), 6u);
    EXPECT_EQ(next.received[0], first.attempts[0]) << "the oldest first";
}

TEST(Monitor, ARunFailsOnACancelAFailedStep1OrAFileThatCannotBeWritten) {
    Bench cancel, clipping, noLog, noQueue, noRecording;
    cancel.dialogs.answers = {MessageResult::Ok, MessageResult::Cancel};
    clipping.soundCard = 30000;
    noRecording.failRecording = [](int) { return true; }; // tried again, then given up
    const std::tuple<Bench*, const char*, int, std::function<void(MonitorSetup&)>> runs[] = {
        {&cancel, "", 1, {}},
        {&clipping, "Step 1 failed (clipping)", 1, {}},
        {&noRecording, "Audio input gap during step 1", 6, {}},
        {&noLog, "Cannot append to the data log", 5,
         [&](MonitorSetup& s) { s.dataLogPath = noLog.dir.path.string(); }},
        {&noQueue, "Cannot keep the post queue on disk", 5,
         [&](MonitorSetup& s) { s.queuePath = noQueue.dir.path.string(); }}};
    for (const auto& [b, told, recordings, adjust] : runs) {
        EXPECT_EQ(b->run(3, adjust).state, MonitorState::Failed) << told;
        EXPECT_TRUE(b->saw(told)) << told;
        EXPECT_EQ(b->recordings, recordings) << told;
        EXPECT_TRUE(b->attempts.empty()) << told;
    }
    EXPECT_TRUE(noRecording.saw("Step 1 failed (no recording)"));
    EXPECT_EQ(noQueue.logRows().size(), 2u) << "the row is logged, nothing is posted";
}

TEST(MonitorPlan, ParsesSwitchesAndTheProfileSection) {
    EXPECT_EQ(ParseFrequencyList("3.5,5.3, 7.0"), (std::vector<double>{3.5, 5.3, 7.0}));
    for (const char* bad : {"", "3.5,,x", "0", "-7", "7.0,abc"})
        EXPECT_FALSE(ParseFrequencyList(bad)) << bad;
    for (const auto& [text, seconds] : {std::pair{"10m", 600}, {"2h", 7200}, {"45", 45}})
        EXPECT_EQ(ParseDuration(text), seconds) << text;
    for (const char* bad : {"", "m", "0s", "1.5m", "-1", "10x", "999999h"})
        EXPECT_FALSE(ParseDuration(bad)) << bad;

    const std::time_t now = 1790000000; // local time in the test's zone
    const auto hhmm = [](std::optional<std::time_t> t) {
        char text[20] = "-";
        const std::tm local = LocalTime(t.value_or(0));
        if (t)
            std::strftime(text, sizeof text, "%d %H:%M", &local);
        return std::string(text);
    };
    EXPECT_EQ(hhmm(ParseUntil("2026-09-22 08:30", now)), "22 08:30");
    // A time passed today means tomorrow.
    EXPECT_EQ(hhmm(ParseUntil(hhmm(now).substr(3), now)), hhmm(now + 24 * 3600));
    EXPECT_EQ(hhmm(ParseUntil("23:59:59", now)), hhmm(now).substr(0, 3) + "23:59");
    for (const char* bad : {"25:00", "2026-02-30 10:00", "tomorrow", "10"})
        EXPECT_FALSE(ParseUntil(bad, now)) << bad;

    const IniFile profile =
        IniFile::Parse("[monitor]\r\nFrequencies=3.5, 7.0\r\nEvery=10m\r\nCount=500\r\nRig=2\r\n"
                       "RigPort=127.0.0.1:4532\r\nSettle=x\r\n");
    MonitorPlan plan;
    const auto problems = ReadMonitorSection(profile, now, plan);
    EXPECT_EQ(plan.frequenciesMHz, (std::vector<double>{3.5, 7.0}));
    EXPECT_EQ(Ints({plan.intervalSeconds, plan.count, plan.rigModel, plan.settleMs}),
              Ints({600, 500, 2, 500}));
    EXPECT_EQ(plan.rigPort, "127.0.0.1:4532");
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("Settle"), std::string::npos);
    EXPECT_EQ(CheckMonitorPlan(plan), "");
    EXPECT_NE(CheckMonitorPlan((plan.rigModel = 0, plan)), "");
}

TEST(MainModel, TheResultsFollowTheAntennaTheMomentItChanges) {
    Desk d;
    EXPECT_EQ(d.m().steps.TempWave, d.dir.path.string() + "/~00000001"); // what a restart sweeps
    d.measure();
    ASSERT_FALSE(d.m().options.AntFact); // a gain of 0 dBi
    const double before = d.fsRms();
    const auto tab = d.dir.path / "loop.tab";
    std::ofstream(tab) << "#* Loop\n1\t10\n7\t20\n30\t30\n";
    d.dialogs.files.push_back(tab.string());
    d.m().antenna.importAntennaFile(d.dir.path.string());
    ASSERT_EQ(d.m().setup.AntGain, "20.00");
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

} // namespace
