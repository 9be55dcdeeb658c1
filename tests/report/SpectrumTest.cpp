#include "report/Spectrum.h"
#include "report/Fft.h"
#include "report/MinMaxDecimation.h"
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

constexpr double kStep = 1.0 / 44100;

std::size_t indexOf(const PlotPoint& p) {
    return static_cast<std::size_t>(std::lround(p.x / kStep));
}

// Each point a real sample, in time order, each column showing its lowest and highest.
void expectFaithful(const std::vector<std::int16_t>& s, std::size_t first, std::size_t last,
                    std::size_t columns) {
    const auto points = DecimateMinMax(s, first, last, columns, kStep);
    ASSERT_LE(points.size(), 2 * columns);
    std::size_t p = 0;
    for (std::size_t c = 0; c < columns; ++c) {
        const std::size_t begin = first + (last - first) * c / columns;
        const std::size_t end = first + (last - first) * (c + 1) / columns;
        std::vector<std::int16_t> shown;
        for (; p < points.size() && indexOf(points[p]) < end; ++p) {
            ASSERT_GE(indexOf(points[p]), begin) << "point " << p << " out of order";
            ASSERT_EQ(points[p].y, s[indexOf(points[p])] / 32768.0) << "not a sample";
            shown.push_back(s[indexOf(points[p])]);
        }
        ASSERT_FALSE(shown.empty()) << "column " << c;
        const auto [lo, hi] = std::minmax_element(s.begin() + long(begin), s.begin() + long(end));
        const auto [slo, shi] = std::minmax_element(shown.begin(), shown.end());
        EXPECT_EQ(std::make_pair(*slo, *shi), std::make_pair(*lo, *hi)) << "column " << c;
    }
    EXPECT_EQ(p, points.size());
}

} // namespace

TEST(Fft, MatchesTheDefinition) {
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
    }
}

TEST(Spectrum, SinesPeakAtTheirFrequencyAndLevelAndNoiseFollowsItsPower) {
    // 1 kHz at 8 kHz falls on bin 512 of 4096: -6.02 dBFS for half scale.
    const auto onBin = test::Sine(16384, 1000, 8000, 8000 * 4);
    const Spectrum s = AverageSpectrum(onBin, 8000);
    ASSERT_EQ(
        std::make_tuple(s.blockSize, s.frequencyHz.size(), s.blocks),
        std::make_tuple(std::size_t{4096}, std::size_t{2049}, (onBin.size() - 4096) / 2048 + 1));
    EXPECT_EQ(s.frequencyHz[peakBin(s)] + s.frequencyHz.back(), 5000.0);
    EXPECT_NEAR(s.levelDbfs[peakBin(s)], 20 * std::log10(0.5), 0.01);
    EXPECT_LT(std::max(s.levelDbfs[100], s.levelDbfs[1500]), -100);
    // Hann-windowed white noise of variance v puts v·3n/8 into each bin on average; scaled as
    // a sine's amplitude that reads 6v/n.
    const Spectrum w = AverageSpectrum(test::Noise(1000, 1 << 18, 21), 48000, 1024);
    double mean = 0;
    for (std::size_t k = 1; k + 1 < w.levelDbfs.size(); ++k)
        mean += std::pow(10.0, w.levelDbfs[k] / 10) / double(w.levelDbfs.size() - 2);
    EXPECT_NEAR(10 * std::log10(mean), 10 * std::log10(6 * std::pow(1000 / 32768.0, 2) / 1024),
                0.2);
    // Full scale on DC reads 0 dBFS in bin 0: no mirror image to share with.
    EXPECT_EQ(AverageSpectrum(std::vector<std::int16_t>(5000, 0), 8000).levelDbfs[9],
              kSpectrumFloorDbfs);
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

TEST(MinMaxDecimation, EveryColumnKeepsItsExtremesAndShortRangesComeBackWhole) {
    auto s = test::Noise(2000, 262144, 4);
    s[123457] = 32767;  // a single-sample spike
    s[200001] = -32768; // and a dip
    expectFaithful(s, 0, s.size(), 800);
    expectFaithful(s, 1001, 98765, 333); // a zoomed range the columns do not divide
    expectFaithful(std::vector<std::int16_t>(10000, 5), 0, 10000, 100); // ties everywhere
    s.resize(1000);
    const auto whole = DecimateMinMax(s, 10, 210, 100, kStep);
    ASSERT_EQ(whole.size(), 200u);
    for (std::size_t i = 0; i < whole.size(); ++i)
        EXPECT_TRUE(indexOf(whole[i]) == 10 + i && whole[i].y == s[10 + i] / 32768.0) << i;
    EXPECT_EQ(DecimateMinMax(s, 900, 5000, 1000, kStep).size(), 100u); // clipped at the end
    for (auto [first, last, columns] :
         {std::tuple{500, 500, 10}, {600, 500, 10}, {0, 1000, 0}, {2000, 3000, 10}})
        EXPECT_TRUE(DecimateMinMax(s, first, last, columns, kStep).empty()) << first << " " << last;
}
