#include "measure/WaveRecorder.h"
#include "WaveBytes.h"
#include "measure/FileAudioInput.h"
#include "measure/InputLevel.h"
#include "measure/Measurement.h"
#include "measure/RecordingCounts.h"
#include "measure/SineTone.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveHeader.h"
#include "measure/WaveTemplate.h"
#include "measure/WaveTrim.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/SharedData.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

using namespace zav;
using zav::test::WaveHeader;

namespace {

struct FakeCapture : AudioCapture {
    static std::int16_t value(std::int64_t i) {
        return static_cast<std::int16_t>(i % 30011 - 15000);
    }
    std::int64_t failAfter = -1, shortBy = 0;
    std::vector<CaptureRequest> requests;
    int continueAsked = 0;

    CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) override {
        requests.push_back(request);
        CaptureOutcome out;
        out.status = CaptureStatus::Stopped;
        const std::int64_t n = request.samples - shortBy;
        for (std::int64_t done = 0; done < n;) {
            if (++continueAsked, !sink.Continue())
                return out;
            if (failAfter >= 0 && done >= failAfter) {
                out.status = CaptureOutcome{}.status;
                out.error = {kDeviceFatalError, "The sound server went away."};
                return out;
            }
            std::vector<std::int16_t> chunk;
            while (chunk.size() < 441 && done < n)
                chunk.push_back(value(done++));
            if (!sink.Samples(chunk.data(), chunk.size()))
                return out;
        }
        out.status = CaptureStatus::Completed;
        return out;
    }
};

struct FakeProgress : CaptureProgress {
    std::int64_t total = -1;
    std::vector<std::int64_t> counts;
    double level = 0;
    int ended = 0;
    std::size_t cancelAfterUpdates = SIZE_MAX;
    void Begin(std::int64_t t) override { total = t; }
    void Update(std::int64_t n, double dbfs) override { counts.push_back(n), level = dbfs; }
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

    Rig() { test::WriteWave((dir / "ZAV.wav").string(), {}, 8000); }
    Recording record(std::int32_t interval, bool inSamples = false) {
        return recorder.RecordWave({wav, interval, inSamples});
    }
};

// Rate, samples and position after the header, or "refused" when the one message was shown.
std::string headerOf(const std::string& path) {
    test::FakeDialogs dialogs;
    BinaryFile file(path);
    const WaveInfo info = ReadWaveHeader(file, dialogs);
    if (dialogs.texts() == std::vector<std::string>{"Unsupported WAVE file format."} &&
        info.SampleRate == 0 && info.Samples == 0)
        return "refused";
    return std::to_string(info.SampleRate) + " " + std::to_string(info.Samples) + " @" +
           std::to_string(file.Position()) + (dialogs.messages.empty() ? "" : " with a message");
}

} // namespace

TEST(ReadWaveHeader, AcceptsWhatItCanReadAndRefusesEveryOtherLayoutWithOneMessage) {
    const auto dir = test::ScratchDir();
    auto read = [&dir](const std::string& bytes) {
        return headerOf(test::WriteBytes(dir / "h.wav", bytes));
    };
    // Only the block alignment is looked at: 8-bit stereo passes, any rate passes.
    WaveHeader extended, stereo, between;
    extended.formatSize = 18, extended.formatExtra = std::string(2, '\0'), extended.rate = 8000;
    stereo.channels = 2, stereo.bits = 8, stereo.rate = 3;
    between.between = "LIST" + test::LittleEndian(4, 4) + "INFO";
    EXPECT_EQ(read(extended.Bytes({1, 2, 3})) + "|" + read(stereo.Bytes({1, 2, 3})) + "|" +
                  read(between.Bytes({1, 2, 3})),
              "8000 3 @46|3 3 @44|refused");
    // Identifiers, a float tag, alignment 1, format sizes past 32 bits, before 0 or at RIFF.
    const std::size_t at[] = {0, 8, 12, 36, 20, 32, 16, 16, 16};
    const std::string put[] = {"r",
                               "w",
                               "F",
                               "D",
                               "\x03",
                               "\x01",
                               test::LittleEndian(0x7fffffff, 4),
                               test::LittleEndian(0x80000000, 4),
                               test::LittleEndian(-20, 4)};
    const std::string whole = WaveHeader{}.Bytes({100, -100, 5});
    for (std::size_t i = 0; i < std::size(at); ++i)
        EXPECT_EQ(read(std::string(whole).replace(at[i], put[i].size(), put[i])), "refused") << i;
    EXPECT_EQ(read(whole) + read("") + headerOf((dir / "absent.wav").string()),
              "44100 3 @44refusedrefused");
    // Every cut: refused up to "data"; then missing size bytes read as 0 (6 is in the first).
    for (std::size_t n = 0; n <= whole.size(); ++n) {
        const std::string got = read(whole.substr(0, n));
        EXPECT_EQ(got.substr(0, got.find(" @")) + (got.find("message") > got.size() ? "" : "!"),
                  n < 40    ? "refused"
                  : n == 40 ? "44100 0"
                            : "44100 3")
            << n;
    }
}

TEST(ReadWaveHeader, RealFilesFromOtherWritersAndTheSampleCountRounding) {
    for (std::int32_t d = -1000; d <= 1000; ++d) // ties to even, as the unit rounds by default
        EXPECT_EQ(SamplesFromDataSize(d), static_cast<std::int32_t>(std::nearbyint(d / 2.0))) << d;
    EXPECT_EQ(SamplesFromDataSize(std::numeric_limits<std::int32_t>::max()), 1 << 30);
    EXPECT_EQ(SamplesFromDataSize(std::numeric_limits<std::int32_t>::min()), -(1 << 30));
    ZAV_NEED_SHARED_DATA();
    const std::string dir = std::string(ZAV_SHARED_DATA_DIR) + "/wav/";
    // Mono PCM, 16-byte format chunk, other chunks after the data: the frames its source states.
    EXPECT_EQ(headerOf(dir + "goaudio_listinfo.wav"), "44100 88200 @44");
    for (const char* refused : {"goaudio_kick-16b441k.wav", "hound_pop.wav",
                                "hound_waveformatex-16bit-44100Hz-mono-extra.wav"})
        EXPECT_EQ(headerOf(dir + refused), "refused") << refused; // stereo, extensible, LIST
}

// Milliseconds and the settling 1.1 s round half to even; a sample unit counts 1024.
TEST(RecordingCounts, IntervalsInMillisecondsAndInSamples) {
    EXPECT_EQ(SamplesToKeep(1000, false, 44100), 44100);
    EXPECT_EQ(SamplesToKeep(64, true, 8000), 65536);
    EXPECT_EQ(SamplesToKeep(5, false, 44100), 220);
    EXPECT_EQ(SamplesToKeep(15, false, 44100), 662);
    EXPECT_EQ(SamplesToKeep(3, false, 48000), 144);
    EXPECT_EQ(SamplesToRecord(44100, 44100), 92610);
    EXPECT_EQ(SamplesToRecord(48000, 65536), 118336);
    EXPECT_EQ(SamplesToRecord(5, 0) + SamplesToRecord(15, 0), 6 + 16);
    EXPECT_EQ(RawRecordingPath("out.d/take.1.wav") + RawRecordingPath("noextension"),
              "out.d/take.1.tmpnoextension.tmp");
    test::FakeDialogs dialogs;
    const auto shipped = ReadWaveTemplate(ZAV_SOURCE_DIR "/resources/ZAV.wav", dialogs);
    ASSERT_TRUE(shipped && dialogs.messages.empty());
    EXPECT_EQ(std::make_pair(shipped->SampleRate, shipped->HeaderLength),
              std::make_pair(44100, std::int64_t{41}));
    // A raw recording shorter than the samples to keep, or none at all, leaves the old file.
    const auto dir = test::ScratchDir();
    const std::string raw = test::WriteBytes(dir / "r.tmp", WaveHeader{}.Bytes({1, 2, 3}));
    const std::string out = test::WriteBytes(dir / "r.wav", "previous");
    for (const std::string& from : {raw, (dir / "absent.tmp").string()}) {
        std::string error;
        EXPECT_FALSE(TrimRecording(from, out, 44, 1, 3, &error));
        EXPECT_TRUE(!error.empty() && test::ReadFile(out) == "previous") << error;
    }
}

// The template's header (18-byte format chunk), a canonical RIFF size, the samples after 1.1 s.
TEST(WaveRecorder, RecordsFromTheTemplatesRateKeepsTheSamplesBehindTheSettlingSecondSafely) {
    Rig rig;
    WaveHeader extended;
    extended.rate = 8000, extended.formatSize = 18;
    extended.formatExtra = std::string("\x07\x00", 2);
    test::WriteBytes(rig.dir / "ZAV.wav", extended.Bytes());
    const auto victim = rig.dir / "victim"; // another user's links to a file of the operator's
    test::WriteBytes(victim, "precious");
    std::filesystem::create_symlink(victim, rig.tmp);
    std::filesystem::create_symlink(victim, rig.wav);
    const Recording rec = rig.record(1000);
    EXPECT_EQ(std::make_tuple(rec.status, rec.samples, rec.sampleRate, rec.time),
              std::make_tuple(RecordingStatus::Recorded, 8000, 8000, std::time_t{1'700'000'000}));
    ASSERT_TRUE(rig.dialogs.messages.empty() && rig.capture.requests.size() == 1u);
    const CaptureRequest& asked = rig.capture.requests[0];
    EXPECT_EQ(std::make_tuple(asked.device, asked.sampleRate, asked.samples),
              std::make_tuple(std::string("Line In"), 8000, std::int64_t{16800}));
    std::vector<std::int16_t> kept(8000);
    for (std::size_t i = 0; i < kept.size(); ++i)
        kept[i] = FakeCapture::value(8000 + static_cast<std::int64_t>(i));
    EXPECT_EQ(test::ReadFile(rig.wav),
              extended.Bytes(kept).replace(4, 4, test::LittleEndian(2 * 8000 + 36, 4)));
    EXPECT_EQ(headerOf(rig.tmp), "8000 16800 @46"); // the raw recording stays for the exit
    EXPECT_FALSE(std::filesystem::is_symlink(rig.tmp) || std::filesystem::is_symlink(rig.wav));
    const auto& counts = rig.progress.counts;
    EXPECT_TRUE(rig.progress.total == 16800 && std::is_sorted(counts.begin(), counts.end()) &&
                counts.back() == 16800 && rig.progress.ended == 1);
    double sum = 0; // the level shown: RMS of the last 0.1 s, across the device's blocks
    for (std::int64_t i = 16800 - 800; i < 16800; ++i)
        sum += std::pow(FakeCapture::value(i) / 32768.0, 2);
    EXPECT_NEAR(rig.progress.level, 10 * std::log10(sum / 800), 1e-9);
    rig.device.clear(); // with the samples option the interval counts units of 1024 samples
    EXPECT_EQ(rig.record(4, true).samples, 4096);
    EXPECT_EQ(rig.capture.requests.back().samples, 8800 + 4096);
    EXPECT_EQ(headerOf(rig.wav), "8000 4096 @46");
    // A recording chosen from a file is copied the same way, and only from a regular file.
    std::filesystem::remove(rig.wav);
    std::filesystem::create_symlink(victim, rig.wav);
    std::string chosen = rig.tmp;
    FileAudioInput files(rig.dialogs, [&chosen]() -> std::optional<std::string> { return chosen; });
    ASSERT_EQ(files.RecordWave({rig.wav, 1000, false}).status, RecordingStatus::Recorded);
    EXPECT_EQ(test::ReadFile(victim) + test::ReadFile(rig.wav),
              "precious" + test::ReadFile(rig.tmp));
    chosen = "/dev/zero";
    EXPECT_EQ(files.RecordWave({rig.wav, 1000, false}).status, RecordingStatus::Failed);
    EXPECT_EQ(rig.dialogs.texts(), std::vector<std::string>{"Error: recording wave file: "
                                                            "/dev/zero: it is not a regular file"});
}

// Device faults, cancel, and refusals before the device starts: the previous file stays.
TEST(WaveRecorder, FailuresAndCancelLeaveThePreviousFile) {
    const std::string error = "Error: recording wave file: ";
    struct Case {
        std::int64_t failAfter, cancelAfter, shortBy;
        std::int32_t interval;
        std::string spoil, message; // spoil: the template or the target's folder
    };
    const Case cases[] = {
        {3000, -1, 0, 4, "", error + "The sound server went away.(4)."},
        {-1, 5, 0, 4, "", ""},
        {-1, -1, 1, 4, "", error + "The device delivered 12895 of 12896 samples.(2)."},
        {-1, -1, 0, 4, "folder", error},
        {-1, -1, 0, -5, "", error},
        {-1, -1, 0, std::numeric_limits<std::int32_t>::max(), "", error},
        {-1, -1, 0, 4, "fifo", "cannot be read: it is not a regular file."},
        {-1, -1, 0, 4, "rate", "\" gives a sample rate of -44100 Hz."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message + c.spoil);
        Rig r;
        std::ofstream(r.wav) << "previous";
        r.capture.failAfter = c.failAfter, r.capture.shortBy = c.shortBy;
        r.progress.cancelAfterUpdates = static_cast<std::size_t>(c.cancelAfter);
        const auto templ = r.dir / "ZAV.wav";
        WaveHeader h;
        h.rate = -44100;
        if (c.spoil == "rate")
            test::WriteBytes(templ, h.Bytes());
        // A template nobody writes into: refused, never waited for.
        ASSERT_TRUE(c.spoil != "fifo" ||
                    (std::filesystem::remove(templ) && mkfifo(templ.c_str(), 0600) == 0));
        const std::string previous = r.wav;
        if (c.spoil == "folder")
            r.wav = (r.dir / "gone" / "~step.wav").string();
        const bool started = c.interval == 4 && c.spoil.empty();
        EXPECT_EQ(r.record(c.interval, true).status,
                  c.message.empty() ? RecordingStatus::Cancelled : RecordingStatus::Failed);
        EXPECT_EQ(r.capture.requests.size() + r.progress.ended, started ? 2u : 0u);
        EXPECT_TRUE(!c.message.empty() || r.capture.continueAsked < 10); // cancel stops promptly
        const auto texts = r.dialogs.texts();
        if (started)
            EXPECT_EQ(texts, std::vector<std::string>(!c.message.empty(), c.message));
        else
            EXPECT_TRUE(texts.size() == 1 && texts[0].find(c.message) != std::string::npos);
        EXPECT_EQ(test::ReadFile(previous), "previous");
    }
}

// Sines of known level: RMS A/√2, peak A, and the clipping warning exactly where a step's peak
// detector (which reads a sine's RMS) would flag it.
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
        // An overload is held for the next two readings; the peak is of the last audio only.
        for (bool clipping : {r.clipping, r.clipping, false})
            EXPECT_EQ(reading(meter, 0.25, 10).clipping, clipping) << amplitude;
        EXPECT_NEAR(reading(meter, 0.25).peakDbfs, 20 * std::log10(0.25), 0.05);
    }
    InputLevel meter(4410, 2), silent(100);
    const InputLevelReading r = reading(meter, 0.25), low = reading(meter, 0.003);
    const InputLevelReading none = reading(silent, 0, 100);
    EXPECT_EQ(RmsLevelText(r, ',') + "|" + PeakLevelText(r, '.') + "|" + HeadroomText(r, '.') +
                  "|" + LevelAdvice(low) + "|" + HeadroomText(none, '.') + "|" + LevelAdvice(none),
              "RMS -15,1 dBFS|Peak -12.0 dBFS|Headroom 12.0 dB to the clipping limit (-0.1 dBFS)"
              "|Low level: turn the receiver's audio gain up|Headroom: no signal"
              "|No signal: check the chosen input and its cable");
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
    EXPECT_EQ(*std::max_element(loud.begin(), loud.end()), 32767);
    EXPECT_GE(*std::min_element(loud.begin(), loud.end()), -32767);
}
