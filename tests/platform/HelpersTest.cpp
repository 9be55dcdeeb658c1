#include "platform/CommandLine.h"
#include "platform/CompareVersions.h"
#include "platform/Conversions.h"
#include "platform/Paths.h"
#include "platform/PostOnce.h"
#include "platform/UrlCoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>

using namespace zav;

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
    // After the first part the position moves just past the nearer dot, shared by both:
    // "01.3" is then read from its dot on, as "" (0). Part by part it would be lower.
    for (const auto& [a, b, parts, result] :
         {C{"5.1", "6.0", 2, -1}, C{"10.0", "6.0", 2, 1}, C{"6.0", "6.0", 2, 0},
          C{"2.1.2.9", "2.1.2.8", 4, 1}, C{"2.1.2.9", "2.1.2.8", 3, 0}, C{"1.2.10", "1.2.9", 3, 1},
          C{"6", "6.0", 2, 0}, C{"", "0", 1, 0}, C{"1.2", "01.3", 2, 1}, C{"1.10", "01.9", 2, 1},
          C{"01.9", "1.10", 2, -1}})
        EXPECT_EQ(CompareVersions(a, b, parts), result) << a << " " << b;
}

TEST(Paths, BaseNamesSeparatorsAndTheSuffixOfTheChosenFilter) {
    using P = std::pair<const char*, const char*>;
    for (const auto& [path, base] : {P{"C:\\data\\home.zav", "home"}, P{"x.zav.zav", "x.zav"},
                                     P{"/home/op/site a.zav", "site a"}, P{"D:field.zav", "field"}})
        EXPECT_EQ(ProfileBaseName(path), base);
    EXPECT_EQ(WithTrailingSeparator("/tmp"), std::string("/tmp") + kDirSeparator);
    EXPECT_EQ(WithTrailingSeparator("/tmp/"), "/tmp/");

    // A typed name without a suffix gets the chosen type's, or the command's own for "*.*";
    // an index out of range picks the first type.
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
    const Args quoted = SplitCommandLine("pre\"in side\"post \"\"", 5);
    EXPECT_EQ(Args(quoted.begin(), quoted.begin() + 3), (Args{"2", "prein sidepost", ""}));
    const Args open = SplitCommandLine("\"unterminated quote", 5);
    EXPECT_EQ(Args(open.begin(), open.begin() + 2), (Args{"1", "unterminated quote"}));
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
    using P = std::pair<const char*, const char*>;
    for (const auto& [coded, text] : {P{"a+b%26c", "a b&c"}, P{"100%", "100%"}, P{"%4", "%4"},
                                      P{"%zz%41%c3%a9", "%zzA\xC3\xA9"}, P{"%41", "A"}})
        EXPECT_EQ(UrlDecode(coded), text);
    std::mt19937 rng(3);
    for (int n = 0; n < 200; ++n) {
        std::string s;
        for (int i = 0; i < 40; ++i)
            s += static_cast<char>(rng() & 0xFF);
        for (bool plus : {true, false}) {
            const std::string e = UrlEncode(s, plus);
            EXPECT_EQ(e.find_first_of(" \t\r\n&="), std::string::npos);
            EXPECT_EQ(UrlDecode(e), s);
        }
    }
}

TEST(PostOnce, RedirectTargetsAndOrigins) {
    const std::string from = "http://Example.org/zav/collect.php?x=1";
    using P = std::pair<const char*, const char*>;
    for (const auto& [location, resolved] :
         {P{"https://other.org/a", "https://other.org/a"}, P{"//other.org/a", "http://other.org/a"},
          P{"/a/b", "http://Example.org/a/b"}, P{"moved.php", "http://Example.org/zav/moved.php"}})
        EXPECT_EQ(zav::ResolveLocation(from, location), resolved) << location;
    EXPECT_TRUE(zav::SameOrigin(from, "http://example.org:80/other") &&
                zav::SameOrigin("https://a.org/x", "HTTPS://A.ORG:443/y"));
    for (const char* other : {"https://example.org/zav/", "http://example.org:8080/zav/",
                              "http://example.org.evil.net/zav/", "http://evil.net/?example.org",
                              "http://user@evil.net/", "example.org/zav/"})
        EXPECT_FALSE(zav::SameOrigin(from, other)) << other;
}
