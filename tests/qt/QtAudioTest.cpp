// The sound-card adapters against a private PulseAudio server: its null sink plays what the test
// (or the adapter) plays, and the sink's remapped monitor "zavmic" is the input.
#include "PulseServer.h"

#include "measure/BinaryFile.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveHeader.h"
#include "measure/WaveRecorder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/QtWait.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>

using namespace zav;

namespace {

std::unique_ptr<test::PulseServer> server;
struct StopServer : ::testing::Environment {
    void TearDown() override { server.reset(); }
};
[[maybe_unused]] const auto* kStop = ::testing::AddGlobalTestEnvironment(new StopServer);

// 16-bit samples of a file from byte `from` on (the machine is little-endian, as the files are).
std::vector<std::int16_t> samplesOf(const std::string& path, std::size_t from = 0) {
    const std::string bytes = test::ReadFile(path);
    std::vector<std::int16_t> s(bytes.size() > from ? (bytes.size() - from) / 2 : 0);
    if (!s.empty()) // an empty vector's data() may be null, which memcpy must not get
        std::memcpy(s.data(), bytes.data() + from, 2 * s.size());
    return s;
}

// Level (dBFS) and frequency (from the sign changes, 2f a second) of s[from, to).
std::pair<double, double> toneOf(const std::vector<std::int16_t>& s, std::size_t from,
                                 std::size_t to, int rate) {
    double sum = 0, changes = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += s[i] * s[i] / 1073741824.0, changes += i > from && (s[i - 1] < 0) != (s[i] < 0);
    return {10 * std::log10(sum / double(to - from)), changes * rate / 2 / double(to - from)};
}

struct Progress : CaptureProgress {
    double level = 0;
    std::function<bool()> cancel = [] { return false; };
    std::function<void()> flowing = [] {}; // once, when the first samples came
    void Begin(std::int64_t) override {}
    void Update(std::int64_t n, double dbfs) override {
        if (n > 0)
            std::exchange(flowing, [] {})();
        level = dbfs;
    }
    bool CancelRequested() override { return cancel(); }
    void End() override {}
};

struct Recorder {
    QtAudioCapture capture;
    test::FakeDialogs dialogs;
    Progress progress;
    std::string device;
    WaveRecorder recorder;
    Recorder(const std::string& templ, std::string dev, QtAudioCapture::Timeouts timeouts = {})
        : capture(timeouts), device(std::move(dev)),
          recorder({capture, dialogs, &progress}, templ, [this] { return device; }) {}
};

class SoundCard : public ::testing::Test {
protected:
    void SetUp() override {
        if (!server)
            server = std::make_unique<test::PulseServer>();
        ASSERT_TRUE(server->ok()) << server->why();
        ASSERT_TRUE(server->EnsureMicrophone());
        ASSERT_TRUE(test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }));
        test::WriteWave(path("ZAV.wav"), {}, 44100);
    }
    void TearDown() override { server->StopPlaying(); }
    std::string path(const char* name) const { return m_dir.filePath(name).toStdString(); }
    QTemporaryDir m_dir;
};

} // namespace

// A sine played into the default input is recorded at the template's rate (resampled), with
// the count asked for and the sine's level and frequency; the input is found by name or id.
TEST_F(SoundCard, RecordsWhatWasPlayedAtTheTemplatesRate) {
    ASSERT_TRUE(server->Play(test::Sine(0.5 * 32768, 440, 44100, 44100 * 30)));
    test::WriteWave(path("ZAV.wav"), {}, 48000);
    Recorder r(path("ZAV.wav"), "");
    const Recording rec = r.recorder.RecordWave({path("step.wav"), 64, true});
    ASSERT_EQ(rec.status, RecordingStatus::Recorded) << testing::PrintToString(r.dialogs.texts());
    EXPECT_EQ(std::pair(rec.samples, rec.sampleRate), std::pair(std::int64_t{65536}, 48000));
    BinaryFile f(path("step.wav"));
    EXPECT_EQ(ReadWaveHeader(f, r.dialogs).SampleRate, 48000);
    const auto kept = samplesOf(path("step.wav"), 44);
    ASSERT_EQ(kept.size(), 65536u);
    const auto [level, hz] = toneOf(kept, 0, kept.size(), 48000);
    const double dbfs = 20 * std::log10(0.5 / std::sqrt(2.0));
    EXPECT_NEAR(level, dbfs, 0.5);
    EXPECT_NEAR(r.progress.level, dbfs, 0.5);
    EXPECT_NEAR(hz, 440, 10.0 * 48000 / 65536);
    EXPECT_TRUE(r.dialogs.messages.empty());
    const std::string name = FindAudioInput("zavmic")->description().toStdString();
    const auto names = AudioInputNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 1);
    EXPECT_EQ(FindAudioInput(name)->id(), "zavmic");
}

TEST_F(SoundCard, MissingVanishingOrStalledInputsFailInWordsAndCancelStopsPromptly) {
    const std::string error = "Error: recording wave file: The audio input ";
    ASSERT_TRUE(server->Play(test::Sine(0.2 * 32768, 1000, 44100, 44100 * 30)));
    const struct {
        std::string device;
        std::function<void(Recorder&)> upset;
        RecordingStatus status;
        std::string message;
        int withinMs;
        QtAudioCapture::Timeouts timeouts{};
    } cases[] = {
        {"No Such Input", [](Recorder&) {}, RecordingStatus::Failed,
         error + "\"No Such Input\" is not available.(5).", 1000},
        // Suspended once the samples flow: listed still, but delivering nothing more.
        {"zavmic",
         [](Recorder& r) {
             r.progress.flowing = [] { server->Pactl({"suspend-source", "zavmic", "1"}); };
         },
         RecordingStatus::Failed,
         error + "stopped delivering samples.(6).",
         8000,
         {10000, 1000}},
        {"zavmic",
         [](Recorder& r) {
             r.progress.cancel = [clock = QElapsedTimer()]() mutable {
                 return (clock.isValid() || (clock.start(), true)) && clock.elapsed() > 800;
             };
         },
         RecordingStatus::Cancelled, "", 2000},
        // Pulled out a second into the recording.
        {"zavmic", [](Recorder&) { QTimer::singleShot(1000, [] { server->RemoveMicrophone(); }); },
         RecordingStatus::Failed, error + "was removed.(7).", 6000},
    };
    for (const auto& c : cases) {
        std::ofstream(path("step.wav")) << "previous";
        Recorder r(path("ZAV.wav"), c.device, c.timeouts);
        c.upset(r);
        QElapsedTimer clock;
        clock.start();
        EXPECT_EQ(r.recorder.RecordWave({path("step.wav"), 20000, false}).status, c.status);
        server->Pactl({"suspend-source", "zavmic", "0"});
        EXPECT_LT(clock.elapsed(), c.withinMs);
        EXPECT_EQ(testing::PrintToString(r.dialogs.texts()),
                  testing::PrintToString(c.message.empty() ? std::vector<std::string>{}
                                                           : std::vector{c.message}));
        EXPECT_EQ(test::ReadFile(path("step.wav")), "previous");
    }
}

// What the adapters play, as the sink's monitor hears it through parec: a second of 440 Hz, and
// the beep. The monitor loses a few ms at the start of a stream: lengths are heard shortened.
TEST_F(SoundCard, PlaysTheWholeRecordingAndTheBeepAndRefusesAnUnusableFile) {
    test::WriteWave(path("tone.wav"), test::Sine(0.3 * 32768, 440, 44100, 44100), 44100);
    QtAudioOutput output;
    QtBeeper beeper;
    QElapsedTimer clock;
    // The stretch from the first to the last sample above 5 % of full scale.
    const auto loudPart = [](const std::vector<std::int16_t>& s) {
        auto loud = [](std::int16_t v) { return std::abs(int{v}) > 0.05 * 32768; };
        return std::pair<std::size_t, std::size_t>(
            std::find_if(s.begin(), s.end(), loud) - s.begin(),
            s.rend() - std::find_if(s.rbegin(), s.rend(), loud));
    };
    const struct {
        std::function<void()> play;
        double hz;
        std::size_t shortest, longest;
    } cases[] = {
        {[&] {
             EXPECT_FALSE(output.PlayWave(path("tone.wav")));
             EXPECT_GE(clock.elapsed(), 1000); // it waits for the end
         },
         440, 44100 - 2205, 44100 + 2205},
        {[&] {
             beeper.Beep(2000, 100);
             EXPECT_LT(clock.elapsed(), 500); // the caller goes on at once
             test::WaitFor([&] { return loudPart(samplesOf(path("monitor.raw"))).second > 0; });
         },
         2000, 4410 / 2, 4410 + 441},
    };
    for (const auto& c : cases) {
        QProcess parec;
        parec.setStandardOutputFile(QString::fromStdString(path("monitor.raw")));
        parec.start("parec", {"-d", "zavsink.monitor", "--raw", "--format=s16le", "--channels=1",
                              "--rate=44100", "--latency-msec=20"});
        EXPECT_TRUE(test::WaitFor([] {
            return server->Pactl({"list", "short", "source-outputs"}).find("protocol-native") !=
                   std::string::npos;
        }));
        clock.start();
        SCOPED_TRACE(c.hz);
        c.play();
        test::WaitFor([] { return false; }, 500); // let the tone end
        parec.terminate();
        parec.waitForFinished(3000);
        const auto heard = samplesOf(path("monitor.raw"));
        const auto [from, to] = loudPart(heard);
        ASSERT_GT(to, from + 200) << "nothing was heard";
        EXPECT_GE(to - from, c.shortest);
        EXPECT_LE(to - from, c.longest);
        EXPECT_NEAR(toneOf(heard, from, to, 44100).second, c.hz, c.hz * 0.03);
    }
    EXPECT_EQ(output.PlayWave(path("absent.wav")).value_or(DeviceError{}).number, kDeviceBadFile);
    std::ofstream(path("text.wav")) << "not a wave file";
    EXPECT_EQ(PlayingErrorMessage(output.PlayWave(path("text.wav")).value_or(DeviceError{})),
              "Error: playing wave file: Unsupported WAVE file format.(8).");
}
