#include "report/Spectrum.h"
#include "report/Fft.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace zav;
using cd = std::complex<double>;

namespace {

const double kPi = std::acos(-1.0);

// The transform by its definition, term by term.
std::vector<cd> naiveDft(const std::vector<cd>& x) {
    const std::size_t n = x.size();
    std::vector<cd> out(n);
    for (std::size_t k = 0; k < n; ++k)
        for (std::size_t j = 0; j < n; ++j)
            out[k] += x[j] * std::polar(1.0, -2.0 * kPi * double(k * j % n) / double(n));
    return out;
}

std::vector<cd> randomComplex(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<cd> v(n);
    for (auto& c : v)
        c = cd(d(rng), d(rng));
    return v;
}

double maxError(const std::vector<cd>& a, const std::vector<cd>& b) {
    double e = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        e = std::max(e, std::abs(a[i] - b[i]));
    return e;
}

std::size_t peakBin(const Spectrum& s) {
    return static_cast<std::size_t>(std::max_element(s.levelDbfs.begin(), s.levelDbfs.end()) -
                                    s.levelDbfs.begin());
}

} // namespace

TEST(Fft, MatchesTheDefinitionAndInvertsItself) {
    for (std::size_t n : {1u, 2u, 4u, 8u, 64u, 512u}) {
        const auto x = randomComplex(n, static_cast<unsigned>(n));
        auto fast = x;
        ASSERT_TRUE(Fft(fast));
        EXPECT_LT(maxError(fast, naiveDft(x)), 1e-9 * double(n)) << "n = " << n;
        ASSERT_TRUE(Fft(fast, true));
        EXPECT_LT(maxError(fast, x), 1e-12) << "n = " << n;
    }
    for (std::size_t n : {0u, 3u, 6u, 1000u}) {
        auto x = randomComplex(n, 1);
        const auto before = x;
        EXPECT_FALSE(Fft(x)) << n;
        EXPECT_EQ(x, before);
    }
}

TEST(Spectrum, SinePeaksAtItsFrequencyAndLevel) {
    // 1 kHz at 8 kHz falls on bin 512 of 4096: the level is exact, -6.02 dBFS for half scale.
    const auto onBin = test::Sine(16384, 1000, 8000, 8000 * 4);
    const Spectrum s = AverageSpectrum(onBin, 8000);
    ASSERT_EQ(s.blockSize, 4096u);
    ASSERT_EQ(s.frequencyHz.size(), 2049u);
    EXPECT_EQ(s.blocks, (onBin.size() - 4096) / 2048 + 1);
    EXPECT_DOUBLE_EQ(s.frequencyHz[peakBin(s)], 1000.0);
    EXPECT_NEAR(s.levelDbfs[peakBin(s)], 20 * std::log10(0.5), 0.01);
    EXPECT_DOUBLE_EQ(s.frequencyHz.back(), 4000.0);
    EXPECT_LT(std::max(s.levelDbfs[100], s.levelDbfs[1500]), -100); // 16-bit rounding only

    // 1 kHz at 44.1 kHz lies between bins, in a noisy recording of 256 k samples: the peak is
    // the nearest bin, no lower than the Hann window's worst scalloping loss (1.42 dB).
    auto noisy = test::Sine(16384, 1000, 44100, 262144);
    const auto noise = test::Noise(300, noisy.size(), 11);
    for (std::size_t i = 0; i < noisy.size(); ++i)
        noisy[i] = static_cast<std::int16_t>(noisy[i] + noise[i]);
    const Spectrum n = AverageSpectrum(noisy, 44100);
    const double binHz = 44100.0 / 4096;
    EXPECT_NEAR(n.frequencyHz[peakBin(n)], 1000.0, binHz / 2);
    EXPECT_NEAR(n.levelDbfs[peakBin(n)], 20 * std::log10(0.5), 1.5);
}

TEST(Spectrum, WhiteNoiseLevelFollowsItsPower) {
    // Hann-windowed white noise of variance v puts v * 3n/8 into each bin on average; scaled
    // as a sine's amplitude that reads 6 v / n.
    const double rms = 1000; // sample units
    const auto noise = test::Noise(rms, 1 << 18, 21);
    const Spectrum s = AverageSpectrum(noise, 48000, 1024);
    double mean = 0;
    for (std::size_t k = 1; k + 1 < s.levelDbfs.size(); ++k)
        mean += std::pow(10.0, s.levelDbfs[k] / 10);
    mean /= double(s.levelDbfs.size() - 2);
    const double v = std::pow(rms / 32768.0, 2);
    EXPECT_NEAR(10 * std::log10(mean), 10 * std::log10(6 * v / 1024), 0.2);
}

TEST(Spectrum, ShortSilentAndBadInput) {
    const std::vector<std::int16_t> silence(5000, 0);
    const Spectrum quiet = AverageSpectrum(silence, 8000);
    EXPECT_EQ(quiet.blocks, 1u);
    EXPECT_TRUE(std::all_of(quiet.levelDbfs.begin(), quiet.levelDbfs.end(),
                            [](double l) { return l == kSpectrumFloorDbfs; }));

    // Fewer samples than a block: the largest power of two they hold.
    const auto shortSine = test::Sine(32767, 2000, 8000, 100);
    const Spectrum small = AverageSpectrum(shortSine, 8000);
    EXPECT_EQ(small.blockSize, 64u);
    EXPECT_EQ(small.blocks, 2u);
    EXPECT_DOUBLE_EQ(small.frequencyHz[peakBin(small)], 2000.0);

    // Full scale on DC reads 0 dBFS in bin 0 (no mirror image to share with).
    const std::vector<std::int16_t> dc(4096, -32768);
    EXPECT_NEAR(AverageSpectrum(dc, 8000).levelDbfs[0], 0.0, 1e-9);

    EXPECT_TRUE(AverageSpectrum(std::vector<std::int16_t>(15, 1), 8000).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 0).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 8000, 1000).levelDbfs.empty());
}
