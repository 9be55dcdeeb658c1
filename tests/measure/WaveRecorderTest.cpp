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

using namespace zav;

namespace {

std::vector<std::int16_t> samplesOf(const std::string& path) {
    test::FakeDialogs dialogs;
    BinaryFile f(path);
    std::vector<std::int16_t> s(static_cast<std::size_t>(ReadWaveHeader(f, dialogs).Samples));
    for (auto& v : s)
        v = f.ReadInt16();
    return s;
}

// A device that delivers sample i as `value(i)` in blocks, or fails, or falls short.
struct FakeCapture : AudioCapture {
    std::function<std::int16_t(std::int64_t)> value = [](std::int64_t i) {
        return static_cast<std::int16_t>(i % 30011 - 15000);
    };
    std::int64_t failAfter = -1, shortBy = 0;
    std::vector<CaptureRequest> requests;
    int continueAsked = 0;

    CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) override {
        requests.push_back(request);
        CaptureOutcome outcome;
        outcome.status = CaptureStatus::Stopped;
        for (std::int64_t done = 0; done < request.samples - shortBy;) {
            ++continueAsked;
            if (!sink.Continue())
                return outcome;
            if (failAfter >= 0 && done >= failAfter) {
                outcome.status = CaptureOutcome{}.status;
                outcome.error = {kDeviceFatalError, "The sound server went away."};
                return outcome;
            }
            std::vector<std::int16_t> chunk;
            while (chunk.size() < 441 && done < request.samples - shortBy)
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
    void Update(std::int64_t n, double level) override { counts.push_back(n), lastLevel = level; }
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
    std::string wav = (dir / "~step.wav").string(), tmp = (dir / "~step.tmp").string();

    explicit Rig(int rate = 8000) { test::WriteWave((dir / "ZAV.wav").string(), {}, rate); }
    Recording record(std::int32_t interval, bool inSamples = false) {
        return recorder.RecordWave({wav, interval, inSamples});
    }
};

} // namespace

TEST(WaveRecorder, RecordsFromTheTemplatesRateAndKeepsTheSamplesBehindTheSettlingSecond) {
    Rig rig(8000);
    const Recording rec = rig.record(1000);
    EXPECT_EQ(std::make_tuple(rec.status, rec.samples, rec.sampleRate, rec.time),
              std::make_tuple(RecordingStatus::Recorded, 8000, 8000, std::time_t{1'700'000'000}));
    EXPECT_TRUE(rig.dialogs.messages.empty());
    ASSERT_EQ(rig.capture.requests.size(), 1u);
    const CaptureRequest& asked = rig.capture.requests[0];
    EXPECT_EQ(std::make_tuple(asked.device, asked.sampleRate, asked.samples),
              std::make_tuple(std::string("Line In"), 8000, std::int64_t{16800}));
    const auto kept = samplesOf(rig.wav);
    ASSERT_EQ(kept.size(), 8000u);
    for (std::size_t i = 0; i < kept.size(); ++i)
        ASSERT_EQ(kept[i], rig.capture.value(8000 + static_cast<std::int64_t>(i))) << i;
    EXPECT_EQ(samplesOf(rig.tmp).size(), 16800u); // the raw recording stays for the exit
    const auto& counts = rig.progress.counts;
    EXPECT_TRUE(rig.progress.total == 16800 && std::is_sorted(counts.begin(), counts.end()) &&
                counts.back() == 16800 && rig.progress.ended == 1);
    // With the samples option the interval counts units of 1024 samples.
    rig.device.clear();
    EXPECT_EQ(rig.record(4, true).samples, 4096);
    EXPECT_EQ(rig.capture.requests.back().samples, 8800 + 4096);
    EXPECT_EQ(samplesOf(rig.wav).size(), 4096u);
}

// Device faults, cancel, and refusals before the device starts: the previous file stays.
TEST(WaveRecorder, FailuresAndCancelLeaveThePreviousFile) {
    const std::string error = "Error: recording wave file: ";
    struct Case {
        std::int64_t failAfter, cancelAfter, shortBy;
        std::int32_t interval;
        std::string spoil; // of the template or the target's folder
        std::string message;
    };
    const std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    const Case cases[] = {
        {3000, -1, 0, 4, "", error + "The sound server went away.(4)."},
        {-1, 5, 0, 4, "", ""},
        {-1, -1, 1, 4, "", error + "The device delivered 12895 of 12896 samples.(2)."},
        {-1, -1, 0, 4, "folder", error},
        {-1, -1, 0, -5, "", error},
        {-1, -1, 0, huge, "", error},
        {-1, -1, 0, 4, "missing", "ZAV.wav\" is missing"},
        {-1, -1, 0, 4, "fifo", "cannot be read: it is not a regular file."},
        {-1, -1, 0, 4, "stereo", "Unsupported WAVE file format."},
        {-1, -1, 0, 4, "rate", "\" gives a sample rate of -44100 Hz."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message + c.spoil);
        Rig r;
        std::ofstream(r.wav) << "previous";
        r.capture.failAfter = c.failAfter, r.capture.shortBy = c.shortBy;
        r.progress.cancelAfterUpdates = static_cast<std::size_t>(c.cancelAfter);
        const auto templ = r.dir / "ZAV.wav";
        test::WaveHeader h;
        h.align = c.spoil == "stereo" ? 4 : 2, h.rate = c.spoil == "rate" ? -44100 : 44100;
        if (c.spoil == "stereo" || c.spoil == "rate")
            test::WriteBytes(templ, h.Bytes());
        if (c.spoil == "missing" || c.spoil == "fifo")
            std::filesystem::remove(templ);
        if (c.spoil == "fifo") {
            ASSERT_EQ(mkfifo(templ.c_str(), 0600), 0);
        }
        const std::string previous = r.wav;
        if (c.spoil == "folder")
            r.wav = (r.dir / "gone" / "~step.wav").string();
        const bool started = c.interval == 4 && c.spoil.empty();
        EXPECT_EQ(r.record(c.interval, true).status,
                  c.message.empty() ? RecordingStatus::Cancelled : RecordingStatus::Failed);
        EXPECT_EQ(r.capture.requests.size() + r.progress.ended, started ? 2u : 0u);
        EXPECT_TRUE(!c.message.empty() || r.capture.continueAsked < 10); // cancel stops promptly
        if (started) {
            EXPECT_EQ(r.dialogs.texts(), std::vector<std::string>(!c.message.empty(), c.message));
        } else {
            EXPECT_TRUE(r.dialogs.texts().size() == 1 &&
                        r.dialogs.texts()[0].find(c.message) != std::string::npos);
        }
        EXPECT_EQ(test::ReadFile(previous), "previous");
    }
}

// Another user's link at the raw or the finished recording's name, pointing at a file of the
// operator's: the recording replaces the link and the file stays as it was.
TEST(WaveRecorder, ALinkPlantedAtTheStepsFilesIsReplacedNeverWrittenThrough) {
    Rig rig;
    const auto victim = rig.dir / "victim";
    test::WriteBytes(victim, "precious");
    std::filesystem::create_symlink(victim, rig.tmp);
    std::filesystem::create_symlink(victim, rig.wav);
    ASSERT_EQ(rig.record(1000).status, RecordingStatus::Recorded);
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
    EXPECT_EQ(rig.dialogs.texts(), std::vector<std::string>{"Error: recording wave file: "
                                                            "/dev/zero: it is not a regular file"});
}

TEST(LevelMeter, RmsOfTheLatestAudioInDecibelsOfFullScale) {
    LevelMeter meter(100); // a loud start that falls out of the window, then a ramp
    EXPECT_EQ(LevelText(meter.Dbfs()), "-inf dBFS");
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
    partly.Add(zeros.data(), 1000);
    EXPECT_EQ(LevelText(partly.Dbfs()), "-inf dBFS");
}

// Sines of known level: RMS A/√2, peak A, and the clipping warning where a step's peak reading
// (a sine's RMS) passes 0.7 of full scale. Advice texts through PulseAudio: InputLevelDialogTest.
TEST(InputLevel, ReadsASinesLevelsAndWarnsWhereTheStepsWouldClip) {
    auto reading = [](InputLevel& m, double amplitude, std::size_t n = 4410) {
        const auto s = test::Sine(amplitude * 32768, 1000, 44100, n);
        m.Add(s.data(), s.size());
        return m.TakeReading();
    };
    for (double amplitude : {0.25, 0.985, 0.995}) {
        InputLevel meter(4410, 2);
        const InputLevelReading r = reading(meter, amplitude);
        EXPECT_NEAR(r.rmsDbfs, 20 * std::log10(amplitude / std::sqrt(2.0)), 0.05) << amplitude;
        EXPECT_NEAR(r.peakDbfs, 20 * std::log10(amplitude), 0.05) << amplitude;
        Measurement limit;
        limit.Pk = amplitude / std::sqrt(2.0);
        limit.Calc();
        EXPECT_EQ(r.clipping, limit.ClipFlag != 0) << amplitude;
        EXPECT_NEAR(r.headroomDb, ClipLimitDbfs() - r.peakDbfs, 1e-9);
        // An overload is held for the next two readings; the peak is of the last audio only.
        for (bool clipping : {r.clipping, r.clipping, false})
            EXPECT_EQ(reading(meter, 0.25, 10).clipping, clipping) << amplitude;
        EXPECT_NEAR(reading(meter, 0.25).peakDbfs, 20 * std::log10(0.25), 0.05);
    }
    InputLevel meter(4410, 2);
    const InputLevelReading r = reading(meter, 0.25), low = reading(meter, 0.003);
    EXPECT_EQ(RmsLevelText(r, ',') + "|" + PeakLevelText(r, '.') + "|" + HeadroomText(r, '.') +
                  "|" + LevelAdvice(low),
              "RMS -15,1 dBFS|Peak -12.0 dBFS|Headroom 12.0 dB to the clipping limit (-0.1 "
              "dBFS)|Low level: turn the receiver's audio gain up");
    InputLevel silent(100);
    const InputLevelReading none = reading(silent, 0, 100);
    EXPECT_EQ(HeadroomText(none, '.') + "|" + LevelAdvice(none),
              "Headroom: no signal|No signal: check the chosen input and its cable");
}

TEST(SineTone, TheBeepIsTheAskedFrequencyAndLengthWithoutClicks) {
    const auto tone = SineTone(2000, 100, 44100, 0.5);
    ASSERT_EQ(tone.size(), 4410u);
    int changes = 0; // 2000 Hz over 100 ms: 400 sign changes, give or take the ends
    double sum = 0;  // full level in the middle, silent at both ends
    for (std::size_t i = 1; i < tone.size(); ++i)
        changes += (tone[i - 1] < 0) != (tone[i] < 0);
    for (std::size_t i = 441; i < 441 * 9; ++i)
        sum += double(tone[i]) * tone[i];
    EXPECT_NEAR(changes, 400, 2);
    EXPECT_NEAR(std::sqrt(sum / (441 * 8)) / 32767, 0.5 / std::sqrt(2.0), 0.002);
    EXPECT_TRUE(std::abs(tone.front()) <= 1 && std::abs(tone.back()) <= 300);
    const auto loud = SineTone(1000, 50, 8000, 2.0); // clamped to full scale, never wrapped
    EXPECT_EQ(*std::minmax_element(loud.begin(), loud.end()).second, 32767);
    EXPECT_GE(*std::min_element(loud.begin(), loud.end()), -32767);
}
