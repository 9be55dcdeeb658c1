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

std::size_t peakBin(const Spectrum& s) {
    return static_cast<std::size_t>(std::max_element(s.levelDbfs.begin(), s.levelDbfs.end()) -
                                    s.levelDbfs.begin());
}

} // namespace

// Against the transform's definition, term by term, and back again.
TEST(Fft, MatchesTheDefinitionAndInvertsItself) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> d(-1, 1);
    for (std::size_t n : {1u, 2u, 8u, 512u, 0u, 3u, 1000u}) {
        std::vector<cd> x(n), dft(n);
        for (auto& c : x)
            c = cd(d(rng), d(rng));
        for (std::size_t k = 0; k < n; ++k)
            for (std::size_t j = 0; j < n; ++j)
                dft[k] += x[j] * std::polar(1.0, -2.0 * std::acos(-1.0) * double(k * j % n) / n);
        auto fast = x;
        const bool powerOfTwo = n && !(n & (n - 1));
        ASSERT_EQ(Fft(fast), powerOfTwo) << n;
        for (std::size_t k = 0; k < n; ++k)
            EXPECT_LT(std::abs(fast[k] - (powerOfTwo ? dft[k] : x[k])), 1e-9 * n) << n;
        ASSERT_EQ(Fft(fast, true), powerOfTwo);
        for (std::size_t k = 0; k < n; ++k)
            EXPECT_LT(std::abs(fast[k] - x[k]), 1e-12) << n;
    }
}

TEST(Spectrum, SinesPeakAtTheirFrequencyAndLevelAndNoiseFollowsItsPower) {
    // 1 kHz at 8 kHz falls on bin 512 of 4096: -6.02 dBFS for half scale, 16-bit rounding
    // elsewhere; between bins at 44.1 kHz, in noise, no lower than the Hann window's worst
    // scalloping loss (1.42 dB) on the nearest bin.
    auto noisy = test::Sine(16384, 1000, 44100, 262144);
    const auto noise = test::Noise(300, noisy.size(), 11);
    for (std::size_t i = 0; i < noisy.size(); ++i)
        noisy[i] = static_cast<std::int16_t>(noisy[i] + noise[i]);
    const auto onBin = test::Sine(16384, 1000, 8000, 8000 * 4);
    const Spectrum s = AverageSpectrum(onBin, 8000), n = AverageSpectrum(noisy, 44100);
    ASSERT_EQ(
        std::make_tuple(s.blockSize, s.frequencyHz.size(), s.blocks),
        std::make_tuple(std::size_t{4096}, std::size_t{2049}, (onBin.size() - 4096) / 2048 + 1));
    EXPECT_EQ(s.frequencyHz[peakBin(s)] + s.frequencyHz.back(), 5000.0);
    EXPECT_NEAR(s.levelDbfs[peakBin(s)], 20 * std::log10(0.5), 0.01);
    EXPECT_LT(std::max(s.levelDbfs[100], s.levelDbfs[1500]), -100);
    EXPECT_NEAR(n.frequencyHz[peakBin(n)], 1000.0, 44100.0 / 4096 / 2);
    EXPECT_NEAR(n.levelDbfs[peakBin(n)], 20 * std::log10(0.5), 1.5);
    // Hann-windowed white noise of variance v puts v·3n/8 into each bin on average; scaled as
    // a sine's amplitude that reads 6v/n.
    const Spectrum w = AverageSpectrum(test::Noise(1000, 1 << 18, 21), 48000, 1024);
    double mean = 0;
    for (std::size_t k = 1; k + 1 < w.levelDbfs.size(); ++k)
        mean += std::pow(10.0, w.levelDbfs[k] / 10) / double(w.levelDbfs.size() - 2);
    EXPECT_NEAR(10 * std::log10(mean), 10 * std::log10(6 * std::pow(1000 / 32768.0, 2) / 1024),
                0.2);
    // Short, silent, full scale on DC (0 dBFS in bin 0: no mirror image to share with), and
    // too short or bad input.
    const Spectrum quiet = AverageSpectrum(std::vector<std::int16_t>(5000, 0), 8000);
    EXPECT_EQ(quiet.blocks, 1u);
    EXPECT_TRUE(std::all_of(quiet.levelDbfs.begin(), quiet.levelDbfs.end(),
                            [](double l) { return l == kSpectrumFloorDbfs; }));
    const auto shortSine = test::Sine(32767, 2000, 8000, 100); // the largest power of two held
    const Spectrum small = AverageSpectrum(shortSine, 8000);
    EXPECT_EQ(std::make_tuple(small.blockSize, small.blocks, small.frequencyHz[peakBin(small)]),
              std::make_tuple(std::size_t{64}, std::size_t{2}, 2000.0));
    EXPECT_NEAR(AverageSpectrum(std::vector<std::int16_t>(4096, -32768), 8000).levelDbfs[0], 0.0,
                1e-9);
    EXPECT_TRUE(AverageSpectrum(std::vector<std::int16_t>(15, 1), 8000).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 0).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 8000, 1000).levelDbfs.empty());
}
