#include "measure/WaveTrim.h"
#include "WaveBytes.h"
#include "measure/RecordingCounts.h"
#include "measure/WaveTemplate.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

using namespace zav;
using zav::test::WaveHeader;

namespace {

std::string readAll(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

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
    // One second at 44100 Hz keeps 44100 samples out of 92610 recorded.
    EXPECT_EQ(SamplesToKeep(1000, false, 44100), 44100);
    EXPECT_EQ(SamplesToRecord(44100, 44100), 92610);
    EXPECT_EQ(SamplesToKeep(64, true, 44100), 65536);
    EXPECT_EQ(SamplesToKeep(64, true, 8000), 65536); // the rate does not enter
    // Milliseconds round to the nearest sample, a half to the even neighbour.
    EXPECT_EQ(SamplesToKeep(1, false, 44100), 44);   // 44.1
    EXPECT_EQ(SamplesToKeep(5, false, 44100), 220);  // 220.5
    EXPECT_EQ(SamplesToKeep(15, false, 44100), 662); // 661.5
    EXPECT_EQ(SamplesToKeep(3, false, 48000), 144);
    EXPECT_EQ(SamplesToRecord(8000, 0), 8800);
    EXPECT_EQ(SamplesToRecord(48000, 65536), 118336);
    // 1.1 x 5 = 5.5 is a tie: to even.
    EXPECT_EQ(SamplesToRecord(5, 0), 6);
    EXPECT_EQ(SamplesToRecord(15, 0), 16); // 16.5 -> 16

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
    EXPECT_EQ(readAll(out), expected);

    // Zero samples kept: a header only, still a valid file.
    ASSERT_TRUE(TrimRecording(raw, out, 41, rate, 0, &error)) << error;
    std::string empty = h.Bytes();
    putRiffSize(empty, 36);
    EXPECT_EQ(readAll(out), empty);
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
    EXPECT_EQ(readAll(out), expected);
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
    EXPECT_EQ(readAll(out), "previous");
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
