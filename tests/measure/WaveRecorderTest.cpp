#include "measure/WaveRecorder.h"
#include "WaveBytes.h"
#include "measure/FileAudioInput.h"
#include "measure/InputLevel.h"
#include "measure/LevelMeter.h"
#include "measure/Measurement.h"
#include "measure/SineTone.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveHeader.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <tuple>

using namespace zav;

namespace {

std::vector<std::int16_t> samplesOf(const std::string& path, WaveInfo* info = nullptr) {
    test::FakeDialogs dialogs;
    BinaryFile f(path);
    const WaveInfo w = ReadWaveHeader(f, dialogs);
    if (info)
        *info = w;
    std::vector<std::int16_t> s(static_cast<std::size_t>(w.Samples));
    for (auto& v : s)
        v = f.ReadInt16();
    return s;
}

// A device that delivers sample i as `value(i)` in blocks, or fails, or falls short.
struct FakeCapture : AudioCapture {
    std::function<std::int16_t(std::int64_t)> value = [](std::int64_t i) {
        return static_cast<std::int16_t>(i % 30011 - 15000);
    };
    std::size_t block = 441;
    std::int64_t failAfter = -1; // fail once this many samples are delivered
    std::int64_t shortBy = 0;    // claim completion this many samples early
    std::vector<CaptureRequest> requests;
    int continueAsked = 0;

    CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) override {
        requests.push_back(request);
        CaptureOutcome outcome;
        outcome.startupMs = 12;
        std::int64_t done = 0;
        const std::int64_t end = request.samples - shortBy;
        outcome.status = CaptureStatus::Stopped;
        for (std::vector<std::int16_t> chunk; done < end; chunk.clear()) {
            ++continueAsked;
            if (!sink.Continue())
                return outcome;
            if (failAfter >= 0 && done >= failAfter) {
                outcome.status = CaptureOutcome{}.status;
                outcome.error = {kDeviceFatalError, "The sound server went away."};
                return outcome;
            }
            for (std::size_t k = 0; k < block && done < end; ++k)
                chunk.push_back(value(done++));
            if (!sink.Samples(chunk.data(), chunk.size()))
                return outcome;
        }
        outcome.status = CaptureStatus::Completed;
        return outcome;
    }
};

struct FakeProgress : CaptureProgress {
    std::int64_t total = -1;
    std::vector<std::int64_t> counts;
    double lastLevel = 0;
    int ended = 0;
    std::size_t cancelAfterUpdates = SIZE_MAX;
    void Begin(std::int64_t t) override { total = t; }
    void Update(std::int64_t n, double level) override {
        counts.push_back(n);
        lastLevel = level;
    }
    bool CancelRequested() override { return counts.size() >= cancelAfterUpdates; }
    void End() override { ++ended; }
};

struct Rig {
    std::filesystem::path dir = test::ScratchDir();
    FakeCapture capture;
    FakeProgress progress;
    test::FakeDialogs dialogs;
    std::string device = "Line In";
    WaveRecorder recorder{{capture, dialogs, &progress},
                          (dir / "ZAV.wav").string(),
                          [this] { return device; },
                          [] { return std::time_t{1'700'000'000}; }};
    std::string wav = (dir / "~step.wav").string();
    std::string tmp = (dir / "~step.tmp").string();

    explicit Rig(int rate = 8000) { test::WriteWave((dir / "ZAV.wav").string(), {}, rate); }
    Recording record(std::int32_t interval, bool inSamples) {
        return recorder.RecordWave({wav, interval, inSamples});
    }
    void expectOneError(const std::string& text) const {
        EXPECT_EQ(dialogs.texts(), std::vector<std::string>{text});
    }
};

} // namespace

TEST(WaveRecorder, RecordsFromTheTemplatesRateAndKeepsTheSamplesBehindTheSettlingSecond) {
    Rig rig(8000);
    const Recording rec = rig.record(1000, false);
    ASSERT_EQ(rec.status, RecordingStatus::Recorded);
    EXPECT_EQ(std::make_tuple(rec.samples, rec.sampleRate, rec.time),
              std::make_tuple(8000, 8000, std::time_t{1'700'000'000}));
    EXPECT_TRUE(rig.dialogs.messages.empty());
    ASSERT_EQ(rig.capture.requests.size(), 1u);
    EXPECT_EQ(rig.capture.requests[0].device, "Line In");
    EXPECT_EQ(rig.capture.requests[0].sampleRate, 8000);
    EXPECT_EQ(rig.capture.requests[0].samples, 16800);
    WaveInfo info;
    const auto kept = samplesOf(rig.wav, &info);
    EXPECT_EQ(info.SampleRate, 8000);
    ASSERT_EQ(kept.size(), 8000u);
    for (std::size_t i = 0; i < kept.size(); ++i)
        ASSERT_EQ(kept[i], rig.capture.value(8000 + static_cast<std::int64_t>(i))) << i;
    EXPECT_EQ(samplesOf(rig.tmp).size(), 16800u); // the raw recording stays for the exit
    // The progress window saw the whole recording, in order, then closed.
    EXPECT_EQ(rig.progress.total, 16800);
    const auto& counts = rig.progress.counts;
    EXPECT_TRUE(std::is_sorted(counts.begin(), counts.end()) && counts.back() == 16800);
    EXPECT_EQ(rig.progress.ended, 1);

    // With the samples option the interval counts units of 1024 samples.
    rig.device.clear();
    EXPECT_EQ(rig.record(4, true).samples, 4096);
    EXPECT_EQ(rig.capture.requests.back().samples, 8800 + 4096);
    EXPECT_EQ(rig.capture.requests.back().device, "");
    EXPECT_EQ(samplesOf(rig.wav).size(), 4096u);
}

TEST(WaveRecorder, FailuresAndCancelLeaveThePreviousFile) {
    Rig rig;
    std::ofstream(rig.wav) << "previous";
    rig.capture.failAfter = 3000;
    EXPECT_EQ(rig.record(1000, false).status, RecordingStatus::Failed);
    rig.expectOneError("Error: recording wave file: The sound server went away.(4).");
    EXPECT_EQ(test::ReadFile(rig.wav), "previous");
    EXPECT_EQ(rig.progress.ended, 1); // the progress window is closed first
    // Cancelled: no message, stopped promptly.
    Rig cancel;
    std::ofstream(cancel.wav) << "previous";
    cancel.progress.cancelAfterUpdates = 5;
    EXPECT_EQ(cancel.record(1000, false).status, RecordingStatus::Cancelled);
    EXPECT_TRUE(cancel.dialogs.messages.empty());
    EXPECT_EQ(test::ReadFile(cancel.wav), "previous");
    EXPECT_EQ(cancel.progress.ended, 1);
    EXPECT_LT(cancel.capture.continueAsked, 10);
    // A device that claims to be done early is no better.
    Rig shortRig;
    shortRig.capture.shortBy = 1;
    EXPECT_EQ(shortRig.record(1000, false).status, RecordingStatus::Failed);
    shortRig.expectOneError(
        "Error: recording wave file: The device delivered 16799 of 16800 samples.(2).");

    // Nowhere to write, an interval that cannot be recorded, or no usable template: the
    // device is not even started.
    const std::string prefix = "Error: recording wave file: ";
    const std::pair<std::function<std::int32_t(Rig&)>, std::string> refused[] = {
        {[](Rig& r) { return r.wav = (r.dir / "gone" / "~step.wav").string(), 1000; }, prefix},
        {[](Rig&) { return -5; }, prefix},
        {[](Rig&) { return std::numeric_limits<std::int32_t>::max(); }, prefix},
        {[](Rig& r) { return std::filesystem::remove(r.dir / "ZAV.wav"), 1000; },
         "ZAV.wav\" is missing"},
        {[](Rig& r) {
             std::filesystem::remove(r.dir / "ZAV.wav");
             return mkfifo((r.dir / "ZAV.wav").c_str(), 0600), 1000;
         },
         "cannot be read: it is not a regular file."},
        {[](Rig& r) {
             test::WaveHeader h;
             h.align = 4;
             return test::WriteBytes(r.dir / "ZAV.wav", h.Bytes()), 1000;
         },
         "Unsupported WAVE file format."},
        {[](Rig& r) {
             test::WaveHeader h;
             h.rate = -44100;
             return test::WriteBytes(r.dir / "ZAV.wav", h.Bytes()), 1000;
         },
         "\" gives a sample rate of -44100 Hz."},
    };
    for (const auto& [spoil, message] : refused) {
        Rig r;
        const std::int32_t interval = spoil(r);
        EXPECT_EQ(r.record(interval, true).status, RecordingStatus::Failed) << message;
        EXPECT_TRUE(r.capture.requests.empty()) << message;
        ASSERT_EQ(r.dialogs.messages.size(), 1u) << message;
        EXPECT_NE(r.dialogs.messages[0].text.find(message), std::string::npos)
            << r.dialogs.messages[0].text;
    }
}

TEST(WaveRecorder, ALinkPlantedAtTheStepsFilesIsReplacedNeverWrittenThrough) {
    // Another user's link at the raw or the finished recording's name, pointing at a file
    // of the operator's: the recording replaces the link and the file stays as it was.
    Rig rig;
    const auto victim = rig.dir / "victim";
    test::WriteBytes(victim, "precious");
    std::filesystem::create_symlink(victim, rig.tmp);
    std::filesystem::create_symlink(victim, rig.wav);
    ASSERT_EQ(rig.record(1000, false).status, RecordingStatus::Recorded);
    EXPECT_EQ(test::ReadFile(victim), "precious");
    EXPECT_FALSE(std::filesystem::is_symlink(rig.tmp) || std::filesystem::is_symlink(rig.wav));
    EXPECT_EQ(samplesOf(rig.wav).size(), 8000u);

    // A recording chosen from a file is copied the same way, and only from a regular file.
    std::filesystem::remove(rig.wav);
    std::filesystem::create_symlink(victim, rig.wav);
    std::string chosen = rig.tmp;
    FileAudioInput files(rig.dialogs, [&chosen]() -> std::optional<std::string> { return chosen; });
    ASSERT_EQ(files.RecordWave({rig.wav, 1000, false}).status, RecordingStatus::Recorded);
    EXPECT_EQ(test::ReadFile(victim), "precious");
    EXPECT_EQ(test::ReadFile(rig.wav), test::ReadFile(rig.tmp));
    chosen = "/dev/zero";
    EXPECT_EQ(files.RecordWave({rig.wav, 1000, false}).status, RecordingStatus::Failed);
    rig.expectOneError("Error: recording wave file: /dev/zero: it is not a regular file");
}

TEST(LevelMeter, RmsOfTheLatestAudioInDecibelsOfFullScale) {
    // While recording: silence, then a sine of a quarter of full scale.
    Rig rig(44100);
    const auto sine = test::Sine(8192, 1000, 44100, 44100 * 3);
    rig.capture.value = [&sine](std::int64_t i) {
        return i < 44100 ? std::int16_t{0} : sine[static_cast<std::size_t>(i)];
    };
    ASSERT_EQ(rig.record(1000, false).status, RecordingStatus::Recorded);
    EXPECT_NEAR(rig.progress.lastLevel, 20 * std::log10(0.25 / std::sqrt(2.0)), 0.01);

    LevelMeter meter(100);
    EXPECT_EQ(LevelText(meter.Dbfs()), "-inf dBFS");
    // A loud start that falls out of the window, then a ramp: only the last 100 count.
    std::vector<std::int16_t> s(50, 32767);
    for (int i = 0; i < 250; ++i)
        s.push_back(static_cast<std::int16_t>(i * 40 - 5000));
    meter.Add(s.data(), 120);
    meter.Add(s.data() + 120, s.size() - 120);
    double sum = 0;
    for (std::size_t i = s.size() - 100; i < s.size(); ++i)
        sum += (s[i] / 32768.0) * (s[i] / 32768.0);
    EXPECT_NEAR(meter.Dbfs(), 10 * std::log10(sum / 100), 1e-9);
    LevelMeter partly(1000); // before the window is full: the samples so far
    const std::int16_t half[] = {16384, -16384, 16384};
    partly.Add(half, 3);
    EXPECT_EQ(LevelText(partly.Dbfs()) + LevelText(-12.34, ','), "-6.0 dBFS-12,3 dBFS");
    const std::vector<std::int16_t> zeros(1000, 0);
    partly.Add(zeros.data(), 1000); // the loud samples left the window: silence again
    EXPECT_EQ(LevelText(partly.Dbfs()), "-inf dBFS");
}

// The input meter against sines of known level: RMS A/√2, peak A, and its clipping warning
// at the same point where a step's peak reading (a sine's RMS) passes 0.7 of full scale.
TEST(InputLevel, ReadsASinesLevelsAndWarnsWhereTheStepsWouldClip) {
    Measurement limit;
    for (double amplitude : {0.25, 0.985, 0.995}) {
        InputLevel meter(4410, 3);
        const auto sine = test::Sine(amplitude * 32768, 1000, 44100, 4410);
        meter.Add(sine.data(), sine.size());
        const InputLevelReading r = meter.TakeReading();
        EXPECT_NEAR(r.rmsDbfs, 20 * std::log10(amplitude / std::sqrt(2.0)), 0.05) << amplitude;
        EXPECT_NEAR(r.peakDbfs, 20 * std::log10(amplitude), 0.05) << amplitude;
        limit.Pk = amplitude / std::sqrt(2.0); // what the peak detector reads for this sine
        limit.Calc();
        EXPECT_EQ(r.clipping, limit.ClipFlag != 0) << amplitude;
        EXPECT_NEAR(r.headroomDb, ClipLimitDbfs() - r.peakDbfs, 1e-9);
    }
    InputLevel meter(4410, 2);
    const auto quiet = test::Sine(0.25 * 32768, 1000, 44100, 4410);
    meter.Add(quiet.data(), quiet.size());
    const InputLevelReading r = meter.TakeReading();
    EXPECT_EQ(RmsLevelText(r, ',') + "|" + PeakLevelText(r, '.') + "|" + HeadroomText(r, '.') +
                  "|" + LevelAdvice(r),
              "RMS -15,1 dBFS|Peak -12.0 dBFS|Headroom 12.0 dB to the clipping limit (-0.1 "
              "dBFS)|Level good for measuring");
    // One overload is held for the next readings, then the warning goes.
    const std::int16_t over[] = {32767, -32768};
    meter.Add(over, 2);
    EXPECT_TRUE(meter.TakeReading().clipping);
    EXPECT_EQ(LevelAdvice(meter.TakeReading()).rfind("Clipping", 0), 0u);
    for (bool held : {true, false}) {
        meter.Add(quiet.data(), 10);
        EXPECT_EQ(meter.TakeReading().clipping, held);
    }
    meter.Add(quiet.data(), quiet.size()); // the peak is of the last reading's audio only
    EXPECT_NEAR(meter.TakeReading().peakDbfs, 20 * std::log10(0.25), 0.05);
    const auto low = test::Sine(0.003 * 32768, 1000, 44100, 4410);
    meter.Add(low.data(), low.size());
    EXPECT_EQ(LevelAdvice(meter.TakeReading()), "Low level: turn the receiver's audio gain up");
    InputLevel silent(100);
    const std::vector<std::int16_t> zeros(100, 0);
    silent.Add(zeros.data(), zeros.size());
    const InputLevelReading none = silent.TakeReading();
    EXPECT_EQ(HeadroomText(none, '.'), "Headroom: no signal");
    EXPECT_EQ(LevelAdvice(none), "No signal: check the chosen input and its cable");
}

TEST(SineTone, TheBeepIsTheAskedFrequencyAndLengthWithoutClicks) {
    const auto tone = SineTone(2000, 100, 44100, 0.5);
    ASSERT_EQ(tone.size(), 4410u);
    int changes = 0; // 2000 Hz over 100 ms: 400 sign changes, give or take the ends
    for (std::size_t i = 1; i < tone.size(); ++i)
        changes += (tone[i - 1] < 0) != (tone[i] < 0);
    EXPECT_NEAR(changes, 400, 2);
    double sum = 0; // full level in the middle, silent at both ends
    for (std::size_t i = 441; i < 441 * 9; ++i)
        sum += double(tone[i]) * tone[i];
    EXPECT_NEAR(std::sqrt(sum / (441 * 8)) / 32767, 0.5 / std::sqrt(2.0), 0.002);
    EXPECT_LE(std::abs(tone.front()), 1);
    EXPECT_LE(std::abs(tone.back()), 300);
    const auto loud = SineTone(1000, 50, 8000, 2.0); // clamped to full scale, never wrapped
    EXPECT_EQ(*std::max_element(loud.begin(), loud.end()), 32767);
    EXPECT_GE(*std::min_element(loud.begin(), loud.end()), -32767);
}
