#include "ReferenceDetectors.h"
#include "WaveBytes.h"
#include "measure/WaveAnalysis.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <filesystem>
#include <tuple>

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
    if (want == 0)
        EXPECT_EQ(got, 0) << what;
    else
        EXPECT_LE(std::fabs(got - want) / std::fabs(want), relative)
            << what << ": " << got << " against " << want;
}

void expectAgrees(const Measurement& got, const Measurement& want, const std::string& what) {
    expectClose(got.Avg, want.Avg, 1e-12, what + " Avg");
    expectClose(got.Ms, want.Ms, 1e-12, what + " Ms");
    expectClose(got.QP, want.QP, 1e-12, what + " QP");
    expectClose(got.Pk, want.Pk, 1e-12, what + " Pk");
}

void expectSame(const Measurement& a, const Measurement& b) {
    EXPECT_EQ(std::vector<double>({a.Avg, a.Ms, a.Rms, a.QP, a.Pk, a.ClipFlag}),
              std::vector<double>({b.Avg, b.Ms, b.Rms, b.QP, b.Pk, b.ClipFlag}));
}

} // namespace

TEST(Detectors, FullScaleSineGivesTheKnownReadings) {
    const auto sine = Sine(32767, 1000, 44100, 44100);
    const Measurement m = analyse(sine, 44100, 7);
    EXPECT_EQ(Format(m.Avg, "0.000") + Format(m.Rms, "0.000") + Format(m.QP, "0.000") +
                  Format(m.Pk, "0.000") + Format(m.PkRms, "0.00"),
              "0.7080.7080.7070.7080.00");
    EXPECT_EQ(m.ClipFlag, -1); // Pk above 0.7

    // 30 MHz still discharges with 0.16 s; just above, the slower 0.55 s reads higher.
    EXPECT_EQ(analyse(sine, 44100, 30).QP, m.QP);
    const Measurement above = analyse(sine, 44100, 30.001);
    EXPECT_EQ(Format(above.QP, "0.000"), "0.736");
    EXPECT_EQ(analyse(sine, 44100, 1000).QP, above.QP);
}

TEST(Detectors, SineAndGaussianNoiseReadTheirTextbookValues) {
    // Every detector of a steady sine reads its RMS value, A/√2, at any rate, for tones well
    // below the rate (near it, the sampled half-waves no longer average like a sine's).
    const std::pair<int, double> tones[] = {
        {8000, 101}, {44100, 997}, {48000, 1499}, {96000, 2999}};
    for (const auto& [rate, tone] : tones) {
        // Less what the DC tracker takes: e = x·(1 − z⁻¹) / (1 − (1 − kdc)·z⁻¹), 20 Hz corner.
        const double w = 2 * kPi * tone / rate, a = std::exp(-2 * kPi * 20 / rate);
        const double gain =
            std::abs(1.0 - std::polar(1.0, -w)) / std::abs(1.0 - a * std::polar(1.0, -w));
        const double rms = 10000 / std::sqrt(2.0) / 32768 * gain;
        const Measurement m = analyse(Sine(10000, tone, rate, 2 * rate), rate);
        const std::string what = std::to_string(rate) + " Hz, tone " + std::to_string(tone);
        expectClose(m.Rms, rms, 0.002, what + " Rms");
        expectClose(m.Avg, rms, 0.002, what + " Avg");
        expectClose(m.Pk, rms, 0.005, what + " Pk"); // the samples can miss the crest
        // The QP reading also depends a little on how often the crests come (a 1 ms charge
        // against a 10 ms period lifts it), 2 % at the lowest tone here.
        expectClose(m.QP, rms, 0.025, what + " QP");
        EXPECT_EQ(m.ClipFlag, 0);
    }
    // Gaussian noise of RMS σ: its positive half has mean σ/√(2π), so Avg = σ·√π/2,
    // 20·log10(√π/2) = −1.049 dB below the RMS reading.
    const Measurement n = analyse(Noise(3000, 480000, 5), 48000);
    expectClose(n.Rms, 3000.0 / 32768, 0.01, "noise Rms");
    EXPECT_NEAR(n.AvgRms, 20 * std::log10(std::sqrt(kPi) / 2), 0.02);
    // The other ratios are amplitude ratios in dB too, each of its own detector.
    EXPECT_NEAR(n.QpRms, 20 * std::log10(n.QP / n.Rms), 1e-9);
    EXPECT_NEAR(n.PkRms, 20 * std::log10(n.Pk / n.Rms), 1e-9);
}

TEST(Detectors, SilenceAndDirectCurrentFollowTheStartUpEstimate) {
    const Measurement silence = analyse(std::vector<std::int16_t>(44100, 0), 44100);
    expectSame(silence, Measurement{});
    EXPECT_EQ(silence.QpRms, 0); // ratios untouched while Rms is 0

    // Pure DC c: the first estimate sums the first 10 ms plus one sample (the 10 ms rounded
    // half to even) over the unrounded 10 ms, so it starts off by e0 = c·(1 − (m+1)/(fs/100))
    // and then decays by (1 − kdc) a sample: e[n] = e0·(1 − kdc)^n, all in closed form.
    const std::pair<int, long> rates[] = {{44150, 442}, {350, 4}};
    for (const auto& [rate, m] : rates) {
        const double a = std::exp(-2 * kPi * 20 / rate); // 1 − kdc
        const std::size_t n = static_cast<std::size_t>(rate);
        for (std::int16_t c : {std::int16_t(10000), std::int16_t(-10000)}) {
            const double e0 = c / 32768.0 * (1 - (m + 1) / (rate * 0.01));
            const double sumE = e0 * (1 - std::pow(a, n)) / (1 - a);
            const double sumE2 = e0 * e0 * (1 - std::pow(a, 2.0 * n)) / (1 - a * a);
            const Measurement d = analyse(std::vector<std::int16_t>(n, c), rate);
            const std::string what = std::to_string(rate) + " Hz, DC " + std::to_string(c);
            expectClose(d.Ms, sumE2 / n, 1e-9, what + " Ms");
            if (c > 0) { // starts above: never a positive half-wave
                EXPECT_EQ(d.Avg + d.Pk + d.QP, 0) << what;
                EXPECT_EQ(d.PkRms, -999) << what;
            } else {
                expectClose(d.Avg, sumE / n * kPi / std::sqrt(2.0), 1e-9, what + " Avg");
                expectClose(d.Pk, e0 / std::sqrt(2.0), 1e-10, what + " Pk");
            }
        }
    }
    // A DC offset under a tone is gone within tens of milliseconds.
    const Measurement offset = analyse(Sine(8000, 1000, 48000, 48000, 12000), 48000);
    expectClose(offset.Rms, 8000 / std::sqrt(2.0) / 32768, 0.005, "tone on DC");
}

TEST(Detectors, FastKernelAgreesWithThePlainLoop) {
    struct Case {
        std::string name;
        std::vector<std::int16_t> s;
        int rate;
    };
    std::vector<Case> cases = {
        {"sine", Sine(20000, 997, 44100, 100003), 44100},
        {"noise on DC", Noise(4000, 96001, 3), 48000},
        {"clipped noise", Noise(30000, 50000, 4), 8000},
        {"high rate", Sine(3000, 5000, 192000, 200000, -500), 192000},
        {"one per second", Noise(5000, 300, 6), 1},
    };
    // A burst, then silence long enough for every detector to decay towards nothing.
    auto burst = Noise(8000, 4410, 9);
    burst.resize(44100 * 40);
    cases.push_back({"burst then silence", burst, 44100});
    // Lengths around the block and lane sizes, shorter than the 10 ms start-up too.
    const auto base = Noise(6000, 1100, 8);
    for (std::size_t n : {1, 2, 3, 5, 8, 255, 256, 257, 441, 442, 443})
        cases.push_back({"length " + std::to_string(n),
                         std::vector<std::int16_t>(base.begin(), base.begin() + n), 44100});
    for (const Case& c : cases) {
        for (double mhz : {7.0, 50.0}) {
            Measurement plain;
            test::ReferenceDetectors(c.s, static_cast<std::int64_t>(c.s.size()), c.rate, mhz,
                                     plain);
            expectAgrees(analyse(c.s, c.rate, mhz), plain, c.name);
        }
    }
    // Over a long recording the plain loop's single running sums drift past 1e-12; against
    // sums carried in extended precision the kernel stays within it.
    const auto longSine = Sine(20000, 1000, 48000, std::size_t{1} << 23);
    Measurement exact;
    test::ReferenceDetectors<long double>(longSine, std::int64_t{1} << 23, 48000, 7, exact);
    expectAgrees(analyse(longSine, 48000), exact, "long sine");
}

TEST(AnalyseWave, FileRunEqualsTheInMemoryRun) {
    const auto dir = test::ScratchDir();
    const auto samples = Noise(5000, 200000, 11);
    const std::string path = (dir / "noise-5000rms-44100-16bit.wav").string();
    test::WriteWave(path, samples, 44100);
    test::FakeDialogs dialogs;
    Measurement fromFile;
    std::vector<double> seen;
    bool markedDuring = true;
    ASSERT_TRUE(AnalyseWave(path, 7, fromFile, dialogs, [&](double f) {
        seen.push_back(f);
        markedDuring = markedDuring && fromFile.OverThreshold;
    }));
    expectSame(fromFile, analyse(samples, 44100));
    EXPECT_FALSE(fromFile.OverThreshold); // set while the run is under way only
    EXPECT_TRUE(markedDuring);
    EXPECT_GT(seen.size(), 1u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()) && seen.back() == 1.0);

    // The same samples behind an 18-byte format chunk.
    test::WaveHeader extended;
    extended.formatSize = 18;
    extended.formatExtra = std::string(2, '\0');
    Measurement m;
    ASSERT_TRUE(
        AnalyseWave(test::WriteBytes(dir / "ext.wav", extended.Bytes(samples)), 7, m, dialogs));
    expectSame(m, fromFile);

    // A real recording from another writer, against the plain loop over its samples.
    ZAV_NEED_SHARED_DATA();
    const std::string real = std::string(ZAV_SHARED_DATA_DIR) + "/wav/goaudio_listinfo.wav";
    const std::string bytes = test::ReadFile(real);
    std::vector<std::int16_t> data(88200);
    for (std::size_t i = 0; i < data.size(); ++i) // little-endian from byte 44 on
        data[i] = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[44 + 2 * i]) |
                                            (static_cast<unsigned char>(bytes[45 + 2 * i]) << 8));
    Measurement plain, got;
    test::ReferenceDetectors(data, 88200, 44100, 7, plain);
    ASSERT_TRUE(AnalyseWave(real, 7, got, dialogs));
    expectAgrees(got, plain, "goaudio_listinfo.wav");
}

TEST(AnalyseWave, UnusableFilesLeaveTheMeasurementAlone) {
    const auto dir = test::ScratchDir();
    Measurement before;
    before.Avg = 1.5, before.Ms = 2.5, before.QP = 3.5, before.Pk = 4.5, before.Rms = 5.5;
    auto run = [&](const std::string& path, std::size_t messages) {
        test::FakeDialogs dialogs;
        Measurement m = before;
        EXPECT_FALSE(AnalyseWave(path, 7, m, dialogs)) << path;
        expectSame(m, before);
        EXPECT_FALSE(m.OverThreshold);
        EXPECT_EQ(dialogs.messages.size(), messages) << path;
    };
    // Stereo, no rate, a negative rate, no samples.
    const std::tuple<int, int, int> bad[] = {
        {4, 44100, 4}, {2, 0, 2}, {2, -44100, 2}, {2, 44100, 0}};
    for (const auto& [align, rate, count] : bad) {
        test::WaveHeader h;
        h.align = static_cast<std::uint16_t>(align), h.rate = rate;
        run(test::WriteBytes(dir / "bad.wav", h.Bytes(std::vector<std::int16_t>(count, 1))),
            align == 4 ? 1 : 0);
    }
    const auto missing = dir / "missing.wav";
    run(missing.string(), 1);
    EXPECT_FALSE(std::filesystem::exists(missing)); // reading never creates the file
}

TEST(AnalyseWave, AFileCutShortIsAnalysedOverTheSamplesItHolds) {
    const auto dir = test::ScratchDir();
    // The header promises a second of audio; the file holds 1000 samples and half of another.
    const auto head = Noise(7000, 1000, 12);
    test::WaveHeader h;
    h.dataSize = 2 * 44100;
    std::string bytes = h.Bytes(head) + std::string(1, '\x7f');
    test::FakeDialogs dialogs;
    Measurement cut;
    WaveInfo info;
    ASSERT_TRUE(AnalyseWave(test::WriteBytes(dir / "cut.wav", bytes), 7, cut, dialogs, info));
    expectSame(cut, analyse(head, 44100)); // not diluted by silence that was never recorded
    EXPECT_EQ(info.Samples, 1000);
    ASSERT_EQ(dialogs.texts(), std::vector<std::string>{"Warning: the file is shorter than its "
                                                        "header claims: 1000 of 44100 samples "
                                                        "analysed."});
    // A data chunk with no sample at all behind it is nothing to analyse.
    Measurement none;
    EXPECT_FALSE(AnalyseWave(test::WriteBytes(dir / "none.wav", h.Bytes()), 7, none, dialogs));

    // Data shorter than 10 ms: the start-up estimate reads on into the chunk behind it.
    const auto shortData = Sine(9000, 1000, 44100, 100);
    const std::string trailer = "LIST" + test::LittleEndian(8, 4) + "INFOabcd";
    Measurement m;
    ASSERT_TRUE(AnalyseWave(
        test::WriteBytes(dir / "short.wav", test::WaveHeader{}.Bytes(shortData) + trailer), 7, m,
        dialogs));
    auto asRead = shortData;
    for (std::size_t i = 0; i + 1 < trailer.size(); i += 2)
        asRead.push_back(
            static_cast<std::int16_t>(static_cast<unsigned char>(trailer[i]) |
                                      (static_cast<unsigned char>(trailer[i + 1]) << 8)));
    Measurement plain;
    test::ReferenceDetectors(asRead, 100, 44100, 7, plain);
    expectAgrees(m, plain, "short data");
}
