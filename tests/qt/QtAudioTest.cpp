// Against a private PulseAudio server whose null sink's remapped monitor "zavmic" is the input.
#include "PulseServer.h"

#include "measure/WaveDeviceMessages.h"
#include "measure/WaveRecorder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>

using namespace zav;

namespace {

// Level, frequency (2f sign changes a second) and length of a file's samples from byte `from`,
// between the first and the last one above `threshold`.
struct Tone {
    double dbfs, hz, length;
};
Tone toneOf(const std::string& path, std::size_t from, int rate, int threshold = 0) {
    const std::string bytes = test::ReadFile(path);
    std::vector<std::int16_t> s(bytes.size() > from ? (bytes.size() - from) / 2 : 0);
    if (!s.empty()) // an empty vector's data() may be null, which memcpy must not get
        std::memcpy(s.data(), bytes.data() + from, 2 * s.size());
    auto loud = [threshold](std::int16_t v) { return std::abs(int{v}) > threshold; };
    const std::size_t first = std::find_if(s.begin(), s.end(), loud) - s.begin();
    const std::size_t end = s.rend() - std::find_if(s.rbegin(), s.rend(), loud);
    double sum = 0, changes = 0, n = end > first ? double(end - first) : 0;
    for (std::size_t i = first; i < end; ++i)
        sum += s[i] * s[i] / 1073741824.0, changes += i > first && (s[i - 1] < 0) != (s[i] < 0);
    return {10 * std::log10(sum / n), changes * rate / 2 / n, n};
}

struct Recorder : CaptureProgress {
    QtAudioCapture capture;
    test::FakeDialogs dialogs;
    WaveRecorder recorder;
    double level = 0;
    std::function<bool()> cancel = [] { return false; };
    std::function<void()> flowing = [] {}; // once, when the first samples came
    Recorder(const std::string& templ, std::string dev, QtAudioCapture::Timeouts timeouts = {})
        : capture(timeouts), recorder({capture, dialogs, this}, templ, [dev] { return dev; }) {}
    void Begin(std::int64_t) override {}
    void Update(std::int64_t n, double dbfs) override {
        level = dbfs, n > 0 ? std::exchange(flowing, [] {})() : void();
    }
    bool CancelRequested() override { return cancel(); }
    void End() override {}
};

} // namespace

TEST(SoundCard, RecordsAndPlaysThroughARealServerAndAVanishingInputFailsInWords) {
    test::PulseServer server;
    ASSERT_TRUE(server.ok()) << server.why();
    ASSERT_TRUE(test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }));
    QTemporaryDir dir;
    const auto path = [&dir](const char* name) { return dir.filePath(name).toStdString(); };

    // Into the default input, resampled to the template's rate, the count asked for.
    ASSERT_TRUE(server.Play(test::Sine(0.5 * 32768, 440, 44100, 44100 * 30)));
    test::WriteWave(path("ZAV.wav"), {}, 48000);
    Recorder r(path("ZAV.wav"), "");
    const Recording rec = r.recorder.RecordWave({path("step.wav"), 64, true});
    ASSERT_EQ(rec.status, RecordingStatus::Recorded) << testing::PrintToString(r.dialogs.texts());
    EXPECT_EQ(std::pair(rec.samples, rec.sampleRate), std::pair(std::int64_t{65536}, 48000));
    const Tone kept = toneOf(path("step.wav"), 44, 48000);
    EXPECT_EQ(kept.length, 65536);
    EXPECT_NEAR(kept.dbfs, 20 * std::log10(0.5 / std::sqrt(2.0)), 0.5);
    EXPECT_NEAR(r.level, kept.dbfs, 0.5);
    EXPECT_NEAR(kept.hz, 440, 10.0 * 48000 / 65536);
    const std::string name = FindAudioInput("zavmic")->description().toStdString();
    EXPECT_EQ(FindAudioInput(name)->id(), "zavmic");
    EXPECT_EQ(AudioInputNames(), std::vector{name});

    // Unknown, stalled (suspended), cancelled or pulled out: promptly over, the file as it was.
    const std::string e = "Error: recording wave file: The audio input ";
    const auto fails = [&](const std::string& device, int withinMs, RecordingStatus status,
                           std::vector<std::string> messages, auto upset) {
        std::ofstream(path("step.wav")) << "previous";
        Recorder r(path("ZAV.wav"), device, {10000, 1000});
        upset(r);
        QElapsedTimer clock;
        clock.start();
        EXPECT_EQ(r.recorder.RecordWave({path("step.wav"), 20000, false}).status, status);
        EXPECT_LT(clock.elapsed(), withinMs);
        EXPECT_EQ(r.dialogs.texts(), messages);
        EXPECT_EQ(test::ReadFile(path("step.wav")), "previous");
    };
    fails("No Such Input", 1000, RecordingStatus::Failed,
          {e + "\"No Such Input\" is not available.(5)."}, [](Recorder&) {});
    fails("zavmic", 8000, RecordingStatus::Failed, {e + "stopped delivering samples.(6)."},
          [&](Recorder& r) {
              r.flowing = [&] { server.Pactl({"suspend-source", "zavmic", "1"}); };
          });
    server.Pactl({"suspend-source", "zavmic", "0"});
    fails("zavmic", 2000, RecordingStatus::Cancelled, {},
          [](Recorder& r) { QTimer::singleShot(800, [&r] { r.cancel = [] { return true; }; }); });
    fails("zavmic", 6000, RecordingStatus::Failed, {e + "was removed.(7)."},
          [&](Recorder&) { QTimer::singleShot(1000, [&] { server.RemoveMicrophone(); }); });

    // As parec hears the sink's monitor, which loses a few ms at the start of a stream.
    const auto hear = [&](const std::function<void()>& play) {
        QProcess parec;
        parec.setStandardOutputFile(QString::fromStdString(path("heard.raw")));
        parec.start("parec", {"-d", "zavsink.monitor", "--raw", "--format=s16le", "--channels=1",
                              "--rate=44100", "--latency-msec=20"});
        EXPECT_TRUE(test::WaitFor([&] { // parec, not the remapped source
            return server.Pactl({"list", "short", "source-outputs"}).find("protocol-native") + 1;
        }));
        QElapsedTimer clock;
        clock.start();
        play();
        const qint64 ms = clock.elapsed();
        test::WaitFor([&] { return toneOf(path("heard.raw"), 0, 1, 3277).length > 0; });
        test::WaitFor([] { return false; }, 500); // let the tone end
        parec.terminate();
        parec.waitForFinished(3000);
        return std::pair(toneOf(path("heard.raw"), 0, 44100, 0.05 * 32768), ms);
    };
    server.StopPlaying();
    test::WriteWave(path("tone.wav"), test::Sine(0.3 * 32768, 440, 44100, 44100), 44100);
    QtAudioOutput output;
    const auto [played, playMs] = hear([&] { EXPECT_FALSE(output.PlayWave(path("tone.wav"))); });
    EXPECT_GE(playMs, 1000); // to its end
    EXPECT_NEAR(played.length, 44100, 2205);
    EXPECT_NEAR(played.hz, 440, 440 * 0.03);
    QtBeeper beeper;
    const auto [beep, beepMs] = hear([&] { beeper.Beep(2000, 100); });
    EXPECT_LT(beepMs, 500);               // the caller goes on at once
    EXPECT_NEAR(beep.length, 3528, 1323); // 50 % to 110 % of 100 ms
    EXPECT_NEAR(beep.hz, 2000, 2000 * 0.03);
    EXPECT_EQ(output.PlayWave(path("absent.wav")).value_or(DeviceError{}).number, kDeviceBadFile);
    std::ofstream(path("text.wav")) << "not a wave file";
    EXPECT_EQ(PlayingErrorMessage(output.PlayWave(path("text.wav")).value_or(DeviceError{})),
              "Error: playing wave file: Unsupported WAVE file format.(8).");
}
