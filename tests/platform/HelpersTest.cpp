#include "platform/CommandLine.h"
#include "platform/CompareVersions.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Paths.h"
#include "platform/PostOnce.h"
#include "platform/UrlCoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <tuple>

using namespace zav;
using P = std::pair<const char*, const char*>;

TEST(Conversions, AntennaFactorFromTheTextbookFormula) {
    // AF = 20·log10(9.733 / λ) − G, the 50 Ω form, computed another way.
    const double pi = std::acos(-1.0);
    for (double f : {0.1, 1.8, 7.0, 14.2, 100.0, 1296.0})
        for (double g : {-10.0, 0.0, 2.15, 17.5})
            EXPECT_NEAR(GainToFactor(g, f),
                        20 * std::log10(std::sqrt(480 * pi * pi / 50) * f / 299.792458) - g, 1e-9);
}

TEST(CompareVersions, NumericPartsAndTheSharedPosition) {
    using C = std::tuple<const char*, const char*, int, int>;
    // After the first part the shared position moves past the nearer dot: "01.3" reads "" (0).
    for (const auto& [a, b, parts, result] :
         {C{"5.1", "6.0", 2, -1}, C{"10.0", "6.0", 2, 1}, C{"6.0", "6.0", 2, 0},
          C{"2.1.2.9", "2.1.2.8", 4, 1}, C{"2.1.2.9", "2.1.2.8", 3, 0}, C{"1.2.10", "1.2.9", 3, 1},
          C{"6", "6.0", 2, 0}, C{"", "0", 1, 0}, C{"1.2", "01.3", 2, 1}, C{"1.10", "01.9", 2, 1},
          C{"01.9", "1.10", 2, -1}})
        EXPECT_EQ(CompareVersions(a, b, parts), result) << a << " " << b;
}

TEST(Paths, BaseNamesSeparatorsAndTheSuffixOfTheChosenFilter) {
    for (const auto& [path, base] : {P{"C:\\data\\home.zav", "home"}, P{"x.zav.zav", "x.zav"},
                                     P{"/home/op/site a.zav", "site a"}, P{"D:field.zav", "field"}})
        EXPECT_EQ(ProfileBaseName(path), base);

    // The chosen type's suffix, the command's own for "*.*", out of range the first type's.
    const char *text = "All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab",
               *plot = "All Files (*.*)|*.*|Plot files (*.plt)|*.plt",
               *zav = "ZAV files (*.zav)|*.zav|Other (*.ini)|*.ini", *all = "All Files (*.*)|*.*";
    using C = std::tuple<const char*, int, const char*>;
    for (const auto& [filter, index, suffix] :
         {C{text, 2, "txt"}, C{text, 1, "txt"}, C{plot, 1, "plt"}, C{zav, 2, "ini"},
          C{zav, 7, "zav"}, C{all, 1, ""}, C{"Antenna (ant*)|ant*|Any|*", 1, ""}})
        EXPECT_EQ(FilterSuffix(filter, index), suffix) << filter << " " << index;
    EXPECT_EQ(FileKind("All Files (*.*)|*.*|Wave files (*.wav)|*.wav") + FileKind(all), "wavany");
}

TEST(SplitCommandLine, QuotesBlanksLimitAndJoinRoundTrip) {
    using Args = std::vector<std::string>;
    EXPECT_EQ(SplitCommandLine("  a\t\tb   c d e f g  ", 5), (Args{"5", "a", "b", "c", "d", "e"}));
    EXPECT_EQ(SplitCommandLine("", 5)[0], "0");
    const Args quoted = SplitCommandLine("pre\"in side\"post \"\" \"open quote", 5);
    EXPECT_EQ(Args(quoted.begin(), quoted.begin() + 4),
              (Args{"3", "prein sidepost", "", "open quote"}));
    for (const Args& args : std::vector<Args>{
             {}, {"-d"}, {"-t", "my log.tab", "prof"}, {"", "a\tb", "x"}, {"-dl", "--", "-h"}}) {
        const auto split = SplitCommandLine(JoinCommandLine(args), 5);
        ASSERT_EQ(split[0], std::to_string(args.size()));
        EXPECT_EQ(Args(split.begin() + 1, split.begin() + 1 + std::ptrdiff_t(args.size())), args);
    }
}

TEST(UrlCoding, KnownFormsMalformedEscapesAndEveryByteRoundTrips) {
    EXPECT_EQ(UrlEncode("a b&c", true) + UrlEncode("a b", false), "a+b%26ca%20b");
    EXPECT_EQ(UrlEncode("x\t\r\n-_.~\xC3\xA9", true), "x%09%0D%0A%2D%5F%2E%7E%C3%A9");
    for (const auto& [coded, text] : {P{"a+b%26c", "a b&c"}, P{"100%", "100%"}, P{"%4", "%4"},
                                      P{"%zz%41%c3%a9", "%zzA\xC3\xA9"}, P{"%41", "A"}})
        EXPECT_EQ(UrlDecode(coded), text);
    std::mt19937 rng(3);
    for (int n = 0; n < 200; ++n) {
        std::string s(40, '\0');
        for (char& c : s)
            c = static_cast<char>(rng() & 0xFF);
        for (bool plus : {true, false}) {
            const std::string e = UrlEncode(s, plus);
            EXPECT_EQ(e.find_first_of(" \t\r\n&="), std::string::npos);
            EXPECT_EQ(UrlDecode(e), s);
        }
    }
}

TEST(PostOnce, RedirectTargetsAndOrigins) {
    const std::string from = "http://Example.org/zav/collect.php?x=1";
    for (const auto& [location, resolved] :
         {P{"https://other.org/a", "https://other.org/a"}, P{"//other.org/a", "http://other.org/a"},
          P{"/a/b", "http://Example.org/a/b"}, P{"moved.php", "http://Example.org/zav/moved.php"}})
        EXPECT_EQ(ResolveLocation(from, location), resolved) << location;
    EXPECT_TRUE(SameOrigin(from, "http://example.org:80/other") &&
                SameOrigin("https://a.org/x", "HTTPS://A.ORG:443/y"));
    for (const char* other : {"https://example.org/zav/", "http://example.org:8080/zav/",
                              "http://example.org.evil.net/zav/", "http://evil.net/?example.org",
                              "http://user@evil.net/", "example.org/zav/"})
        EXPECT_FALSE(SameOrigin(from, other)) << other;
}

TEST(Number, AcceptsTheDecimalGrammarAndHexadecimal) {
    using D = std::pair<const char*, double>;
    // Hexadecimal: 16 bits signed up to four digits, then 32 bits signed.
    for (const auto& [text, value] :
         {D{"0", 0}, D{"  42 ", 42}, D{"-3", -3}, D{"+2.5", 2.5}, D{"1E-3", 0.001},
          D{"2.5e+2", 250}, D{".5", 0.5}, D{"7.", 7}, D{"\t-0.31\t", -0.31},
          D{"000.000100", 0.0001}, D{"&h10", 16}, D{"&HfF", 255}, D{"&h7FFF", 32767},
          D{"&hFFFF", -1}, D{"&h10000", 65536}, D{"&hFFFFFFFF", -1}}) {
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
        EXPECT_TRUE(!IsNumber(text) && Number(text) == 0.0) << text;
    }
    EXPECT_TRUE(IsNumber("1,5", ',') && !IsNumber("1.5", ','));
    EXPECT_DOUBLE_EQ(Number("1,5", ','), 1.5);
}

TEST(Number, StoredNumbersUseAPointAndReadEitherSeparator) {
    // shown in a locale -> stored -> shown again; digits are kept as typed
    for (char sep : {'.', ','}) {
        for (std::string stored : {"7.100", "-0.31", "2700", "1.5e3", "&hFF", " 8.00 "}) {
            std::string shown = stored;
            std::replace(shown.begin(), shown.end(), '.', sep);
            EXPECT_EQ(LocaleFreeNumber(shown, sep), stored) << shown;
            EXPECT_EQ(ShownNumber(stored, sep), shown) << stored;
            EXPECT_EQ(StoredNumber(stored), Number(stored)) << stored;
        }
    }
    // A comma-locale machine's "2,700" is 2.7, never 2700 nor a default.
    EXPECT_EQ(ShownNumber("2,700", '.'), "2.700");
    EXPECT_EQ(StoredNumber("2,700"), 2.7);
    for (const char* text : {"", "six", "1.000,5", "1,5,0", "7 MHz"}) {
        EXPECT_EQ(LocaleFreeNumber(text, ','), text);
        EXPECT_FALSE(ShownNumber(text, ',') || StoredNumber(text)) << text;
    }
}

TEST(Format, PatternsRoundingSignAndSeparator) {
    using C = std::tuple<double, const char*, const char*>;
    // Halves go away from zero on the decimal value (2.675 is 2.67499999... in binary).
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
