#include "ReferenceDetectors.h"
#include "WaveBytes.h"
#include "measure/WaveAnalysis.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/SharedData.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace zav;
using test::Noise;
using test::Sine;

namespace {

const double kPi = std::acos(-1.0);

Measurement analyse(const std::vector<std::int16_t>& s, std::int32_t rate, double mhz = 7) {
    Measurement m;
    EXPECT_TRUE(AnalyseSamples(s.data(), s.size(), rate, mhz, m));
    return m;
}

void expectClose(double got, double want, double relative, const std::string& what) {
    EXPECT_LE(std::fabs(got - want), relative * std::fabs(want)) << what << ": " << got;
}

void expectAgrees(const Measurement& got, const Measurement& want, const std::string& what,
                  double relative = 1e-12) {
    const double g[] = {got.Avg, got.Ms, got.QP, got.Pk, got.Rms, got.ClipFlag};
    const double w[] = {want.Avg, want.Ms, want.QP, want.Pk, want.Rms, want.ClipFlag};
    for (int i = 0; i < 6; ++i)
        expectClose(g[i], w[i], relative, what + " detector " + std::to_string(i));
}

std::vector<std::int16_t> littleEndian(const std::string& bytes, std::size_t from, std::size_t n) {
    std::vector<std::int16_t> s(n); // as the file holds them on the little-endian machines we run
    std::memcpy(s.data(), bytes.data() + from, 2 * n);
    return s;
}

} // namespace

TEST(Detectors, FullScaleSineSilenceAndNoiseGiveTheKnownReadings) {
    const auto sine = Sine(32767, 1000, 44100, 44100);
    const Measurement m = analyse(sine, 44100, 7);
    EXPECT_EQ(Format(m.Avg, "0.000") + Format(m.Rms, "0.000") + Format(m.QP, "0.000") +
                  Format(m.Pk, "0.000") + Format(m.PkRms, "0.00") + Format(m.ClipFlag, "0"),
              "0.7080.7080.7070.7080.00-1"); // clipping: Pk above 0.7
    // 30 MHz still discharges with 0.16 s; just above, the slower 0.55 s reads higher.
    EXPECT_EQ(analyse(sine, 44100, 30).QP, m.QP);
    EXPECT_EQ(Format(analyse(sine, 44100, 30.001).QP, "0.000"), "0.736");
    const Measurement silence = analyse(std::vector<std::int16_t>(4410, 0), 44100);
    expectAgrees(silence, Measurement{}, "silence", 0);
    EXPECT_EQ(silence.QpRms, 0); // ratios untouched while Rms is 0
    EXPECT_EQ(analyse(std::vector<std::int16_t>(4410, 9000), 44100).PkRms, -999); // never above
    // Gaussian noise of RMS σ: its positive half has mean σ/√(2π), so Avg = σ·√π/2.
    const Measurement n = analyse(Noise(3000, 480000, 5), 48000);
    expectClose(n.Rms, 3000.0 / 32768, 0.01, "noise Rms");
    EXPECT_NEAR(n.AvgRms, 20 * std::log10(std::sqrt(kPi) / 2), 0.02);
    EXPECT_NEAR(n.QpRms + n.PkRms, 20 * std::log10(n.QP / n.Rms * n.Pk / n.Rms), 1e-9);
}

TEST(Detectors, FastKernelAgreesWithThePlainLoop) {
    using Samples = std::vector<std::int16_t>;
    struct Case {
        Samples s;
        int rate;
        double relative = 1e-12; // direct current: what the start-up estimate leaves, a few ulps
    };
    std::vector<Case> cases = {{Sine(20000, 997, 44100, 100003), 44100},
                               {Noise(4000, 96001, 3), 48000},
                               {Noise(30000, 50000, 4), 8000},
                               {Noise(5000, 300, 6), 1},
                               {Sine(3000, 5000, 192000, 200000, -500), 192000},
                               {Samples(44100, 0), 44100},
                               {Samples(44150, 10000), 44150, 1e-9},
                               {Samples(44150, -10000), 44150, 1e-9},
                               {Samples(350, -10000), 350, 1e-9}};
    auto burst = Noise(8000, 4410, 9), base = Noise(6000, 1100, 8);
    burst.resize(44100 * 40); // silence long enough for every detector to decay
    cases.push_back({burst, 44100});
    for (std::size_t n : {1, 2, 3, 5, 8, 255, 256, 257, 441, 442, 443}) // blocks, lanes, 10 ms
        cases.push_back({Samples(base.begin(), base.begin() + n), 44100});
    for (const auto& [s, rate, relative] : cases) {
        for (double mhz : {7.0, 50.0}) {
            Measurement plain;
            test::ReferenceDetectors(s, static_cast<std::int64_t>(s.size()), rate, mhz, plain);
            expectAgrees(analyse(s, rate, mhz), plain, std::to_string(s.size()), relative);
        }
    }
    // Over a long recording the plain loop's double sums drift; long double ones do not.
    const auto longSine = Sine(20000, 1000, 48000, std::size_t{1} << 23);
    Measurement exact;
    test::ReferenceDetectors<long double>(longSine, std::int64_t{1} << 23, 48000, 7, exact);
    expectAgrees(analyse(longSine, 48000), exact, "long sine");
}

TEST(AnalyseWave, TheRealRecordingReadsAsThePlainLoopDoes) {
    ZAV_NEED_SHARED_DATA();
    const std::string real = std::string(ZAV_SHARED_DATA_DIR) + "/wav/goaudio_listinfo.wav";
    test::FakeDialogs dialogs;
    Measurement plain, got;
    std::vector<double> seen;
    bool markedDuring = true;
    ASSERT_TRUE(AnalyseWave(real, 7, got, dialogs, [&](double f) {
        seen.push_back(f);
        markedDuring = markedDuring && got.OverThreshold;
    }));
    test::ReferenceDetectors(littleEndian(test::ReadFile(real), 44, 88200), 88200, 44100, 7, plain);
    expectAgrees(got, plain, "goaudio_listinfo.wav");
    EXPECT_TRUE(markedDuring && !got.OverThreshold && dialogs.messages.empty());
    EXPECT_TRUE(seen.size() > 1 && std::is_sorted(seen.begin(), seen.end()) && seen.back() == 1.0);
}

TEST(AnalyseWave, UnusableFilesLeaveTheMeasurementAloneAndCutOnesCountWhatTheyHold) {
    const auto dir = test::ScratchDir();
    Measurement before;
    before.Avg = 1.5, before.Ms = 2.5, before.QP = 3.5, before.Pk = 4.5, before.Rms = 5.5;
    // Stereo, no rate, a negative rate, no samples (one message: stereo), no file.
    const std::tuple<std::uint16_t, int, int> bad[] = {
        {4, 44100, 4}, {2, 0, 2}, {2, -44100, 2}, {2, 44100, 0}, {0, 0, 0}};
    for (const auto& [align, rate, count] : bad) {
        test::WaveHeader h;
        h.align = align, h.rate = rate;
        const auto path = (dir / ("bad" + std::to_string(rate + count) + ".wav")).string();
        if (align)
            test::WriteBytes(path, h.Bytes(std::vector<std::int16_t>(count, 1)));
        test::FakeDialogs dialogs;
        Measurement m = before;
        EXPECT_FALSE(AnalyseWave(path, 7, m, dialogs)) << path;
        expectAgrees(m, before, path, 0);
        EXPECT_FALSE(m.OverThreshold);
        EXPECT_EQ(dialogs.messages.size(), align != 2 ? 1u : 0u) << path;
        EXPECT_EQ(std::filesystem::exists(path), align != 0); // reading never creates it
    }
    // A second promised, 1000 samples and half of another held: not diluted by silence.
    const auto head = Noise(7000, 1000, 12);
    test::WaveHeader h;
    h.dataSize = 2 * 44100;
    test::FakeDialogs dialogs;
    Measurement cut, m, plain;
    WaveInfo info;
    ASSERT_TRUE(AnalyseWave(test::WriteBytes(dir / "cut.wav", h.Bytes(head) + '\x7f'), 7, cut,
                            dialogs, info));
    expectAgrees(cut, analyse(head, 44100), "cut", 0);
    EXPECT_EQ(info.Samples, 1000);
    EXPECT_FALSE(AnalyseWave(test::WriteBytes(dir / "none.wav", h.Bytes()), 7, cut, dialogs));
    EXPECT_EQ(dialogs.texts().at(0), "Warning: the file is shorter than its header claims: 1000 "
                                     "of 44100 samples analysed.");
    // Data shorter than 10 ms: the start-up estimate reads on into the chunk behind it.
    auto asRead = Sine(9000, 1000, 44100, 100);
    const std::string trailer = "LIST" + test::LittleEndian(8, 4) + "INFOabcd";
    const std::string bytes = test::WaveHeader{}.Bytes(asRead) + trailer;
    ASSERT_TRUE(AnalyseWave(test::WriteBytes(dir / "short.wav", bytes), 7, m, dialogs));
    for (auto v : littleEndian(trailer, 0, trailer.size() / 2))
        asRead.push_back(v);
    test::ReferenceDetectors(asRead, 100, 44100, 7, plain);
    expectAgrees(m, plain, "short data");
}
