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
    std::int64_t position = 0;
    test::FakeDialogs dialogs;
    bool refused() const { // one message, and nothing to read
        return info.SampleRate == 0 && info.Samples == 0 &&
               dialogs.texts() == std::vector<std::string>{"Unsupported WAVE file format."};
    }
};

Read readFile(const std::string& path) {
    Read r;
    BinaryFile file(path);
    r.info = ReadWaveHeader(file, r.dialogs);
    r.position = file.Position();
    return r;
}

Read readHeader(const std::string& bytes) {
    return readFile(test::WriteBytes(test::ScratchDir() / "h.wav", bytes));
}

} // namespace

TEST(ReadWaveHeader, AcceptsWhatItCanReadAndRefusesEveryOtherLayoutWithOneMessage) {
    WaveHeader extended; // the 18-byte format chunk with its extension size
    extended.formatSize = 18;
    extended.formatExtra = std::string(2, '\0');
    extended.rate = 8000;
    const Read r = readHeader(extended.Bytes(std::vector<std::int16_t>(10, 7)));
    EXPECT_EQ(std::make_tuple(r.info.SampleRate, r.info.Samples, r.position),
              std::make_tuple(8000, 10, std::int64_t{46}));
    // Only the block alignment is looked at: 8-bit stereo passes, any rate passes.
    WaveHeader eightBitStereo;
    eightBitStereo.channels = 2;
    eightBitStereo.bits = 8;
    eightBitStereo.rate = 3;
    EXPECT_EQ(readHeader(eightBitStereo.Bytes({1})).info.SampleRate, 3);

    const std::pair<const char*, void (*)(WaveHeader&)> spoilt[] = {
        {"identifiers are case-sensitive", [](WaveHeader& h) { h.riff = "riff"; }},
        {"not WAVE", [](WaveHeader& h) { h.wave = "AVI "; }},
        {"format chunk not first", [](WaveHeader& h) { h.fmt = "LIST"; }},
        {"floating point", [](WaveHeader& h) { h.tag = 3; }},
        {"8-bit mono", [](WaveHeader& h) { h.align = 1; }},
        {"data id", [](WaveHeader& h) { h.data = "DATA"; }},
        {"chunk before data",
         [](WaveHeader& h) { h.between = "LIST" + test::LittleEndian(4, 4) + "INFO"; }},
        // Format sizes pointing past the 32-bit range, before the start, or back at "RIFF".
        {"overflow",
         [](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::max(); }},
        {"negative",
         [](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::min(); }},
        {"offset 0", [](WaveHeader& h) { h.formatSize = -20; }}};
    for (const auto& [what, change] : spoilt) {
        WaveHeader h;
        change(h);
        EXPECT_TRUE(readHeader(h.Bytes({1, 2, 3})).refused()) << what;
    }
    // Every cut of a canonical file: refused up to the data identifier; once "data" is there,
    // missing size bytes read as zero (the size, 6, is in the first one).
    const std::string whole = WaveHeader{}.Bytes({100, -100, 5});
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const Read cut = readHeader(whole.substr(0, length));
        if (length < 40) {
            EXPECT_TRUE(cut.refused()) << length;
        } else {
            EXPECT_EQ(cut.info.SampleRate, 44100) << length;
            EXPECT_EQ(cut.info.Samples, length > 40 ? 3 : 0) << length;
            EXPECT_TRUE(cut.dialogs.messages.empty()) << length;
        }
    }
    EXPECT_EQ(readHeader(whole).position, 44); // at the first sample
    EXPECT_TRUE(readFile((test::ScratchDir() / "absent.wav").string()).refused());
}

TEST(ReadWaveHeader, RealFilesFromOtherWritersAreJudgedByTheSameRules) {
    ZAV_NEED_SHARED_DATA();
    const std::string dir = std::string(ZAV_SHARED_DATA_DIR) + "/wav/";
    // Mono PCM with a 16-byte format chunk; its other chunks come after the data.
    const Read listInfo = readFile(dir + "goaudio_listinfo.wav");
    EXPECT_EQ(std::make_tuple(listInfo.info.SampleRate, listInfo.info.Samples, listInfo.position),
              std::make_tuple(44100, 88200, std::int64_t{44})); // the frames its source states
    EXPECT_TRUE(listInfo.dialogs.messages.empty());
    for (const char* refused : {"goaudio_kick-16b441k.wav", "hound_pop.wav",
                                "hound_waveformatex-16bit-44100Hz-mono-extra.wav"})
        EXPECT_TRUE(readFile(dir + refused).refused()) << refused; // stereo, extensible, LIST
}

TEST(SamplesFromDataSize, HalvesWithTiesToEven) {
    ASSERT_EQ(std::fegetround(), FE_TONEAREST); // the unit's own rounding is the oracle
    std::vector<std::int32_t> sizes = {std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max()};
    for (std::int32_t d = -1000; d <= 1000; ++d)
        sizes.push_back(d);
    for (std::int32_t d : sizes)
        EXPECT_EQ(SamplesFromDataSize(d), static_cast<std::int32_t>(std::nearbyint(d / 2.0))) << d;
}
