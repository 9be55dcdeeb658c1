#include "app/Monitor.h"
#include "platform/TextHelpers.h"
#include "platform/UrlCoding.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

using namespace zav;
using Ints = std::vector<int>;
namespace fs = std::filesystem;

namespace {

constexpr int kRate = 8000;

std::vector<std::string> SplitString(const std::string& text, char at) {
    std::vector<std::string> parts(1);
    for (char c : text)
        c == at ? parts.emplace_back() : parts.back() += c;
    return parts;
}

struct FakeClock : MonitorClock {
    std::time_t Now() override { return 1790000000 + elapsedMs / 1000; }
    void Sleep(std::chrono::milliseconds d) override { elapsedMs += d.count(); }
    long long elapsedMs = 0;
};

struct FakeRig : RigControl {
    RigOutcome Tune(const RigTuning& t) override {
        tunings.push_back(t);
        if (failNext > 0)
            return --failNext, RigOutcome{false, "Communication timed out", {}};
        return {true, "", {"the rig cannot turn AGC off"}};
    }
    std::vector<RigTuning> tunings;
    int failNext = 0;
};

// Hands out what the plan scripted: deliveries in order, then answered with a receipt.
struct FakePoster : FormPoster {
    PostAttempt Post(const std::string&, const std::string& body) override {
        attempts.push_back(body);
        const PostDelivery d = script.empty() ? PostDelivery::Answered : script.front();
        if (!script.empty())
            script.pop_front();
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
    int recordings = 0, failures = 0;
    bool withRig = true;
    std::function<bool(int)> failRecording = [](int) { return false; };
    std::function<void(int)> onRecording = [](int) {};

    struct Input : AudioInput {
        Bench& b;
        explicit Input(Bench& bench) : b(bench) {}
        Recording RecordWave(const RecordingRequest& request) override {
            const int n = ++b.recordings;
            b.onRecording(n);
            if (b.failRecording(n))
                return ++b.failures, Recording{RecordingStatus::Failed, 0, 0, 0};
            double rms = b.soundCard;
            if (n > 1)
                rms = b.rig.tunings.empty() ? b.receiver : b.levelFor(b.rig.tunings.back());
            test::WriteWave(request.wavefile, test::Noise(rms, kRate, unsigned(n)), kRate);
            return {RecordingStatus::Recorded, kRate, kRate, b.clock.Now()};
        }
    } input{*this};

    double levelFor(const RigTuning& t) const { // step 2 once per tuning, then step 3
        return recordings - failures <= 1 + int(external.size())
                   ? receiver
                   : external.at(std::round(t.frequencyHz / 1e5) / 10);
    }

    std::vector<std::string> events;
    std::vector<MonitorObservation> observations;
    MonitorStatus run(int count, std::function<void(MonitorSetup&, MonitorPlan&)> adjust = {}) {
        MonitorSetup s;
        auto& r = s.setup;
        r.Frequency = "7.000", r.Bandwidth = "2700", r.RxNF = "6.00", r.AntGain = "0.00";
        r.Attenuator = r.Loss = "0.0", r.AGC = "30", r.Interval = "8";
        s.dataLogPath = (dir.path / "log.tab").string(), s.tempWave = (dir.path / "~s").string();
        s.transfer.URL = "127.0.0.1:1/post", s.postEnabled = true;
        MonitorPlan p;
        for (const auto& [f, level] : external)
            p.frequenciesMHz.push_back(f);
        p.intervalSeconds = 600, p.count = count, p.rigModel = 1;
        if (adjust)
            adjust(s, p);
        xml.elements["cc"] = "0";
        Monitor monitor(s, p,
                        {dialogs, input, withRig ? &rig : nullptr, &poster, &xml, clock, stop});
        monitor.onEvent = [this](const std::string& e) { events.push_back(e); };
        monitor.onObservation = [this](const MonitorObservation& o) { observations.push_back(o); };
        monitor.Run();
        return monitor.status();
    }
    std::vector<std::vector<std::string>> logRows() const {
        std::vector<std::vector<std::string>> rows;
        for (const std::string& line : SplitString(test::ReadFile(dir.path / "log.tab"), '\n')) {
            if (line.empty())
                continue;
            EXPECT_EQ(line.back(), '\r') << "every row whole, CR LF ended";
            rows.push_back(SplitString(line.substr(0, line.size() - 1), '\t'));
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
    // Step 1 once, step 2 at each tuning, step 3 on each frequency in each cycle.
    EXPECT_EQ(b.recordings, 1 + 3 + 2 * 3);
    std::string tuned;
    for (const RigTuning& t : b.rig.tunings)
        tuned += std::to_string(int(t.frequencyHz / 1e5)) + t.mode + std::to_string(t.passbandHz);
    EXPECT_EQ(tuned, "35USB270070USB2700101USB270035USB270070USB2700101USB2700"
                     "35USB270070USB2700101USB2700");
    // Asked three times in all: sound card, terminated input, antenna.
    ASSERT_EQ(b.dialogs.messages.size(), 3u);
    EXPECT_NE(b.dialogs.messages[1].text.find("terminate input"), std::string::npos);
    EXPECT_NE(b.dialogs.messages[2].text.find("Connect receiver"), std::string::npos);
    const auto rows = b.logRows();
    ASSERT_EQ(rows.size(), 1u + 6u);
    EXPECT_EQ(rows[0][8] + rows[0][20], "FrequencyRxRms");
    // Twice the RMS per frequency: +6.02 dB of received power, as the Y-factor gives.
    for (int row = 1; row <= 6; ++row) {
        EXPECT_EQ(rows[row][8],
                  (std::vector<std::string>{"3.500", "7.000", "10.100"}[(row - 1) % 3]));
        if (row % 3 != 1) {
            EXPECT_NEAR(std::stod(rows[row][20]) - std::stod(rows[row - 1][20]), 6.02, 0.3);
        }
    }
    ASSERT_EQ(b.observations.size(), 6u); // the second cycle starts one interval after the first
    EXPECT_NEAR(b.observations[3].time - b.observations[0].time, 600, 1);
    EXPECT_EQ(Ints({st.logged, st.posted, int(b.poster.received.size())}), Ints({6, 6, 6}));
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
        EXPECT_EQ(Ints({st.failedVerdicts, st.logged, int(b.poster.received.size()),
                        int(b.dialogs.messages.size())}),
                  Ints({2, 4, 4, 3}))
            << why;
        EXPECT_TRUE(b.saw(std::string("not logged: ") + why));
        for (const auto& row : b.logRows())
            EXPECT_NE(row[8], "7.000");
    }
}

TEST(Monitor, AudioGapsAndRigErrorsAreToldAndTheRunGoesOn) {
    Bench b;
    // Step 2 at the second frequency once, then cycle 1 at the second frequency.
    b.failRecording = [](int n) { return n == 3 || n == 7; };
    b.onRecording = [&b](int n) { b.rig.failNext = n == 8; }; // then cycle 2's first tuning
    const MonitorStatus st = b.run(3);
    EXPECT_EQ(st.state, MonitorState::Finished);
    EXPECT_EQ(Ints({st.audioGaps, st.rigErrors, st.logged}), Ints({2, 1, 7}));
    EXPECT_TRUE(b.saw("Audio input gap at 7.000 MHz during step 2"));
    EXPECT_TRUE(b.saw("Audio input gap at 7.000 MHz, cycle 1"));
    EXPECT_TRUE(b.saw("Rig: cannot tune to 3.500 MHz: Communication timed out; tried again"));
    EXPECT_EQ(b.logRows().size(), 1u + 7u);
}

// A server down for the first cycles: every observation arrives exactly once, in order; one
// whose request may have gone out is never sent again.
TEST(Monitor, PostsQueueOnDiskWhileTheServerIsDownAndArriveOnce) {
    Bench b;
    b.poster.script.assign(4, PostDelivery::NeverLeft);
    const MonitorStatus st = b.run(3);
    EXPECT_TRUE(b.saw("Server unreachable"));
    EXPECT_EQ(st.posted, 9);
    EXPECT_EQ(st.queued, 0u);
    EXPECT_FALSE(fs::exists(b.dir.path / "log.tab.queue"));
    ASSERT_EQ(b.poster.received.size(), 9u);
    EXPECT_EQ(std::set(b.poster.received.begin(), b.poster.received.end()).size(), 9u);
    for (std::size_t i = 0; i < 9; ++i) // in logged order
        EXPECT_NE(
            b.poster.received[i].find("&Frequency=" + UrlEncode(b.logRows()[1 + i][8], true) + "&"),
            std::string::npos);
    Bench uncertain;
    uncertain.poster.script = {PostDelivery::Unknown};
    EXPECT_EQ(uncertain.run(1).postUncertain, 1);
    EXPECT_EQ(uncertain.poster.attempts.size(), 3u) << "the uncertain one is not sent again";
}

TEST(Monitor, AQueueLeftByAStoppedRunIsSentByTheNext) {
    Bench first;
    first.poster.script.assign(100, PostDelivery::NeverLeft);
    EXPECT_EQ(first.run(1).queued, 3u);
    EXPECT_TRUE(first.poster.received.empty());
    const std::string queued = test::ReadFile(first.dir.path / "log.tab.queue");
    // The queued bodies carry the account: only the owner may read them.
    EXPECT_EQ(fs::status(first.dir.path / "log.tab.queue").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    Bench next; // a fresh folder: only the queue is carried over
    std::ofstream(next.dir.path / "log.tab.queue", std::ios::binary) << queued;
    EXPECT_EQ(next.run(1).posted, 6);
    ASSERT_EQ(next.poster.received.size(), 6u);
    EXPECT_EQ(next.poster.received[0], first.poster.attempts[0]) << "the oldest first";
}

TEST(Monitor, WithoutARigOneFrequencyIsMeasuredAsTheOperatorLeftTheReceiver) {
    Bench b;
    b.external = {{7.0, 1600}}, b.withRig = false;
    EXPECT_EQ(b.run(2, [](MonitorSetup&, MonitorPlan& p) { p.frequenciesMHz = {}; }).logged, 2);
    EXPECT_EQ(b.recordings, 1 + 1 + 2);
}

TEST(Monitor, ARunFailsOnACancelAFailedStep1OrAFileThatCannotBeWritten) {
    struct Case {
        const char* told;
        int recordings, logRows;
        std::function<void(Bench&, MonitorSetup&)> arrange;
    };
    const Case cases[] = {
        {"", 1, 0,
         [](Bench& b, MonitorSetup&) {
             b.dialogs.answers = {MessageResult::Ok, MessageResult::Cancel};
         }},
        {"Step 1 failed (clipping)", 1, 0, [](Bench& b, MonitorSetup&) { b.soundCard = 30000; }},
        {"Cannot append to the data log", 5, 0,
         [](Bench& b, MonitorSetup& s) {
             s.dataLogPath = b.dir.path.string(), s.postEnabled = false;
         }},
        // The row is logged, nothing is posted.
        {"Cannot keep the post queue on disk", 5, 2,
         [](Bench& b, MonitorSetup& s) { s.queuePath = b.dir.path.string(); }}};
    for (const Case& c : cases) {
        Bench b;
        EXPECT_EQ(b.run(3, [&](MonitorSetup& s, MonitorPlan&) { c.arrange(b, s); }).state,
                  MonitorState::Failed)
            << c.told;
        EXPECT_TRUE(b.saw(c.told)) << c.told;
        EXPECT_EQ(b.recordings, c.recordings) << c.told;
        if (c.logRows) {
            EXPECT_EQ(b.logRows().size(), 2u);
        }
        EXPECT_EQ(b.poster.attempts.size(), 0u) << c.told;
    }
    Bench noRecording; // tried again, then given up
    noRecording.failRecording = [](int) { return true; };
    EXPECT_EQ(noRecording.run(2).state, MonitorState::Failed);
    EXPECT_TRUE(noRecording.saw("Step 1 failed (no recording)"));
    EXPECT_TRUE(noRecording.saw("Audio input gap during step 1"));
    EXPECT_GT(noRecording.recordings, 1);
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
    const auto at = ParseUntil("2026-09-22 08:30", now);
    ASSERT_TRUE(at);
    EXPECT_EQ(LocalTime(*at).tm_hour * 60 + LocalTime(*at).tm_min, 8 * 60 + 30);
    char earlier[8];
    const std::tm t = LocalTime(now);
    std::strftime(earlier, sizeof earlier, "%H:%M", &t);
    for (const char* time : {"23:59:59", (const char*)earlier}) { // passed today means tomorrow
        ASSERT_TRUE(ParseUntil(time, now)) << time;
        EXPECT_GT(*ParseUntil(time, now), now) << time;
        EXPECT_LE(*ParseUntil(time, now) - now, 24 * 3600);
    }
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
    plan.rigModel = 0;
    EXPECT_NE(CheckMonitorPlan(plan), "");
}

} // namespace
