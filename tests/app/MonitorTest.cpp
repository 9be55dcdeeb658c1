#include "app/Monitor.h"
#include "platform/TextHelpers.h"
#include "platform/UrlCoding.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

using namespace zav;

namespace {

constexpr int kRate = 8000;

struct FakeClock : MonitorClock {
    std::time_t Now() override { return 1790000000 + elapsedMs / 1000; }
    void Sleep(std::chrono::milliseconds d) override {
        elapsedMs += d.count();
        if (onSleep)
            onSleep();
    }
    long long elapsedMs = 0;
    std::function<void()> onSleep;
};

struct FakeRig : RigControl {
    RigOutcome Tune(const RigTuning& t) override {
        tunings.push_back(t);
        if (failNext > 0) {
            --failNext;
            return {false, "Communication timed out", {}};
        }
        return {true, "", {"the rig cannot turn AGC off"}};
    }
    std::vector<RigTuning> tunings;
    int failNext = 0;
};

// Hands out what the plan scripted: deliveries in order, then answered with a receipt.
struct FakePoster : FormPoster {
    PostAttempt Post(const std::string&, const std::string& body) override {
        attempts.push_back(body);
        PostDelivery d = PostDelivery::Answered;
        if (!script.empty()) {
            d = script.front();
            script.pop_front();
        }
        if (d == PostDelivery::Answered)
            received.push_back(body);
        return {d, {200, "<r><cc>0</cc></r>"}, d == PostDelivery::Answered ? "" : "refused"};
    }
    std::deque<PostDelivery> script;
    std::vector<std::string> attempts, received;
};

// The receiver's noise as an RMS in sample counts: the sound card alone, the terminated
// receiver, and the external noise at each frequency.
struct Bench {
    test::TempDir dir;
    test::FakeDialogs dialogs;
    FakeClock clock;
    FakeRig rig;
    FakePoster poster;
    test::FakeXml xml;
    std::atomic<bool> stop{false};
    std::map<double, double> external{{3.5, 400}, {7.0, 800}, {10.1, 1600}};
    double soundCard = 3, receiver = 100;
    int recordings = 0;
    std::function<bool(int)> failRecording = [](int) { return false; };
    std::function<void(int)> onRecording = [](int) {};

    struct Input : AudioInput {
        Bench& b;
        explicit Input(Bench& bench) : b(bench) {}
        Recording RecordWave(const RecordingRequest& request) override {
            const int n = ++b.recordings;
            b.onRecording(n);
            if (b.failRecording(n))
                return {RecordingStatus::Failed, 0, 0, 0};
            double rms = b.soundCard;
            if (n > 1)
                rms = b.rig.tunings.empty() ? b.receiver : b.levelFor(b.rig.tunings.back());
            test::WriteWave(request.wavefile, test::Noise(rms, kRate, static_cast<unsigned>(n)),
                            kRate);
            return {RecordingStatus::Recorded, kRate, kRate, b.clock.Now()};
        }
    } input{*this};

    int step2Count() const { return 1 + static_cast<int>(external.size()); }
    double levelFor(const RigTuning& t) const {
        if (recordings <= step2Count())
            return receiver;
        return external.at(std::round(t.frequencyHz / 1e5) / 10);
    }

    MonitorSetup setup() {
        MonitorSetup s;
        s.setup.Frequency = "7.000";
        s.setup.Bandwidth = "2700";
        s.setup.RxNF = "6.00";
        s.setup.AntGain = "0.00";
        s.setup.Attenuator = "0.0";
        s.setup.Loss = "0.0";
        s.setup.AGC = "30";
        s.setup.Interval = "8";
        s.dataLogPath = (dir.path / "log.tab").string();
        s.tempWave = (dir.path / "~step").string();
        s.transfer.URL = "127.0.0.1:1/post";
        s.postEnabled = true;
        return s;
    }
    MonitorPlan plan(int count) {
        MonitorPlan p;
        for (const auto& [f, level] : external)
            p.frequenciesMHz.push_back(f);
        p.intervalSeconds = 600;
        p.count = count;
        p.rigModel = 1;
        return p;
    }
    std::vector<std::string> events;
    std::vector<MonitorObservation> observations;
    MonitorStatus run(int count, MonitorSetup s = {}, std::optional<MonitorPlan> p = {}) {
        if (s.tempWave.empty())
            s = setup();
        xml.elements["cc"] = "0";
        Monitor monitor(s, p ? *p : plan(count),
                        {dialogs, input, &rig, &poster, &xml, clock, stop});
        monitor.onEvent = [this](const std::string& e) { events.push_back(e); };
        monitor.onObservation = [this](const MonitorObservation& o) { observations.push_back(o); };
        monitor.Run();
        return monitor.status();
    }
    std::vector<std::vector<std::string>> logRows() const {
        std::vector<std::vector<std::string>> rows;
        std::istringstream in(test::ReadFile(dir.path / "log.tab"));
        for (std::string line; std::getline(in, line);) {
            EXPECT_EQ(line.back(), '\r') << "every row whole, CR LF ended";
            line.pop_back();
            std::vector<std::string> fields(1);
            for (char c : line) {
                if (c == '\t')
                    fields.emplace_back();
                else
                    fields.back() += c;
            }
            rows.push_back(fields);
        }
        return rows;
    }
    bool saw(const std::string& text) const {
        for (const auto& e : events)
            if (e.find(text) != std::string::npos)
                return true;
        return false;
    }
};

TEST(Monitor, CalibratesOnceThenMeasuresEveryFrequencyEachCycle) {
    Bench b;
    const MonitorStatus st = b.run(2);
    EXPECT_EQ(st.state, MonitorState::Finished);
    // Step 1 once, step 2 at each tuning, step 3 on each frequency in each cycle.
    EXPECT_EQ(b.recordings, 1 + 3 + 2 * 3);
    std::vector<double> tuned;
    for (const RigTuning& t : b.rig.tunings) {
        tuned.push_back(t.frequencyHz);
        EXPECT_EQ(t.passbandHz, 2700);
        EXPECT_EQ(t.mode, "USB");
    }
    EXPECT_EQ(tuned, (std::vector<double>{3.5e6, 7.0e6, 10.1e6, 3.5e6, 7.0e6, 10.1e6, 3.5e6, 7.0e6,
                                          10.1e6}));
    // Asked three times in all: sound card, terminated input, antenna.
    ASSERT_EQ(b.dialogs.messages.size(), 3u);
    EXPECT_NE(b.dialogs.messages[1].text.find("terminate input"), std::string::npos);
    EXPECT_NE(b.dialogs.messages[2].text.find("Connect receiver"), std::string::npos);

    const auto rows = b.logRows();
    ASSERT_EQ(rows.size(), 1u + 6u);
    EXPECT_EQ(rows[0][8], "Frequency");
    EXPECT_EQ(rows[0][20], "RxRms");
    // Received power follows the level fed at each frequency: twice the RMS, +6.02 dB, as
    // the Y-factor with a quiet sound card gives.
    for (int cycle = 0; cycle < 2; ++cycle) {
        const auto& r = rows.begin() + 1 + 3 * cycle;
        EXPECT_EQ(r[0][8], "3.500");
        EXPECT_EQ(r[1][8], "7.000");
        EXPECT_EQ(r[2][8], "10.100");
        EXPECT_NEAR(std::stod(r[1][20]) - std::stod(r[0][20]), 6.02, 0.3);
        EXPECT_NEAR(std::stod(r[2][20]) - std::stod(r[1][20]), 6.02, 0.3);
    }
    // The second cycle starts one interval after the first.
    ASSERT_EQ(b.observations.size(), 6u);
    EXPECT_NEAR(b.observations[3].time - b.observations[0].time, 600, 1);
    EXPECT_EQ(st.logged, 6);
    EXPECT_EQ(st.posted, 6);
    EXPECT_EQ(b.poster.received.size(), 6u);
    // The rig's refusal is told once, not at every tuning.
    int told = 0;
    for (const auto& e : b.events)
        told += e.find("cannot turn AGC off") != std::string::npos;
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(b.saw("No antenna file"));
}

// Unattended, a failed verdict is counted and told, never logged nor posted, and the run
// goes on with the next frequency.
TEST(Monitor, FailedVerdictsAreCountedNotLogged) {
    struct Case {
        double external;
        const char* why;
    };
    for (const Case c : {Case{30000, "clipping"}, Case{5000, "over the AGC threshold"},
                         Case{2, "no noise above the sound card"}}) {
        SCOPED_TRACE(c.why);
        Bench b;
        b.external[7.0] = c.external;
        const MonitorStatus st = b.run(2);
        EXPECT_EQ(st.state, MonitorState::Finished);
        EXPECT_EQ(st.failedVerdicts, 2);
        EXPECT_EQ(st.logged, 4);
        EXPECT_TRUE(b.saw(std::string("not logged: ") + c.why));
        for (const auto& row : b.logRows())
            EXPECT_NE(row[8], "7.000");
        EXPECT_EQ(b.poster.received.size(), 4u);
        EXPECT_TRUE(b.dialogs.messages.size() == 3u) << "no verdict opens a box";
    }
}

TEST(Monitor, AudioGapsAndRigErrorsAreToldAndTheRunGoesOn) {
    Bench b;
    b.failRecording = [](int n) { return n == 6; }; // cycle 1, second frequency
    b.onRecording = [&b](int n) {
        if (n == 7)
            b.rig.failNext = 1; // the next tuning, cycle 2's first: the rig does not answer
    };
    const MonitorStatus st = b.run(3);
    EXPECT_EQ(st.state, MonitorState::Finished);
    EXPECT_EQ(st.audioGaps, 1);
    EXPECT_EQ(st.rigErrors, 1);
    EXPECT_EQ(st.logged, 9 - 2);
    EXPECT_TRUE(b.saw("Audio input gap at 7.000 MHz, cycle 1"));
    EXPECT_TRUE(b.saw("Rig: cannot tune to 3.500 MHz: Communication timed out; tried again"));
    EXPECT_EQ(b.logRows().size(), 1u + 7u);
}

// A server that is down for the first cycles: every observation arrives exactly once, in
// order; one whose request may have gone out is never sent again.
TEST(Monitor, PostsQueueOnDiskWhileTheServerIsDownAndArriveOnce) {
    Bench b;
    for (int i = 0; i < 4; ++i)
        b.poster.script.push_back(PostDelivery::NeverLeft);
    bool sawQueueFile = false;
    b.onRecording = [&](int) {
        sawQueueFile |= std::filesystem::exists(b.dir.path / "log.tab.queue");
    };
    const MonitorStatus st = b.run(3);
    EXPECT_TRUE(sawQueueFile);
    EXPECT_EQ(st.posted, 9);
    EXPECT_EQ(st.queued, 0u);
    EXPECT_FALSE(std::filesystem::exists(b.dir.path / "log.tab.queue"));
    ASSERT_EQ(b.poster.received.size(), 9u);
    std::set<std::string> distinct(b.poster.received.begin(), b.poster.received.end());
    EXPECT_EQ(distinct.size(), 9u);
    for (std::size_t i = 0; i < 9; ++i) // in logged order
        EXPECT_NE(
            b.poster.received[i].find("&Frequency=" + UrlEncode(b.logRows()[1 + i][8], true) + "&"),
            std::string::npos)
            << b.poster.received[i];
    EXPECT_TRUE(b.saw("Server unreachable"));

    Bench uncertain;
    uncertain.poster.script = {PostDelivery::Unknown};
    const MonitorStatus u = uncertain.run(1);
    EXPECT_EQ(u.postUncertain, 1);
    EXPECT_EQ(uncertain.poster.attempts.size(), 3u) << "the uncertain one is not sent again";
}

TEST(Monitor, AQueueLeftByAStoppedRunIsSentByTheNext) {
    Bench first;
    first.poster.script.assign(100, PostDelivery::NeverLeft);
    EXPECT_EQ(first.run(1).queued, 3u);
    EXPECT_TRUE(first.poster.received.empty());

    const std::string queued = test::ReadFile(first.dir.path / "log.tab.queue");
    const std::vector<std::string> firstAttempts = first.poster.attempts;
    ASSERT_FALSE(queued.empty());
    // The queued bodies carry the account: only the owner may read them.
    namespace fs = std::filesystem;
    EXPECT_EQ(fs::status(first.dir.path / "log.tab.queue").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    Bench next; // the same folder, emptied: only the queue is carried over
    std::ofstream(next.dir.path / "log.tab.queue", std::ios::binary) << queued;
    const MonitorStatus st = next.run(1);
    EXPECT_EQ(next.poster.received.size(), 6u);
    EXPECT_EQ(next.poster.received[0], firstAttempts[0]) << "the oldest first";
    EXPECT_EQ(st.posted, 6);
}

TEST(Monitor, AStopEndsTheRunWithEveryRowWhole) {
    Bench b;
    b.onRecording = [&b](int n) {
        if (n == 9)
            b.stop = true; // during cycle 2's second recording
    };
    const MonitorStatus st = b.run(5);
    EXPECT_EQ(st.state, MonitorState::Stopped);
    const auto rows = b.logRows();
    EXPECT_GE(rows.size(), 1u + 4u);
    EXPECT_LE(rows.size(), 1u + 5u);
    EXPECT_EQ(rows[0].size(), 33u) << "the header ends in a tab";
    for (std::size_t i = 1; i < rows.size(); ++i)
        EXPECT_EQ(rows[i].size(), 32u);
}

TEST(Monitor, AnUnwritableDataLogStopsTheRunWithAClearMessage) {
    Bench b;
    MonitorSetup s = b.setup();
    s.dataLogPath = b.dir.path.string(); // a folder
    s.postEnabled = false;
    const MonitorStatus st = b.run(3, s);
    EXPECT_EQ(st.state, MonitorState::Failed);
    EXPECT_TRUE(b.saw("Cannot append to the data log"));
    EXPECT_EQ(b.recordings, 1 + 3 + 1);
}

TEST(Monitor, WithoutARigOneFrequencyAsTheOperatorLeftIt) {
    Bench b;
    b.external = {{7.0, 1600}};
    MonitorPlan p = b.plan(2);
    p.frequenciesMHz = {};
    Monitor monitor(b.setup(), p, {b.dialogs, b.input, nullptr, nullptr, nullptr, b.clock, b.stop});
    monitor.Run();
    EXPECT_EQ(monitor.status().logged, 2);
    EXPECT_EQ(b.recordings, 1 + 1 + 2);
}

TEST(Monitor, ARunEndsBeforeAnyCycleWhenTheOperatorCancelsOrStep1Fails) {
    Bench b;
    b.dialogs.answers = {MessageResult::Ok, MessageResult::Cancel};
    EXPECT_EQ(b.run(2).state, MonitorState::Failed);
    EXPECT_EQ(b.recordings, 1);

    Bench noRecording;
    noRecording.failRecording = [](int n) { return n == 1; };
    EXPECT_EQ(noRecording.run(2).state, MonitorState::Failed);
    EXPECT_TRUE(noRecording.saw("Step 1 failed (no recording)"));
    Bench clipping;
    clipping.soundCard = 30000;
    EXPECT_EQ(clipping.run(2).state, MonitorState::Failed);
    EXPECT_TRUE(clipping.saw("Step 1 failed (clipping)"));
    EXPECT_EQ(clipping.recordings, 1);
}

TEST(MonitorPlan, ParsesSwitchesAndTheProfileSection) {
    EXPECT_EQ(ParseFrequencyList("3.5,5.3, 7.0"), (std::vector<double>{3.5, 5.3, 7.0}));
    for (const char* bad : {"", "3.5,,x", "0", "-7", "7.0,abc"})
        EXPECT_FALSE(ParseFrequencyList(bad)) << bad;
    for (const auto& [text, seconds] : {std::pair{"10m", 600}, {"2h", 7200}, {"45", 45}})
        EXPECT_EQ(ParseDuration(text), seconds) << text;
    for (const char* bad : {"", "m", "0s", "1.5m", "-1", "10x", "999999h"})
        EXPECT_FALSE(ParseDuration(bad)) << bad;

    const std::time_t now = 1790000000; // fixed clock, local time in the test's zone
    const std::tm t = LocalTime(now);
    const auto at = ParseUntil("2026-09-22 08:30", now);
    ASSERT_TRUE(at);
    EXPECT_EQ(LocalTime(*at).tm_hour, 8);
    EXPECT_EQ(LocalTime(*at).tm_min, 30);
    const auto later = ParseUntil("23:59:59", now);
    ASSERT_TRUE(later);
    EXPECT_GT(*later, now);
    EXPECT_LE(*later - now, 24 * 3600);
    char earlier[8];
    std::snprintf(earlier, sizeof earlier, "%02d:%02d", t.tm_hour, t.tm_min);
    EXPECT_GT(*ParseUntil(earlier, now), now) << "a time already passed today means tomorrow";
    for (const char* bad : {"25:00", "2026-02-30 10:00", "tomorrow", "10"})
        EXPECT_FALSE(ParseUntil(bad, now)) << bad;

    const IniFile profile =
        IniFile::Parse("[monitor]\r\nFrequencies=3.5, 7.0\r\nEvery=10m\r\nCount=500\r\nRig=2\r\n"
                       "RigPort=127.0.0.1:4532\r\nSettle=x\r\n");
    MonitorPlan plan;
    const auto problems = ReadMonitorSection(profile, now, plan);
    EXPECT_EQ(plan.frequenciesMHz, (std::vector<double>{3.5, 7.0}));
    EXPECT_EQ(std::vector<int>({plan.intervalSeconds, plan.count, plan.rigModel, plan.settleMs}),
              std::vector<int>({600, 500, 2, 500}));
    EXPECT_EQ(plan.rigPort, "127.0.0.1:4532");
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("Settle"), std::string::npos);
    EXPECT_EQ(CheckMonitorPlan(plan), "");
    plan.rigModel = 0;
    EXPECT_NE(CheckMonitorPlan(plan), "");
}

} // namespace
