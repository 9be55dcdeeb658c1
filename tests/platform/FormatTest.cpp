#include "platform/Format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>

using zav::Format;

TEST(Format, PatternsRoundingSignAndSeparator) {
    using C = std::tuple<double, const char*, const char*>;
    // Halves go away from zero on the decimal value (2.675 is stored as 2.67499999...); zero
    // never shows a sign.
    for (const auto& [value, pattern, text] :
         {C{2700.6, "0", "2701"}, C{-0.31, "0.0", "-0.3"}, C{-35.1, "0.000000", "-35.100000"},
          C{-7.5, "00.000000", "-07.500000"}, C{1234.5, "00.000000", "1234.500000"},
          C{2.675, "0.00", "2.68"}, C{-2.675, "0.00", "-2.68"}, C{2.5, "0", "3"},
          C{-0.5, "0", "-1"}, C{9.995, "0.00", "10.00"}, C{-0.0, "0.00", "0.00"},
          C{-0.4, "0", "0"}})
        EXPECT_EQ(Format(value, pattern), text) << value << " " << pattern;
    EXPECT_EQ(Format(33.8, "0.00", ','), "33,80");
    EXPECT_THROW(Format(1, "#.##"), std::invalid_argument);
    EXPECT_THROW(Format(1, "0.0.0"), std::invalid_argument);

    // printf rounds the exact binary value; the two agree away from a hair of a tie.
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> dist(-1e5, 1e5);
    for (int i = 0; i < 20000; ++i) {
        const double v = dist(rng), scaled = std::fabs(v) * 100;
        if (std::fabs(scaled - std::floor(scaled) - 0.5) < 1e-6)
            continue;
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.2f", v);
        ASSERT_EQ(Format(v, "0.00"), std::string(buf) == "-0.00" ? "0.00" : buf) << v;
    }
}
