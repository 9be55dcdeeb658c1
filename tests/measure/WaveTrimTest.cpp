#include "measure/WaveTrim.h"
#include "WaveBytes.h"
#include "measure/RecordingCounts.h"
#include "measure/WaveTemplate.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

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

// The file a trim should give: the header with a canonical RIFF size, then the samples.
std::string trimmed(const WaveHeader& h, std::size_t from, std::size_t count) {
    std::string bytes = h.Bytes(numbered(from, count));
    return bytes.replace(4, 4, test::LittleEndian(static_cast<std::uint32_t>(2 * count + 36), 4));
}

} // namespace

TEST(RecordingCounts, IntervalsInMillisecondsAndInSamples) {
    // Milliseconds round to the nearest sample, the settling 1.1 s too, a half to the even
    // neighbour; the samples option counts 1024 each, whatever the rate.
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
    EXPECT_EQ(RawRecordingPath("out.d/take.1.wav"), "out.d/take.1.tmp");
    EXPECT_EQ(RawRecordingPath("noextension"), "noextension.tmp");
}

TEST(TrimRecording, KeepsExactlyTheSamplesBehindTheSettlingSecond) {
    const auto dir = test::ScratchDir();
    const auto out = (dir / "r.wav").string();
    WaveHeader h;
    h.rate = 100;
    const auto raw =
        test::WriteBytes(dir / "r.tmp", h.Bytes(numbered(0, SamplesToRecord(100, 50))));
    std::string error;
    ASSERT_TRUE(TrimRecording(raw, out, 41, 100, 50, &error)) << error;
    EXPECT_EQ(test::ReadFile(out), trimmed(h, 100, 50));               // samples R to R + S - 1
    ASSERT_TRUE(TrimRecording(raw, out, 41, 100, 0, &error)) << error; // a header only
    EXPECT_EQ(test::ReadFile(out), trimmed(h, 0, 0));

    // An 18-byte format chunk, with the header length the template reader gives: copied as
    // it is, but the RIFF size stays the canonical one.
    WaveHeader x;
    x.rate = 200;
    x.formatSize = 18;
    x.formatExtra = std::string("\x07\x00", 2);
    test::FakeDialogs dialogs;
    const auto templ = ReadWaveTemplate(test::WriteBytes(dir / "ZAV.wav", x.Bytes()), dialogs);
    ASSERT_TRUE(templ);
    EXPECT_EQ(std::make_tuple(templ->HeaderLength, templ->SampleRate, templ->header),
              std::make_tuple(std::int64_t{43}, 200, x.Bytes().substr(0, 42)));
    const auto rawX =
        test::WriteBytes(dir / "x.tmp", x.Bytes(numbered(0, SamplesToRecord(200, 33))));
    ASSERT_TRUE(TrimRecording(rawX, out, templ->HeaderLength, 200, 33));
    EXPECT_EQ(test::ReadFile(out), trimmed(x, 200, 33));

    // One sample short, or no raw recording at all: the old file stays.
    test::WriteBytes(out, "previous");
    const auto shortRaw = test::WriteBytes(dir / "s.tmp", h.Bytes(numbered(0, 100 + 49)));
    EXPECT_FALSE(TrimRecording(shortRaw, out, 41, 100, 50, &error));
    EXPECT_NE(error.find("fewer samples"), std::string::npos) << error;
    EXPECT_FALSE(TrimRecording((dir / "absent.tmp").string(), out, 41, 100, 50, &error));
    EXPECT_NE(error.find("cannot read"), std::string::npos) << error;
    EXPECT_EQ(test::ReadFile(out), "previous");
}

TEST(ReadWaveTemplate, TheShippedOneIsCanonicalAndEightBitStereoIsRefused) {
    test::FakeDialogs dialogs;
    const auto shipped = ReadWaveTemplate(ZAV_SOURCE_DIR "/resources/ZAV.wav", dialogs);
    ASSERT_TRUE(shipped);
    EXPECT_EQ(std::make_pair(shipped->SampleRate, shipped->HeaderLength),
              std::make_pair(44100, std::int64_t{41}));
    EXPECT_TRUE(dialogs.messages.empty());
    WaveHeader eightBitStereo; // the reader lets it pass; a recording cannot use it
    eightBitStereo.channels = 2;
    eightBitStereo.bits = 8;
    EXPECT_FALSE(ReadWaveTemplate(
        test::WriteBytes(test::ScratchDir() / "e.wav", eightBitStereo.Bytes()), dialogs));
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_NE(dialogs.messages[0].text.find("not a 16-bit mono PCM file"), std::string::npos);
}
