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

// Rate, samples and position after the header, or "refused" when the one message was shown.
std::string readFile(const std::string& path) {
    test::FakeDialogs dialogs;
    BinaryFile file(path);
    const WaveInfo info = ReadWaveHeader(file, dialogs);
    if (dialogs.texts() == std::vector<std::string>{"Unsupported WAVE file format."} &&
        info.SampleRate == 0 && info.Samples == 0)
        return "refused";
    return std::to_string(info.SampleRate) + " " + std::to_string(info.Samples) + " @" +
           std::to_string(file.Position()) + (dialogs.messages.empty() ? "" : " with a message");
}

std::string readHeader(const WaveHeader& h, const std::vector<std::int16_t>& samples = {1, 2, 3}) {
    return readFile(test::WriteBytes(test::ScratchDir() / "h.wav", h.Bytes(samples)));
}

} // namespace

TEST(ReadWaveHeader, AcceptsWhatItCanReadAndRefusesEveryOtherLayoutWithOneMessage) {
    // Only the block alignment is looked at: 8-bit stereo passes, any rate passes. Format
    // sizes pointing past the 32-bit range, before the start, or back at "RIFF" do not.
    const std::pair<void (*)(WaveHeader&), std::string> cases[] = {
        {[](WaveHeader&) {}, "44100 3 @44"},
        {[](WaveHeader& h) {
             h.formatSize = 18, h.formatExtra = std::string(2, '\0'), h.rate = 8000;
         },
         "8000 3 @46"},
        {[](WaveHeader& h) { h.channels = 2, h.bits = 8, h.rate = 3; }, "3 3 @44"},
        {[](WaveHeader& h) { h.riff = "riff"; }, "refused"},
        {[](WaveHeader& h) { h.wave = "AVI "; }, "refused"},
        {[](WaveHeader& h) { h.fmt = "LIST"; }, "refused"},
        {[](WaveHeader& h) { h.tag = 3; }, "refused"},
        {[](WaveHeader& h) { h.align = 1; }, "refused"},
        {[](WaveHeader& h) { h.data = "DATA"; }, "refused"},
        {[](WaveHeader& h) { h.between = "LIST" + test::LittleEndian(4, 4) + "INFO"; }, "refused"},
        {[](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::max(); }, "refused"},
        {[](WaveHeader& h) { h.formatSize = std::numeric_limits<std::int32_t>::min(); }, "refused"},
        {[](WaveHeader& h) { h.formatSize = -20; }, "refused"}};
    for (const auto& [change, expected] : cases) {
        WaveHeader h;
        change(h);
        EXPECT_EQ(readHeader(h), expected) << h.Bytes().substr(0, 16);
    }
    // Every cut of a canonical file: refused up to the data identifier; once "data" is there,
    // missing size bytes read as zero (the size, 6, is in the first one).
    const std::string whole = WaveHeader{}.Bytes({100, -100, 5});
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string got =
            readFile(test::WriteBytes(test::ScratchDir() / "c.wav", whole.substr(0, length)));
        EXPECT_EQ(got.find("message"), std::string::npos) << length;
        EXPECT_EQ(got.substr(0, got.find(" @")), length < 40    ? "refused"
                                                 : length == 40 ? "44100 0"
                                                                : "44100 3")
            << length;
    }
    EXPECT_EQ(readFile((test::ScratchDir() / "absent.wav").string()), "refused");
}

TEST(ReadWaveHeader, RealFilesFromOtherWritersAreJudgedByTheSameRules) {
    ZAV_NEED_SHARED_DATA();
    const std::string dir = std::string(ZAV_SHARED_DATA_DIR) + "/wav/";
    // Mono PCM, 16-byte format chunk, other chunks after the data: the frames its source states.
    EXPECT_EQ(readFile(dir + "goaudio_listinfo.wav"), "44100 88200 @44");
    for (const char* refused : {"goaudio_kick-16b441k.wav", "hound_pop.wav",
                                "hound_waveformatex-16bit-44100Hz-mono-extra.wav"})
        EXPECT_EQ(readFile(dir + refused), "refused") << refused; // stereo, extensible, LIST
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
