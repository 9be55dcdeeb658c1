// The sound-card adapters against a real sound system: a private PulseAudio server whose null
// sink plays what the test (or the adapter) plays, and whose remapped monitor is the input.
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
#include "testsupport/TestWave.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>

using namespace zav;

namespace {

test::PulseServer* server = nullptr;

// Stops the server once, when the whole program is done with it.
struct ServerEnvironment : ::testing::Environment {
    void TearDown() override { delete server, server = nullptr; }
};
[[maybe_unused]] const auto* kEnvironment =
    ::testing::AddGlobalTestEnvironment(new ServerEnvironment);

std::string fileBytes(const std::string& path) {
    QFile f(QString::fromStdString(path));
    f.open(QIODevice::ReadOnly);
    return f.readAll().toStdString();
}

// 16-bit samples from `from` bytes on (the machine is little-endian, as the files are).
std::vector<std::int16_t> samplesOf(const std::string& bytes, std::size_t from = 0) {
    std::vector<std::int16_t> s((bytes.size() - std::min(from, bytes.size())) / 2);
    if (!s.empty()) // an empty vector's data() may be null, which memcpy must not get
        std::memcpy(s.data(), bytes.data() + std::min(from, bytes.size()), 2 * s.size());
    return s;
}

double rmsDbfs(const std::vector<std::int16_t>& s) {
    double sum = 0;
    for (std::int16_t v : s)
        sum += (v / 32768.0) * (v / 32768.0);
    return 10 * std::log10(sum / static_cast<double>(s.size()));
}

// The frequency of a tone from its sign changes (2f a second) between `from` and `to`.
double frequencyHz(const std::vector<std::int16_t>& s, std::size_t from, std::size_t to, int rate) {
    int n = 0;
    for (std::size_t i = from + 1; i < to; ++i)
        n += (s[i - 1] < 0) != (s[i] < 0);
    return n * rate / 2.0 / static_cast<double>(to - from);
}

// The stretch from the first to the last sample above `threshold`.
std::pair<std::size_t, std::size_t> loudPart(const std::vector<std::int16_t>& s, int threshold) {
    auto loud = [threshold](std::int16_t v) { return std::abs(int{v}) > threshold; };
    const auto first = std::find_if(s.begin(), s.end(), loud);
    if (first == s.end())
        return {0, 0};
    const auto last = std::find_if(s.rbegin(), s.rend(), loud);
    return {static_cast<std::size_t>(first - s.begin()), static_cast<std::size_t>(s.rend() - last)};
}

struct Progress : CaptureProgress {
    double level = 0;
    bool flowing = false;
    std::function<bool()> cancel = [] { return false; };
    std::function<void()> firstSamples = [] {};
    void Begin(std::int64_t) override {}
    void Update(std::int64_t n, double dbfs) override {
        if (!flowing && n > 0)
            flowing = true, firstSamples();
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
    Recorder(const std::string& templatePath, std::string dev,
             QtAudioCapture::Timeouts timeouts = {})
        : capture(timeouts), device(std::move(dev)),
          recorder({capture, dialogs, &progress}, templatePath, [this] { return device; }) {}
};

class SoundCard : public ::testing::Test {
protected:
    void SetUp() override {
        if (!server)
            server = new test::PulseServer;
        ASSERT_TRUE(server->ok()) << server->why();
        ASSERT_TRUE(server->EnsureMicrophone());
        ASSERT_TRUE(test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }))
            << "Qt does not list the remapped source zavmic";
    }
    void TearDown() override { server->StopPlaying(); }
    std::string path(const char* name) const { return m_dir.filePath(name).toStdString(); }

    void playSine(double amplitude, double hz) {
        ASSERT_TRUE(server->Play(test::Sine(amplitude * 32768, hz, 44100, 44100 * 30)));
    }
    // What the null sink plays while `play` runs, as parec hears it (16-bit mono, 44.1 kHz).
    std::vector<std::int16_t> hear(const std::function<void()>& play) {
        QProcess parec;
        parec.setStandardOutputFile(QString::fromStdString(path("monitor.raw")));
        parec.start("parec", {"-d", "zavsink.monitor", "--raw", "--format=s16le", "--channels=1",
                              "--rate=44100", "--latency-msec=20"});
        EXPECT_TRUE(test::WaitFor([] {
            return server->Pactl({"list", "short", "source-outputs"}).find("protocol-native") !=
                   std::string::npos;
        })) << "parec did not start recording";
        play();
        test::WaitFor([] { return false; }, 500); // let the tone end
        parec.terminate();
        parec.waitForFinished(3000);
        return samplesOf(fileBytes(path("monitor.raw")));
    }
    QTemporaryDir m_dir;
};

} // namespace

// Plays a sine and records it through each mode and input: the step's file has the count
// asked for, at the template's rate, with the sine's level and frequency.
TEST_F(SoundCard, RecordsWhatWasPlayedAtTheTemplatesRateInEitherMode) {
    const struct {
        int rate;
        std::string device;
        int interval;
        bool samples;
        double amplitude, hz;
        std::size_t expected;
    } cases[] = {{44100, "zavmic", 1000, false, 0.3, 1000, 44100},
                 {48000, "", 64, true, 0.5, 440, 65536}}; // "": the default input
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rate);
        playSine(c.amplitude, c.hz);
        test::WriteWave(path("ZAV.wav"), {}, c.rate);
        Recorder r(path("ZAV.wav"), c.device);
        const Recording rec = r.recorder.RecordWave({path("step.wav"), c.interval, c.samples});
        ASSERT_EQ(rec.status, RecordingStatus::Recorded)
            << testing::PrintToString(r.dialogs.texts());
        EXPECT_EQ(std::make_pair(rec.samples, rec.sampleRate),
                  std::make_pair(static_cast<std::int64_t>(c.expected), c.rate));
        BinaryFile f(path("step.wav"));
        EXPECT_EQ(ReadWaveHeader(f, r.dialogs).SampleRate, c.rate);
        const auto kept = samplesOf(fileBytes(path("step.wav")), 44);
        ASSERT_EQ(kept.size(), c.expected);
        const double levelDbfs = 20 * std::log10(c.amplitude / std::sqrt(2.0));
        EXPECT_NEAR(rmsDbfs(kept), levelDbfs, 0.5);
        EXPECT_NEAR(r.progress.level, levelDbfs, 0.5);
        EXPECT_NEAR(frequencyHz(kept, 0, kept.size(), c.rate), c.hz,
                    10.0 * c.rate / static_cast<double>(c.expected));
        EXPECT_TRUE(r.dialogs.messages.empty());
    }
    // The inputs are listed by name and found by name or id.
    const auto byId = FindAudioInput("zavmic");
    ASSERT_TRUE(byId);
    const std::string name = byId->description().toStdString();
    const auto names = AudioInputNames();
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end());
    EXPECT_EQ(FindAudioInput(name)->id(), "zavmic");
    EXPECT_FALSE(FindAudioInput("No Such Input"));
}

TEST_F(SoundCard, MissingVanishingOrStalledInputsFailInWordsAndCancelStopsPromptly) {
    test::WriteWave(path("ZAV.wav"), {}, 44100);
    std::ofstream(path("step.wav")) << "previous";
    const std::string error = "Error: recording wave file: ";
    Recorder unknown(path("ZAV.wav"), "No Such Input");
    EXPECT_EQ(unknown.recorder.RecordWave({path("step.wav"), 1000, false}).status,
              RecordingStatus::Failed);
    EXPECT_EQ(unknown.dialogs.texts(),
              std::vector{error + "The audio input \"No Such Input\" is not available.(5)."});

    playSine(0.2, 1000);
    const struct {
        std::function<void(Recorder&)> upset;
        RecordingStatus status;
        std::vector<std::string> messages;
        int withinMs;
        QtAudioCapture::Timeouts timeouts{};
    } cases[] = {
        // Suspended once the samples flow: listed still, but delivering nothing more.
        {[](Recorder& r) {
             r.progress.firstSamples = [] { server->Pactl({"suspend-source", "zavmic", "1"}); };
         },
         RecordingStatus::Failed,
         {error + "The audio input stopped delivering samples.(6)."},
         8000,
         {10000, 1000}},
        {[](Recorder& r) {
             QElapsedTimer clock;
             clock.start();
             r.progress.cancel = [clock] { return clock.elapsed() > 800; };
         },
         RecordingStatus::Cancelled,
         {},
         2000},
        // Pulled out a second into the recording.
        {[](Recorder&) { QTimer::singleShot(1000, [] { server->RemoveMicrophone(); }); },
         RecordingStatus::Failed,
         {error + "The audio input was removed.(7)."},
         6000},
    };
    for (const auto& c : cases) {
        Recorder r(path("ZAV.wav"), "zavmic", c.timeouts);
        c.upset(r);
        QElapsedTimer clock;
        clock.start();
        EXPECT_EQ(r.recorder.RecordWave({path("step.wav"), 20000, false}).status, c.status);
        server->Pactl({"suspend-source", "zavmic", "0"});
        EXPECT_LT(clock.elapsed(), c.withinMs);
        EXPECT_EQ(r.dialogs.texts(), c.messages);
        if (c.status == RecordingStatus::Failed) {
            EXPECT_EQ(fileBytes(path("step.wav")), "previous");
        }
    }
}

// What the adapters play, as the sink's monitor hears it: a second of 440 Hz rising from 0.1 to
// 0.5 of full scale (the last peak tells whether the end was played), and the beep. The monitor
// loses a few ms at the start of a stream, so lengths are heard shortened, never longer.
TEST_F(SoundCard, PlaysTheWholeRecordingAndTheBeepAndRefusesAnUnusableFile) {
    std::vector<std::int16_t> tone(44100);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] =
            static_cast<std::int16_t>((0.1 + 0.4 * static_cast<double>(i) / 44100) * 32767 *
                                      std::sin(2 * M_PI * 440 * static_cast<double>(i) / 44100));
    test::WriteWave(path("tone.wav"), tone, 44100);
    QtAudioOutput output;
    QtBeeper beeper;
    const struct {
        std::function<void()> play;
        double hz, lastPeak;
        std::size_t shortest, longest;
    } cases[] = {
        {[&] {
             QElapsedTimer clock;
             clock.start();
             EXPECT_FALSE(output.PlayWave(path("tone.wav")));
             EXPECT_GE(clock.elapsed(), 1000); // it waits for the end
         },
         440, 0.5, 44100 - 2205, 44100 + 2205},
        {[&] {
             QElapsedTimer clock;
             clock.start();
             beeper.Beep(2000, 100);
             EXPECT_LT(clock.elapsed(), 500); // the caller goes on at once
             test::WaitFor([&] {              // the stream may take a second or two to start
                 return loudPart(samplesOf(fileBytes(path("monitor.raw"))), 3277).second > 0;
             });
         },
         2000, 0, 4410 / 2, 4410 + 441},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.hz);
        const auto heard = hear(c.play);
        const auto [from, to] = loudPart(heard, static_cast<int>(0.05 * 32768));
        ASSERT_GT(to, from + 200) << "nothing was heard";
        EXPECT_GE(to - from, c.shortest);
        EXPECT_LE(to - from, c.longest);
        EXPECT_NEAR(frequencyHz(heard, from, to, 44100), c.hz, c.hz * 0.03);
        int lastPeak = 0;
        for (std::size_t i = to - 200; i < to; ++i)
            lastPeak = std::max(lastPeak, std::abs(int{heard[i]}));
        if (c.lastPeak > 0) {
            EXPECT_NEAR(lastPeak / 32767.0, c.lastPeak, 0.01);
        }
    }
    EXPECT_EQ(output.PlayWave(path("absent.wav")).value_or(DeviceError{}).number, kDeviceBadFile);
    std::ofstream(path("text.wav")) << "not a wave file";
    const auto bad = output.PlayWave(path("text.wav"));
    ASSERT_TRUE(bad);
    EXPECT_EQ(PlayingErrorMessage(*bad),
              "Error: playing wave file: Unsupported WAVE file format.(8).");
}
