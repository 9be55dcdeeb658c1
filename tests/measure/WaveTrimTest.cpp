#include "measure/WaveTrim.h"
#include "WaveBytes.h"
#include "measure/RecordingCounts.h"
#include "measure/WaveTemplate.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

using namespace zav;
using zav::test::WaveHeader;

namespace {

// Samples that say where they came from: sample i of the raw recording holds i - 30000.
std::vector<std::int16_t> numbered(std::size_t from, std::size_t count) {
    std::vector<std::int16_t> s(count);
    for (std::size_t i = 0; i < count; ++i)
        s[i] = static_cast<std::int16_t>(static_cast<int>(from + i) - 30000);
    return s;
}

void putRiffSize(std::string& bytes, std::uint32_t size) {
    bytes.replace(4, 4, test::LittleEndian(size, 4));
}

} // namespace

TEST(RecordingCounts, IntervalsInMillisecondsAndInSamples) {
    // One second at 44100 Hz keeps 44100 samples out of 92610 recorded; the samples option
    // counts 1024 each, whatever the rate. Milliseconds round to the nearest sample and the
    // settling 1.1 s to the nearest too, a half to the even neighbour.
    const std::tuple<std::int32_t, bool, std::int32_t, std::int64_t> keep[] = {
        {1000, false, 44100, 44100}, {64, true, 44100, 65536}, {64, true, 8000, 65536},
        {1, false, 44100, 44},       {5, false, 44100, 220},   {15, false, 44100, 662},
        {3, false, 48000, 144}};
    for (const auto& [interval, inSamples, rate, samples] : keep)
        EXPECT_EQ(SamplesToKeep(interval, inSamples, rate), samples) << interval << " " << rate;
    const std::tuple<std::int32_t, std::int64_t, std::int64_t> record[] = {
        {44100, 44100, 92610}, {8000, 0, 8800}, {48000, 65536, 118336}, {5, 0, 6}, {15, 0, 16}};
    for (const auto& [rate, kept, samples] : record)
        EXPECT_EQ(SamplesToRecord(rate, kept), samples) << rate << " " << kept;

    EXPECT_EQ(RawRecordingPath("/tmp/~0000ABCD.wav"), "/tmp/~0000ABCD.tmp");
    EXPECT_EQ(RawRecordingPath("out.d/take.1.wav"), "out.d/take.1.tmp");
    EXPECT_EQ(RawRecordingPath("noextension"), "noextension.tmp");
}

TEST(TrimRecording, KeepsExactlyTheSamplesBehindTheSettlingSecond) {
    const auto dir = test::ScratchDir();
    const std::int32_t rate = 100;
    const std::int64_t keep = 50;
    const std::int64_t total = SamplesToRecord(rate, keep); // 160
    WaveHeader h;
    h.rate = rate;
    const auto raw = test::WriteBytes(dir / "r.tmp", h.Bytes(numbered(0, total)));
    const auto out = (dir / "r.wav").string();
    std::string error;
    ASSERT_TRUE(TrimRecording(raw, out, 41, rate, keep, &error)) << error;

    std::string expected = h.Bytes(numbered(rate, keep)); // samples R to R + S - 1
    putRiffSize(expected, 2 * keep + 36);
    EXPECT_EQ(test::ReadFile(out), expected);

    // Zero samples kept: a header only, still a valid file.
    ASSERT_TRUE(TrimRecording(raw, out, 41, rate, 0, &error)) << error;
    std::string empty = h.Bytes();
    putRiffSize(empty, 36);
    EXPECT_EQ(test::ReadFile(out), empty);
}

TEST(TrimRecording, NonCanonicalHeaderIsCopiedButTheRiffSizeStaysCanonical) {
    const auto dir = test::ScratchDir();
    WaveHeader h; // an 18-byte format chunk: the data size field moves to offset 42
    h.rate = 200;
    h.formatSize = 18;
    h.formatExtra = std::string("\x07\x00", 2);
    const std::int64_t keep = 33, total = SamplesToRecord(200, keep);
    const auto raw = test::WriteBytes(dir / "r.tmp", h.Bytes(numbered(0, total)));

    // H from the template, as the recorder takes it.
    test::FakeDialogs dialogs;
    const auto templ = ReadWaveTemplate(test::WriteBytes(dir / "ZAV.wav", h.Bytes()), dialogs);
    ASSERT_TRUE(templ);
    EXPECT_EQ(templ->HeaderLength, 43);
    EXPECT_EQ(templ->SampleRate, 200);
    EXPECT_EQ(templ->header, h.Bytes().substr(0, 42));

    const auto out = (dir / "r.wav").string();
    ASSERT_TRUE(TrimRecording(raw, out, templ->HeaderLength, 200, keep));
    std::string expected = h.Bytes(numbered(200, keep));
    putRiffSize(expected, 2 * keep + 36); // not + 38: the result is canonical only in name
    EXPECT_EQ(test::ReadFile(out), expected);
}

TEST(TrimRecording, AShortOrMissingRawRecordingLeavesTheOldFile) {
    const auto dir = test::ScratchDir();
    const auto out = test::WriteBytes(dir / "r.wav", "previous");
    WaveHeader h;
    h.rate = 100;
    // One sample fewer than the settling second and the kept ones.
    const auto raw = test::WriteBytes(dir / "r.tmp", h.Bytes(numbered(0, 100 + 49)));
    std::string error;
    EXPECT_FALSE(TrimRecording(raw, out, 41, 100, 50, &error));
    EXPECT_NE(error.find("fewer samples"), std::string::npos) << error;
    EXPECT_FALSE(TrimRecording((dir / "absent.tmp").string(), out, 41, 100, 50, &error));
    EXPECT_NE(error.find("cannot read"), std::string::npos) << error;
    EXPECT_EQ(test::ReadFile(out), "previous");
}

TEST(ReadWaveTemplate, RefusesWhatCannotBeRecordedInto) {
    // (A missing template and one the WAVE reader refuses: see the recorder's own test.)
    const auto dir = test::ScratchDir();
    test::FakeDialogs dialogs;
    WaveHeader eightBitStereo; // the reader lets it pass; a recording cannot use it
    eightBitStereo.channels = 2;
    eightBitStereo.bits = 8;
    EXPECT_FALSE(
        ReadWaveTemplate(test::WriteBytes(dir / "e.wav", eightBitStereo.Bytes()), dialogs));
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_NE(dialogs.messages[0].text.find("not a 16-bit mono PCM file"), std::string::npos);

    // The template shipped with the program is canonical, 16-bit mono at 44100 Hz.
    dialogs.messages.clear();
    const auto shipped = ReadWaveTemplate(ZAV_SOURCE_DIR "/resources/ZAV.wav", dialogs);
    ASSERT_TRUE(shipped);
    EXPECT_EQ(shipped->SampleRate, 44100);
    EXPECT_EQ(shipped->HeaderLength, 41);
    EXPECT_TRUE(dialogs.messages.empty());
}
