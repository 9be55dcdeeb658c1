#include "measure/WaveHeader.h"
#include "WaveBytes.h"
#include "testsupport/FakeDialogs.h"

#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>

using namespace zav;
using zav::test::WaveHeader;

namespace {

struct Read {
    WaveInfo info;
    std::int64_t position;
    test::FakeDialogs dialogs;
};

Read readHeader(const std::string& bytes) {
    const auto path = test::WriteBytes(test::ScratchDir() / "h.wav", bytes);
    Read r;
    BinaryFile file(path);
    r.info = ReadWaveHeader(file, r.dialogs);
    r.position = file.Position();
    return r;
}

void expectRefused(const Read& r, const std::string& what) {
    EXPECT_EQ(r.info.SampleRate, 0) << what;
    EXPECT_EQ(r.info.Samples, 0) << what;
    ASSERT_EQ(r.dialogs.messages.size(), 1u) << what;
    EXPECT_EQ(r.dialogs.messages[0].text, "Unsupported WAVE file format.");
    EXPECT_EQ(r.dialogs.messages[0].title, "ZAV");
    EXPECT_EQ(r.dialogs.messages[0].icon, MessageIcon::Critical);
    EXPECT_EQ(r.dialogs.messages[0].buttons, MessageButtons::Ok);
}

} // namespace

TEST(ReadWaveHeader, AcceptsTheLayoutsItCanReadAndStopsAtTheFirstSample) {
    const std::vector<std::int16_t> samples(10, 7);
    WaveHeader extended; // the 18-byte format chunk with its extension size
    extended.formatSize = 18;
    extended.formatExtra = std::string(2, '\0');
    extended.rate = 8000;
    Read r = readHeader(extended.Bytes(samples));
    EXPECT_EQ(r.info.SampleRate, 8000);
    EXPECT_EQ(r.info.Samples, 10);
    EXPECT_EQ(r.position, 46);

    // Only the block alignment is looked at: 8-bit stereo passes, any rate passes.
    WaveHeader eightBitStereo;
    eightBitStereo.channels = 2;
    eightBitStereo.bits = 8;
    eightBitStereo.rate = 3;
    EXPECT_EQ(readHeader(eightBitStereo.Bytes(samples)).info.SampleRate, 3);

    // (The canonical layout, and one without samples: every cut of it, below.)
}

TEST(ReadWaveHeader, RefusesEveryOtherLayoutWithOneMessage) {
    auto spoilt = [](auto change) {
        WaveHeader h;
        change(h);
        return readHeader(h.Bytes({1, 2, 3}));
    };
    expectRefused(spoilt([](WaveHeader& h) { h.riff = "riff"; }), "identifiers are case-sensitive");
    expectRefused(spoilt([](WaveHeader& h) { h.wave = "AVI "; }), "not WAVE");
    expectRefused(spoilt([](WaveHeader& h) { h.fmt = "LIST"; }), "format chunk not first");
    expectRefused(spoilt([](WaveHeader& h) { h.tag = 3; }), "floating point");
    expectRefused(spoilt([](WaveHeader& h) { h.align = 1; }), "8-bit mono");
    expectRefused(spoilt([](WaveHeader& h) { h.data = "DATA"; }), "data id");
    expectRefused(
        spoilt([](WaveHeader& h) { h.between = "LIST" + test::LittleEndian(4, 4) + "INFO"; }),
        "a chunk between format and data");
    // Format sizes that point outside the file's 32-bit range or before its start, and one
    // that points back at "RIFF".
    expectRefused(
        spoilt([](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::max(); }),
        "20 + F overflows");
    expectRefused(
        spoilt([](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::min(); }),
        "negative offset");
    expectRefused(spoilt([](WaveHeader& h) { h.formatSize = -20; }), "offset 0");
}

TEST(ReadWaveHeader, ShortFilesReadAsFarAsTheyGo) {
    // Every cut of a canonical file: up to the data identifier the file is refused; once
    // "data" is there, missing size bytes read as zero (the size, 6, is in the first one).
    const std::string whole = WaveHeader{}.Bytes({100, -100, 5});
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const Read r = readHeader(whole.substr(0, length));
        if (length < 40) {
            expectRefused(r, "cut at " + std::to_string(length));
        } else {
            EXPECT_EQ(r.info.SampleRate, 44100) << length;
            EXPECT_EQ(r.info.Samples, length > 40 ? 3 : 0) << length;
            EXPECT_TRUE(r.dialogs.messages.empty()) << length;
        }
    }
    EXPECT_EQ(readHeader(whole).position, 44); // at the first sample
    // A file that does not exist reads as an empty one.
    test::FakeDialogs dialogs;
    BinaryFile missing((test::ScratchDir() / "absent.wav").string());
    EXPECT_FALSE(missing.IsOpen());
    EXPECT_EQ(ReadWaveHeader(missing, dialogs).SampleRate, 0);
    EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Unsupported WAVE file format."});
}

TEST(SamplesFromDataSize, HalvesWithTiesToEven) {
    // Against the floating-point unit's own round-half-even, at the range's ends and through
    // the middle.
    ASSERT_EQ(std::fegetround(), FE_TONEAREST);
    std::vector<std::int32_t> sizes = {std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max()};
    for (std::int32_t d = -1000; d <= 1000; ++d)
        sizes.push_back(d);
    for (std::int32_t d : sizes)
        EXPECT_EQ(SamplesFromDataSize(d), static_cast<std::int32_t>(std::nearbyint(d / 2.0))) << d;
}

TEST(ReadWaveHeader, RealFilesFromOtherWritersAreJudgedByTheSameRules) {
    ZAV_NEED_SHARED_DATA();
    const std::string dir = std::string(ZAV_SHARED_DATA_DIR) + "/wav/";
    auto open = [&](const std::string& name) {
        Read r;
        BinaryFile file(dir + name);
        EXPECT_TRUE(file.IsOpen()) << name;
        r.info = ReadWaveHeader(file, r.dialogs);
        r.position = file.Position();
        return r;
    };
    // Mono PCM with a 16-byte format chunk; its other chunks come after the data.
    const Read listInfo = open("goaudio_listinfo.wav");
    EXPECT_EQ(listInfo.info.SampleRate, 44100);
    EXPECT_EQ(listInfo.info.Samples, 88200); // the 88200 frames its source states
    EXPECT_EQ(listInfo.position, 44);
    EXPECT_TRUE(listInfo.dialogs.messages.empty());

    expectRefused(open("goaudio_kick-16b441k.wav"), "stereo: block alignment 4");
    expectRefused(open("hound_pop.wav"), "WAVE_FORMAT_EXTENSIBLE tag");
    expectRefused(open("hound_waveformatex-16bit-44100Hz-mono-extra.wav"), "LIST before data");
}
