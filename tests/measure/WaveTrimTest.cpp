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

} // namespace

TEST(RecordingCounts, IntervalsInMillisecondsAndInSamples) {
    // Milliseconds round to the nearest sample, the settling 1.1 s too, a half to the even
    // neighbour; the samples option counts 1024 each, whatever the rate.
    const std::tuple<std::int32_t, bool, std::int32_t, std::int64_t> keep[] = {
        {1000, false, 44100, 44100},
        {64, true, 8000, 65536},
        {5, false, 44100, 220},
        {15, false, 44100, 662},
        {3, false, 48000, 144}};
    for (const auto& [interval, inSamples, rate, samples] : keep)
        EXPECT_EQ(SamplesToKeep(interval, inSamples, rate), samples) << interval << " " << rate;
    const std::tuple<std::int32_t, std::int64_t, std::int64_t> record[] = {
        {44100, 44100, 92610}, {48000, 65536, 118336}, {5, 0, 6}, {15, 0, 16}};
    for (const auto& [rate, kept, samples] : record)
        EXPECT_EQ(SamplesToRecord(rate, kept), samples) << rate << " " << kept;
    EXPECT_EQ(RawRecordingPath("out.d/take.1.wav") + RawRecordingPath("noextension"),
              "out.d/take.1.tmpnoextension.tmp");
}

// The trimmed file is the template's header with a canonical RIFF size, then samples R to
// R + S - 1 (R = 1.1 s); a raw recording one sample short of R + S, or none at all, leaves the old
// file.
TEST(TrimRecording, KeepsExactlyTheSamplesBehindTheSettlingSecond) {
    const auto dir = test::ScratchDir();
    const auto out = (dir / "r.wav").string();
    WaveHeader canonical, extended; // the second with an 18-byte format chunk
    canonical.rate = 100;
    extended.rate = 200, extended.formatSize = 18,
    extended.formatExtra = std::string("\x07\x00", 2);
    test::FakeDialogs dialogs;
    const auto templ =
        ReadWaveTemplate(test::WriteBytes(dir / "ZAV.wav", extended.Bytes()), dialogs);
    ASSERT_TRUE(templ);
    EXPECT_EQ(std::make_tuple(templ->HeaderLength, templ->SampleRate, templ->header),
              std::make_tuple(std::int64_t{43}, 200, extended.Bytes().substr(0, 42)));
    const std::tuple<const WaveHeader*, std::int64_t, std::size_t, std::size_t> cases[] = {
        {&canonical, 41, 50, 0},
        {&canonical, 41, 0, 0},
        {&extended, 43, 33, 0},
        {&canonical, 41, 50, 11}};
    for (const auto& [h, headerLength, kept, missing] : cases) {
        SCOPED_TRACE(testing::Message() << h->rate << " " << kept << " " << missing);
        const auto raw = test::WriteBytes(
            dir / "r.tmp", h->Bytes(numbered(0, SamplesToRecord(h->rate, kept) - missing)));
        test::WriteBytes(out, "previous");
        std::string error;
        EXPECT_EQ(TrimRecording(raw, out, headerLength, h->rate, kept, &error), missing == 0);
        std::string want = h->Bytes(numbered(h->rate, kept));
        want.replace(4, 4, test::LittleEndian(static_cast<std::uint32_t>(2 * kept + 36), 4));
        EXPECT_EQ(test::ReadFile(out), missing ? "previous" : want);
        EXPECT_EQ(error.find("fewer samples") != std::string::npos, missing > 0) << error;
    }
    std::string error;
    EXPECT_FALSE(TrimRecording((dir / "absent.tmp").string(), out, 41, 100, 50, &error));
    EXPECT_NE(error.find("cannot read"), std::string::npos) << error;
    EXPECT_EQ(test::ReadFile(out), "previous");
}

TEST(ReadWaveTemplate, TheShippedOneIsCanonicalAndEightBitStereoIsRefused) {
    test::FakeDialogs dialogs;
    const auto shipped = ReadWaveTemplate(ZAV_SOURCE_DIR "/resources/ZAV.wav", dialogs);
    ASSERT_TRUE(shipped && dialogs.messages.empty());
    EXPECT_EQ(std::make_pair(shipped->SampleRate, shipped->HeaderLength),
              std::make_pair(44100, std::int64_t{41}));
    WaveHeader eightBitStereo; // the reader lets it pass; a recording cannot use it
    eightBitStereo.channels = 2, eightBitStereo.bits = 8;
    EXPECT_FALSE(ReadWaveTemplate(
        test::WriteBytes(test::ScratchDir() / "e.wav", eightBitStereo.Bytes()), dialogs));
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_NE(dialogs.messages[0].text.find("not a 16-bit mono PCM file"), std::string::npos);
}
