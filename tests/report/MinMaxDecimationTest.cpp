#include "report/MinMaxDecimation.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace zav;

namespace {

constexpr double kStep = 1.0 / 44100;

std::size_t indexOf(const PlotPoint& p) {
    return static_cast<std::size_t>(std::lround(p.x / kStep));
}

// Brute force: each point is a real sample, time only goes forward, and the points inside
// every column show that column's lowest and highest sample.
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
        const auto [lo, hi] =
            std::minmax_element(s.begin() + std::ptrdiff_t(begin), s.begin() + std::ptrdiff_t(end));
        EXPECT_EQ(*std::min_element(shown.begin(), shown.end()), *lo) << "column " << c;
        EXPECT_EQ(*std::max_element(shown.begin(), shown.end()), *hi) << "column " << c;
    }
    EXPECT_EQ(p, points.size());
}

} // namespace

TEST(MinMaxDecimation, EveryColumnKeepsItsExtremes) {
    auto s = test::Noise(2000, 262144, 4);
    s[123457] = 32767;  // a single-sample spike
    s[200001] = -32768; // and a dip
    expectFaithful(s, 0, s.size(), 800);
    expectFaithful(s, 1001, 98765, 333); // a zoomed range the columns do not divide
    expectFaithful(std::vector<std::int16_t>(10000, 5), 0, 10000, 100); // ties everywhere
}

TEST(MinMaxDecimation, ShortRangesComeBackWholeAndBadRangesEmpty) {
    const auto s = test::Sine(20000, 1000, 44100, 1000);
    const auto whole = DecimateMinMax(s, 10, 210, 100, kStep);
    ASSERT_EQ(whole.size(), 200u);
    for (std::size_t i = 0; i < whole.size(); ++i)
        EXPECT_TRUE(indexOf(whole[i]) == 10 + i && whole[i].y == s[10 + i] / 32768.0) << i;
    EXPECT_EQ(DecimateMinMax(s, 900, 5000, 1000, kStep).size(), 100u); // clipped at the end
    for (auto [first, last, columns] :
         {std::tuple{500, 500, 10}, {600, 500, 10}, {0, 1000, 0}, {2000, 3000, 10}})
        EXPECT_TRUE(DecimateMinMax(s, first, last, columns, kStep).empty()) << first << " " << last;
}
