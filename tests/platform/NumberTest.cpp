#include "platform/Number.h"

#include <gtest/gtest.h>

#include <cmath>

using zav::IsNumber;
using zav::Number;

TEST(Number, AcceptsTheDecimalGrammarWithBlanksSignAndExponent) {
    struct Case {
        const char* text;
        double value;
    };
    for (const Case& c : {Case{"0", 0},
                          {"  42 ", 42},
                          {"-3", -3},
                          {"+2.5", 2.5},
                          {"1e3", 1000},
                          {"1E-3", 0.001},
                          {"2.5e+2", 250},
                          {".5", 0.5},
                          {"7.", 7},
                          {"\t-0.31\t", -0.31},
                          {"000.000100", 0.0001}}) {
        SCOPED_TRACE(c.text);
        EXPECT_TRUE(IsNumber(c.text));
        EXPECT_DOUBLE_EQ(Number(c.text), c.value);
    }
}

TEST(Number, RefusesEverythingElseAndReadsItAsZero) {
    for (const char* text :
         {"",  "   ", "abc",  "1.2.3", "1,5",  "1 000", "e5",  "1e",  "1e+",   "--1", "+",
          ".", "1..", "0x10", "&h",    "&hG1", "1e400", "inf", "nan", "12abc", "- 5", "1d3"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(IsNumber(text));
        EXPECT_EQ(Number(text), 0.0);
    }
}

TEST(Number, DecimalSeparatorIsTheCallersChoice) {
    EXPECT_FALSE(IsNumber("1,5", '.'));
    EXPECT_TRUE(IsNumber("1,5", ','));
    EXPECT_DOUBLE_EQ(Number("1,5", ','), 1.5);
    // With a comma locale the point is no separator at all.
    EXPECT_FALSE(IsNumber("1.5", ','));
}

TEST(Number, HexadecimalFormsAreSixteenOrThirtyTwoBitSigned) {
    EXPECT_DOUBLE_EQ(Number("&h10"), 16);
    EXPECT_DOUBLE_EQ(Number("&HfF"), 255);
    EXPECT_DOUBLE_EQ(Number("&h7FFF"), 32767);
    EXPECT_DOUBLE_EQ(Number("&hFFFF"), -1);
    EXPECT_DOUBLE_EQ(Number("&h10000"), 65536);
    EXPECT_DOUBLE_EQ(Number("&hFFFFFFFF"), -1);
    EXPECT_FALSE(IsNumber("&h123456789"));
    EXPECT_FALSE(IsNumber("-&h10"));
}

TEST(Number, RoundTripsThroughShortestText) {
    // Any finite double printed with enough digits reads back exactly.
    for (double v : {0.1, -173.97500000000002, 1e-300, 6.02214076e23, 299792458.0}) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.17g", v);
        EXPECT_EQ(Number(buf), v) << buf;
    }
}
