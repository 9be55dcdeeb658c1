#include "platform/CommandLine.h"
#include "platform/CompareVersions.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Paths.h"
#include "platform/UrlCoding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace zav;

TEST(GainToFactor, KnownFigureAndAnIndependentFormula) {
    EXPECT_EQ(Format(GainToFactor(0, 100), "0.00"), "10.23");
    EXPECT_EQ(Format(GainToFactor(10.23, 100), "0.00"), "0.00");
    // AF = 20·log10(9.733 / λ) − G, the textbook 50 Ω form, computed another way.
    const double pi = std::acos(-1.0);
    for (double f : {0.1, 1.8, 7.0, 14.2, 100.0, 1296.0}) {
        for (double g : {-10.0, 0.0, 2.15, 17.5}) {
            const double lambda = 299.792458 / f;
            const double af = 20 * std::log10(std::sqrt(480 * pi * pi / 50) / lambda) - g;
            EXPECT_NEAR(GainToFactor(g, f), af, 1e-9) << f << " " << g;
        }
    }
}

TEST(GainToFactor, IsItsOwnInverse) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> gain(-30, 40), freq(0.1, 10000);
    for (int i = 0; i < 1000; ++i) {
        const double g = gain(rng), f = freq(rng);
        EXPECT_NEAR(GainToFactor(GainToFactor(g, f), f), g, 1e-9);
    }
}

TEST(Constants, NoiseDensityAndPi) {
    EXPECT_NEAR(NoiseDensity, -173.975, 0.0005);
    EXPECT_DOUBLE_EQ(PiValue(), std::acos(-1.0));
}

TEST(CompareVersions, NumericPartsNotText) {
    EXPECT_EQ(CompareVersions("5.1", "6.0", 2), -1);
    EXPECT_EQ(CompareVersions("10.0", "6.0", 2), 1);
    EXPECT_EQ(CompareVersions("6.0", "6.0", 2), 0);
    EXPECT_EQ(CompareVersions("6.1", "6.0", 2), 1);
    EXPECT_EQ(CompareVersions("2.1.2.9", "2.1.2.8", 4), 1);
    EXPECT_EQ(CompareVersions("2.1.2.9", "2.1.2.8", 3), 0); // the fourth part is not looked at
    EXPECT_EQ(CompareVersions("1.2.10", "1.2.9", 3), 1);
    EXPECT_EQ(CompareVersions("6", "6.0", 2), 0);
    EXPECT_EQ(CompareVersions("", "0", 1), 0);
}

TEST(CompareVersions, SharedPositionComparesOutOfStepAfterTheFirstDot) {
    // "1.2" against "01.3": the first parts are equal (1 = 01); the position then moves just
    // past the nearer dot, which is "1.2"'s, so "2" is read from "1.2" but "" (0) from the
    // dot onwards of "01.3". Part by part it would be lower; compared with the shared position it is higher.
    EXPECT_EQ(CompareVersions("1.2", "01.3", 2), 1);
    EXPECT_EQ(CompareVersions("1.10", "01.9", 2), 1);
    EXPECT_EQ(CompareVersions("01.9", "1.10", 2), -1);
}

TEST(ProfileBaseName, StripsFolderDriveAndExtension) {
    EXPECT_EQ(ProfileBaseName("C:\\data\\home.zav"), "home");
    EXPECT_EQ(ProfileBaseName("/home/op/site a.zav"), "site a");
    EXPECT_EQ(ProfileBaseName("plain"), "plain");
    EXPECT_EQ(ProfileBaseName("x.zav.zav"), "x.zav");
    EXPECT_EQ(ProfileBaseName("D:field.zav"), "field");
}

TEST(Paths, TrailingSeparatorOnce) {
    EXPECT_EQ(WithTrailingSeparator("/tmp"), std::string("/tmp") + kDirSeparator);
    EXPECT_EQ(WithTrailingSeparator("/tmp/"), "/tmp/");
    EXPECT_EQ(WithTrailingSeparator(""), std::string(1, kDirSeparator));
}

TEST(SplitCommandLine, QuotesBlanksAndTheArgumentLimit) {
    auto a = SplitCommandLine("-t \"my log.tab\" prof", 5);
    ASSERT_EQ(a.size(), 6u);
    EXPECT_EQ(a[0], "3");
    EXPECT_EQ(a[1], "-t");
    EXPECT_EQ(a[2], "my log.tab");
    EXPECT_EQ(a[3], "prof");

    a = SplitCommandLine("  a\t\tb   c d e f g  ", 5);
    EXPECT_EQ(a[0], "5");
    EXPECT_EQ(a[5], "e"); // the sixth and later are ignored

    a = SplitCommandLine("", 5);
    EXPECT_EQ(a[0], "0");

    a = SplitCommandLine("pre\"in side\"post \"\"", 5);
    EXPECT_EQ(a[0], "2");
    EXPECT_EQ(a[1], "prein sidepost");
    EXPECT_EQ(a[2], ""); // an empty quoted argument is still an argument

    a = SplitCommandLine("\"unterminated quote", 5);
    EXPECT_EQ(a[0], "1");
    EXPECT_EQ(a[1], "unterminated quote");
}

TEST(SplitCommandLine, JoinRoundTrips) {
    const std::vector<std::vector<std::string>> cases = {
        {}, {"-d"}, {"-t", "my log.tab", "prof"}, {"", "a\tb", "x"}, {"-dl", "--", "-h"}};
    for (const auto& args : cases) {
        const auto split = SplitCommandLine(JoinCommandLine(args), 5);
        ASSERT_EQ(split[0], std::to_string(args.size()));
        for (std::size_t i = 0; i < args.size(); ++i)
            EXPECT_EQ(split[i + 1], args[i]);
    }
}

TEST(UrlCoding, KnownExampleAndSpaceForms) {
    EXPECT_EQ(UrlEncode("a b&c", true), "a+b%26c");
    EXPECT_EQ(UrlDecode("a+b%26c"), "a b&c");
    EXPECT_EQ(UrlEncode("a b", false), "a%20b");
    EXPECT_EQ(UrlEncode("x\t\r\n-_.~", true), "x%09%0D%0A%2D%5F%2E%7E");
    EXPECT_EQ(UrlEncode("\xC3\xA9", true), "%C3%A9"); // é as its two UTF-8 bytes
}

TEST(UrlCoding, DecodeKeepsWhatIsNotAnEscape) {
    EXPECT_EQ(UrlDecode("100%"), "100%");
    EXPECT_EQ(UrlDecode("%4"), "%4");
    EXPECT_EQ(UrlDecode("%zz%41"), "%zzA");
    EXPECT_EQ(UrlDecode("%c3%a9"), "\xC3\xA9");
}

TEST(UrlCoding, RoundTripsEveryByte) {
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
