#include "platform/Format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using zav::Format;

TEST(Format, PatternsRoundingSignAndSeparator) {
    struct Case {
        double value;
        const char* pattern;
        char separator;
        const char* text;
    };
    // Halves go away from zero on the decimal value (2.675 is stored as 2.67499999...); zero
    // never shows a sign.
    const Case cases[] = {{2700.6, "0", '.', "2701"},
                          {-0.31, "0.0", '.', "-0.3"},
                          {-35.1, "0.000000", '.', "-35.100000"},
                          {-7.5, "00.000000", '.', "-07.500000"},
                          {1234.5, "00.000000", '.', "1234.500000"},
                          {2.675, "0.00", '.', "2.68"},
                          {-2.675, "0.00", '.', "-2.68"},
                          {2.5, "0", '.', "3"},
                          {-0.5, "0", '.', "-1"},
                          {9.995, "0.00", '.', "10.00"},
                          {-0.0, "0.00", '.', "0.00"},
                          {-0.4, "0", '.', "0"},
                          {33.8, "0.00", ',', "33,80"}};
    for (const Case& c : cases)
        EXPECT_EQ(Format(c.value, c.pattern, c.separator), c.text) << c.value << " " << c.pattern;
    EXPECT_THROW(Format(1, "#.##"), std::invalid_argument);
    EXPECT_THROW(Format(1, "0.0.0"), std::invalid_argument);
}

TEST(Format, AgreesWithCorrectlyRoundedPrintfAwayFromTies) {
    // printf rounds the exact binary value; the two agree whenever the value is not within a
    // hair of a tie.
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> dist(-1e5, 1e5);
    for (int i = 0; i < 20000; ++i) {
        const double v = dist(rng);
        const double scaled = std::fabs(v) * 100;
        if (std::fabs(scaled - std::floor(scaled) - 0.5) < 1e-6)
            continue;
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.2f", v);
        const std::string expected = std::string(buf) == "-0.00" ? "0.00" : buf;
        ASSERT_EQ(Format(v, "0.00"), expected) << v;
    }
}
