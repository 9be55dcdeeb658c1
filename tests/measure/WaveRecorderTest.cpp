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
        while (done < end) {
            ++continueAsked;
            if (!sink.Continue()) {
                outcome.status = CaptureStatus::Stopped;
                return outcome;
            }
            if (failAfter >= 0 && done >= failAfter) {
                outcome.error = {kDeviceFatalError, "The sound server went away."};
                return outcome;
            }
            std::vector<std::int16_t> chunk;
            for (std::size_t k = 0; k < block && done < end; ++k)
                chunk.push_back(value(done++));
            if (!sink.Samples(chunk.data(), chunk.size())) {
                outcome.status = CaptureStatus::Stopped;
                return outcome;
            }
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
        ASSERT_EQ(dialogs.messages.size(), 1u);
        EXPECT_EQ(dialogs.messages[0].text, text);
        EXPECT_EQ(dialogs.messages[0].title, "ZAV");
        EXPECT_EQ(dialogs.messages[0].icon, MessageIcon::Critical);
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
    EXPECT_EQ(test::ReadFile(rig.wav).size(), 44u + 2 * 8000);

    // The progress window saw the whole recording, in order, then closed.
    EXPECT_EQ(rig.progress.total, 16800);
    const auto& counts = rig.progress.counts;
    EXPECT_TRUE(std::is_sorted(counts.begin(), counts.end()) && counts.back() == 16800);
    EXPECT_EQ(rig.progress.ended, 1);

    // With the samples option the interval counts units of 1024 samples.
    rig.device.clear();
    const Recording k = rig.record(4, true);
    ASSERT_EQ(k.status, RecordingStatus::Recorded);
    EXPECT_EQ(k.samples, 4096);
    EXPECT_EQ(rig.capture.requests.back().samples, 8800 + 4096);
    EXPECT_EQ(rig.capture.requests.back().device, "");
    EXPECT_EQ(samplesOf(rig.wav).size(), 4096u);
}

TEST(WaveRecorder, DeviceFailuresShowTheRecordingErrorAndLeaveThePreviousFile) {
    Rig rig;
    std::ofstream(rig.wav) << "previous";
    rig.capture.failAfter = 3000;
    const Recording rec = rig.record(1000, false);
    EXPECT_EQ(rec.status, RecordingStatus::Failed);
    rig.expectOneError("Error: recording wave file: The sound server went away.(4).");
    EXPECT_EQ(test::ReadFile(rig.wav), "previous");
    EXPECT_EQ(rig.progress.ended, 1); // the progress window is closed first

    // A device that claims to be done early is no better.
    Rig shortRig;
    shortRig.capture.shortBy = 1;
    EXPECT_EQ(shortRig.record(1000, false).status, RecordingStatus::Failed);
    shortRig.expectOneError(
        "Error: recording wave file: The device delivered 16799 of 16800 samples.(2).");

    // Nowhere to write the raw recording, or an interval that cannot be recorded: the device
    // is not even started.
    for (std::int32_t interval : {1000, -5, std::numeric_limits<std::int32_t>::max()}) {
        Rig r;
        if (interval == 1000)
            r.wav = (r.dir / "gone" / "~step.wav").string();
        EXPECT_EQ(r.record(interval, true).status, RecordingStatus::Failed) << interval;
        EXPECT_TRUE(r.capture.requests.empty()) << interval;
        ASSERT_EQ(r.dialogs.messages.size(), 1u) << interval;
        EXPECT_EQ(r.dialogs.messages[0].text.rfind("Error: recording wave file: ", 0), 0u);
    }
}

TEST(WaveRecorder, WithoutAUsableTemplateTheStepEndsWithoutRecording) {
    Rig missing;
    std::filesystem::remove(missing.dir / "ZAV.wav");
    EXPECT_EQ(missing.record(1000, false).status, RecordingStatus::Failed);
    EXPECT_TRUE(missing.capture.requests.empty());
    ASSERT_EQ(missing.dialogs.messages.size(), 1u);
    EXPECT_NE(missing.dialogs.messages[0].text.find("ZAV.wav\" is missing"), std::string::npos);

    // A template that is a pipe nobody writes to or a device is refused at once, with why.
    Rig piped;
    std::filesystem::remove(piped.dir / "ZAV.wav");
    ASSERT_EQ(mkfifo((piped.dir / "ZAV.wav").c_str(), 0600), 0);
    EXPECT_EQ(piped.record(1000, false).status, RecordingStatus::Failed);
    EXPECT_TRUE(piped.capture.requests.empty());
    piped.expectOneError("Error: recording wave file: the recording template \"" +
                         (piped.dir / "ZAV.wav").string() +
                         "\" cannot be read: it is not a regular file.");

    Rig stereo;
    test::WaveHeader h;
    h.align = 4;
    test::WriteBytes(stereo.dir / "ZAV.wav", h.Bytes());
    EXPECT_EQ(stereo.record(1000, false).status, RecordingStatus::Failed);
    EXPECT_TRUE(stereo.capture.requests.empty());
    EXPECT_EQ(stereo.dialogs.texts(), std::vector<std::string>{"Unsupported WAVE file format."});

    // A header the reader accepts can still name no rate to record at.
    for (std::int32_t rate : {0, -44100}) {
        Rig rateless;
        test::WaveHeader r;
        r.rate = rate;
        test::WriteBytes(rateless.dir / "ZAV.wav", r.Bytes());
        EXPECT_EQ(rateless.record(1000, false).status, RecordingStatus::Failed);
        EXPECT_TRUE(rateless.capture.requests.empty());
        EXPECT_EQ(rateless.dialogs.texts(),
                  std::vector<std::string>{"Error: recording wave file: the recording template \"" +
                                           (rateless.dir / "ZAV.wav").string() +
                                           "\" gives a sample rate of " + std::to_string(rate) +
                                           " Hz."});
    }
}

TEST(WaveRecorder, CancelEndsTheStepWithoutAMeasurementOrAMessage) {
    Rig rig;
    std::ofstream(rig.wav) << "previous";
    rig.progress.cancelAfterUpdates = 5;
    const Recording rec = rig.record(1000, false);
    EXPECT_EQ(rec.status, RecordingStatus::Cancelled);
    EXPECT_TRUE(rig.dialogs.messages.empty());
    EXPECT_EQ(test::ReadFile(rig.wav), "previous");
    EXPECT_EQ(rig.progress.counts.size(), 5u);
    EXPECT_EQ(rig.progress.ended, 1);
    EXPECT_LT(rig.capture.continueAsked, 10); // stopped promptly, not at the end
}

TEST(WaveRecorder, TheMeterShowsTheLevelOfTheLatestAudio) {
    Rig rig(44100);
    // Silence, then a sine of a quarter of full scale: the meter ends on the sine's RMS.
    const auto sine = test::Sine(8192, 1000, 44100, 44100 * 3);
    rig.capture.value = [&sine](std::int64_t i) {
        return i < 44100 ? std::int16_t{0} : sine[static_cast<std::size_t>(i)];
    };
    ASSERT_EQ(rig.record(1000, false).status, RecordingStatus::Recorded);
    EXPECT_NEAR(rig.progress.lastLevel, 20 * std::log10(0.25 / std::sqrt(2.0)), 0.01);
}

TEST(LevelMeter, RmsOfTheLastWindowInDecibelsOfFullScale) {
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
    EXPECT_EQ(LevelText(partly.Dbfs()), "-6.0 dBFS");
    EXPECT_EQ(LevelText(-12.34, ','), "-12,3 dBFS");

    const std::vector<std::int16_t> zeros(1000, 0);
    partly.Add(zeros.data(), 1000 - 3);
    partly.Add(zeros.data(), 3); // the loud samples left the window: silence again
    EXPECT_EQ(LevelText(partly.Dbfs()), "-inf dBFS");
}

// The input meter against sines of known level: RMS A/√2, peak A, and its clipping warning
// at the same point where a step's peak reading (a sine's RMS) passes 0.7 of full scale.
TEST(InputLevel, ReadsASinesLevelsAndWarnsWhereTheStepsWouldClip) {
    Measurement limit;
    for (double amplitude : {0.25, 0.9, 0.985, 0.995}) {
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
        EXPECT_EQ(LevelAdvice(r).rfind("Clipping", 0) == 0, r.clipping);
    }
    InputLevel meter(4410, 2);
    const auto quiet = test::Sine(0.25 * 32768, 1000, 44100, 4410);
    meter.Add(quiet.data(), quiet.size());
    const InputLevelReading r = meter.TakeReading();
    EXPECT_EQ(RmsLevelText(r, ','), "RMS -15,1 dBFS");
    EXPECT_EQ(PeakLevelText(r, '.'), "Peak -12.0 dBFS");
    EXPECT_EQ(HeadroomText(r, '.'), "Headroom 12.0 dB to the clipping limit (-0.1 dBFS)");
    EXPECT_EQ(LevelAdvice(r), "Level good for measuring");

    // One overload is held for the next readings, then the warning goes.
    const std::int16_t over[] = {32767, -32768};
    meter.Add(over, 2);
    EXPECT_TRUE(meter.TakeReading().clipping);
    for (bool held : {true, true, false}) {
        meter.Add(quiet.data(), 10);
        EXPECT_EQ(meter.TakeReading().clipping, held);
    }
    // A peak is measured between readings, not kept for ever.
    meter.Add(quiet.data(), quiet.size());
    EXPECT_NEAR(meter.TakeReading().peakDbfs, 20 * std::log10(0.25), 0.05);

    InputLevel silent(100);
    const std::vector<std::int16_t> zeros(100, 0);
    silent.Add(zeros.data(), zeros.size());
    const InputLevelReading none = silent.TakeReading();
    EXPECT_EQ(HeadroomText(none, '.'), "Headroom: no signal");
    EXPECT_EQ(LevelAdvice(none), "No signal: check the chosen input and its cable");
    const auto low = test::Sine(0.003 * 32768, 1000, 44100, 4410);
    InputLevel faint(4410);
    faint.Add(low.data(), low.size());
    EXPECT_EQ(LevelAdvice(faint.TakeReading()), "Low level: turn the receiver's audio gain up");
}

TEST(SineTone, TheBeepIsTheAskedFrequencyAndLengthWithoutClicks) {
    const auto tone = SineTone(2000, 100, 44100, 0.5);
    ASSERT_EQ(tone.size(), 4410u);
    // 2000 Hz over 100 ms is 200 cycles: 400 sign changes, give or take the ends.
    int changes = 0;
    for (std::size_t i = 1; i < tone.size(); ++i)
        changes += (tone[i - 1] < 0) != (tone[i] < 0);
    EXPECT_NEAR(changes, 400, 2);
    // Full level in the middle (RMS of a sine of peak 0.5), silent at both ends.
    double sum = 0;
    for (std::size_t i = 441; i < 441 * 9; ++i)
        sum += double(tone[i]) * tone[i];
    EXPECT_NEAR(std::sqrt(sum / (441 * 8)) / 32767, 0.5 / std::sqrt(2.0), 0.002);
    EXPECT_LE(std::abs(tone.front()), 1);
    EXPECT_LE(std::abs(tone.back()), 300);
    EXPECT_TRUE(SineTone(2000, 0, 44100, 0.5).empty());
    const auto loud = SineTone(1000, 50, 8000, 2.0); // clamped to full scale, never wrapped
    EXPECT_EQ(*std::max_element(loud.begin(), loud.end()), 32767);
    EXPECT_GE(*std::min_element(loud.begin(), loud.end()), -32767);
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
    EXPECT_FALSE(std::filesystem::is_symlink(rig.tmp));
    EXPECT_FALSE(std::filesystem::is_symlink(rig.wav));
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
