#include "platform/Number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

using zav::IsNumber;
using zav::Number;

TEST(Number, AcceptsTheDecimalGrammarAndHexadecimal) {
    // Hexadecimal: 16 bits signed up to four digits, then 32 bits signed.
    const std::pair<const char*, double> good[] = {{"0", 0},
                                                   {"  42 ", 42},
                                                   {"-3", -3},
                                                   {"+2.5", 2.5},
                                                   {"1E-3", 0.001},
                                                   {"2.5e+2", 250},
                                                   {".5", 0.5},
                                                   {"7.", 7},
                                                   {"\t-0.31\t", -0.31},
                                                   {"000.000100", 0.0001},
                                                   {"&h10", 16},
                                                   {"&HfF", 255},
                                                   {"&h7FFF", 32767},
                                                   {"&hFFFF", -1},
                                                   {"&h10000", 65536},
                                                   {"&hFFFFFFFF", -1}};
    for (const auto& [text, value] : good) {
        EXPECT_TRUE(IsNumber(text)) << text;
        EXPECT_DOUBLE_EQ(Number(text), value) << text;
    }
    // Enough digits read back the very double.
    for (double v : {0.1, -173.97500000000002, 1e-300, 6.02214076e23}) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.17g", v);
        EXPECT_EQ(Number(buf), v) << buf;
    }
}

TEST(Number, RefusesEverythingElseAndReadsItAsZero) {
    for (const char* text :
         {"",      "   ", "abc", "1.2.3", "1,5",  "1 000", "e5",   "1e",          "1e+",
          "--1",   "+",   ".",   "1..",   "0x10", "&h",    "&hG1", "&h123456789", "-&h10",
          "1e400", "inf", "nan", "12abc", "- 5",  "1d3"}) {
        EXPECT_FALSE(IsNumber(text)) << text;
        EXPECT_EQ(Number(text), 0.0) << text;
    }
    // The caller's separator decides; with a comma the point is no separator at all.
    EXPECT_TRUE(IsNumber("1,5", ','));
    EXPECT_DOUBLE_EQ(Number("1,5", ','), 1.5);
    EXPECT_FALSE(IsNumber("1.5", ','));
}

TEST(Number, StoredNumbersUseAPointAndReadEitherSeparator) {
    // shown in a locale -> stored -> shown again, for both separators; digits are kept as typed
    for (char sep : {'.', ','}) {
        for (std::string stored : {"7.100", "-0.31", "2700", "1.5e3", "&hFF", " 8.00 "}) {
            std::string shown = stored;
            if (sep == ',')
                std::replace(shown.begin(), shown.end(), '.', ',');
            EXPECT_EQ(zav::LocaleFreeNumber(shown, sep), stored) << shown;
            EXPECT_EQ(zav::ShownNumber(stored, sep), shown) << stored;
            EXPECT_EQ(zav::StoredNumber(stored), Number(stored)) << stored;
        }
    }
    // A comma-locale machine's "2,700" is 2.7, never 2700 nor a default.
    EXPECT_EQ(zav::ShownNumber("2,700", '.'), "2.700");
    EXPECT_EQ(zav::StoredNumber("2,700"), 2.7);
    // Text that is not a number is left alone on the way out and refused on the way in.
    for (const char* text : {"", "six", "1.000,5", "1,5,0", "7 MHz"}) {
        EXPECT_EQ(zav::LocaleFreeNumber(text, ','), text);
        EXPECT_FALSE(zav::ShownNumber(text, ',')) << text;
        EXPECT_FALSE(zav::StoredNumber(text)) << text;
    }
}
