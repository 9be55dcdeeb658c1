#include "platform/Number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

using zav::IsNumber;
using zav::Number;
using P = std::pair<const char*, double>;

TEST(Number, AcceptsTheDecimalGrammarAndHexadecimal) {
    // Hexadecimal: 16 bits signed up to four digits, then 32 bits signed.
    for (const auto& [text, value] :
         {P{"0", 0}, P{"  42 ", 42}, P{"-3", -3}, P{"+2.5", 2.5}, P{"1E-3", 0.001},
          P{"2.5e+2", 250}, P{".5", 0.5}, P{"7.", 7}, P{"\t-0.31\t", -0.31},
          P{"000.000100", 0.0001}, P{"&h10", 16}, P{"&HfF", 255}, P{"&h7FFF", 32767},
          P{"&hFFFF", -1}, P{"&h10000", 65536}, P{"&hFFFFFFFF", -1}}) {
        EXPECT_TRUE(IsNumber(text)) << text;
        EXPECT_DOUBLE_EQ(Number(text), value) << text;
    }
    for (double v : {0.1, -173.97500000000002, 1e-300, 6.02214076e23}) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.17g", v);
        EXPECT_EQ(Number(buf), v) << buf;
    }
    for (const char* text :
         {"",      "   ", "abc", "1.2.3", "1,5",  "1 000", "e5",   "1e",          "1e+",
          "--1",   "+",   ".",   "1..",   "0x10", "&h",    "&hG1", "&h123456789", "-&h10",
          "1e400", "inf", "nan", "12abc", "- 5",  "1d3"}) {
        EXPECT_FALSE(IsNumber(text)) << text;
        EXPECT_EQ(Number(text), 0.0) << text;
    }
    // The caller's separator decides; with a comma the point is no separator at all.
    EXPECT_TRUE(IsNumber("1,5", ',') && !IsNumber("1.5", ','));
    EXPECT_DOUBLE_EQ(Number("1,5", ','), 1.5);
}

TEST(Number, StoredNumbersUseAPointAndReadEitherSeparator) {
    // shown in a locale -> stored -> shown again; digits are kept as typed
    for (char sep : {'.', ','}) {
        for (std::string stored : {"7.100", "-0.31", "2700", "1.5e3", "&hFF", " 8.00 "}) {
            std::string shown = stored;
            std::replace(shown.begin(), shown.end(), '.', sep);
            EXPECT_EQ(zav::LocaleFreeNumber(shown, sep), stored) << shown;
            EXPECT_EQ(zav::ShownNumber(stored, sep), shown) << stored;
            EXPECT_EQ(zav::StoredNumber(stored), Number(stored)) << stored;
        }
    }
    // A comma-locale machine's "2,700" is 2.7, never 2700 nor a default.
    EXPECT_EQ(zav::ShownNumber("2,700", '.'), "2.700");
    EXPECT_EQ(zav::StoredNumber("2,700"), 2.7);
    for (const char* text : {"", "six", "1.000,5", "1,5,0", "7 MHz"}) {
        EXPECT_EQ(zav::LocaleFreeNumber(text, ','), text);
        EXPECT_FALSE(zav::ShownNumber(text, ',') || zav::StoredNumber(text)) << text;
    }
}
