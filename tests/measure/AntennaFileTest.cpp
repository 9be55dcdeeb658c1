#include "measure/AntennaFile.h"
#include "WaveBytes.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;

namespace {

// The messages shown, a critical one marked with a leading "!".
std::vector<std::string> load(const std::string& text, AntennaFile& file, char separator = '.') {
    test::FakeDialogs dialogs;
    file =
        ReadAntennaFile(test::WriteBytes(test::ScratchDir() / "a.tab", text), dialogs, separator);
    std::vector<std::string> shown;
    for (const auto& m : dialogs.messages) {
        EXPECT_EQ(m.title, "ZAV Antenna File error:");
        shown.push_back((m.icon == MessageIcon::Critical ? "!" : "") + m.text);
    }
    return shown;
}

std::vector<AntennaRow> table(const std::vector<std::pair<double, double>>& points) {
    std::vector<AntennaRow> t;
    for (auto [x, y] : points)
        t.push_back({x, y, 0});
    SplineSecondDerivatives(t);
    return t;
}

std::string records(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i)
        text += std::to_string(i) + "\t" + std::to_string(2 * i) + "\n";
    return text;
}

} // namespace

TEST(csinterpolate, KnownPointsLinesAndSmoothCurves) {
    const auto line = table({{1, 10}, {2, 20}, {3, 30}}); // outside, the end cubics go on
    for (double x : {2.5, 4.0, 0.5})
        EXPECT_NEAR(csinterpolate(line, x), 10 * x, 1e-5) << x;
    // sin has no curvature at 0 and π, like a natural spline's ends: a close fit inside, and
    // every record met exactly.
    const double pi = std::acos(-1.0);
    std::vector<std::pair<double, double>> points;
    for (int i = 0; i < 20; ++i)
        points.push_back({1 + i * pi / 19, std::sin(i * pi / 19)});
    const auto curve = table(points);
    for (double x = 1; x < 1 + pi; x += 0.01)
        EXPECT_NEAR(csinterpolate(curve, x), std::sin(x - 1), 1e-4) << x;
    for (const auto& [x, y] : points)
        EXPECT_EQ(csinterpolate(curve, x), y) << x;
    // The lower point's weight is single precision: off an all-double evaluation by float rounding.
    const auto peak = table({{1000, 0}, {1001, 1e6}, {1002, 0}});
    const double a = 1002 - 1001.3, allDouble = a * 1e6 + (a * a * a - a) * peak[1][2] / 6;
    const double got = csinterpolate(peak, 1001.3);
    EXPECT_TRUE(got != allDouble && std::fabs(got - allDouble) < 0.1) << got;
}

TEST(ReadAntennaFile, GoodFilesInEveryLineEndingAndSeparator) {
    AntennaFile f;
    for (const std::string eol : {"\n", "\r\n", "\r"}) {
        const std::string text = "\xEF\xBB\xBF# made by hand" + eol + "#* Dipole, 7 MHz" + eol +
                                 "#*not a description" + eol + eol + "1.5\t10\tnote\twith tab" +
                                 eol + "2\t20" + eol + "3\tabc" + eol;
        EXPECT_TRUE(load(text, f).empty());
        ASSERT_TRUE(f.Ok && f.IntTable.size() == 3u);
        EXPECT_EQ(f.Antenna, "Dipole, 7 MHz");
        EXPECT_EQ(std::vector<double>({f.IntTable[0][0], f.IntTable[0][1], f.IntTable[2][1]}),
                  std::vector<double>({1.5, 10, 0})); // not a number: 0
    }
    load("1,5\t10,25\n2\t20\n3\t30", f, ',');
    ASSERT_TRUE(f.Ok && !f.Antenna);
    EXPECT_EQ(std::make_pair(f.IntTable[0][0], f.IntTable[0][1]), std::make_pair(1.5, 10.25));
}

TEST(ReadAntennaFile, EveryProblemHasItsMessage) {
    const std::string tooFew = "!Not enough records in Antenna File (min=3).",
                      unsorted = "!Antenna File not sorted, load aborted.",
                      notFinite = "!Antenna File values out of range (not finite), load aborted.";
    // Reading stops at the first problem; too few records is then checked as well. The last
    // two: a spline that overflows would put infinity or NaN into every field strength.
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {records(3), {}},
        {records(2), {tooFew}},
        {"#* Yagi\n1\t10\n1\t20\n3\t30\n", {unsorted, tooFew}},
        {records(3) + "2.5\t1\n", {unsorted}},
        {"0\t10\n" + records(3), {unsorted, tooFew}},
        {"abc\t10\n" + records(3), {unsorted, tooFew}},
        {"1 10\n2\t20\n3\t30\n", {"Bad data record, aborting.", tooFew}},
        {"1\t10\n\t\n2\t20\n  \t \n3\t30\n", {}}, // lines of blanks and tabs are empty lines
        {"1\t1e308\n2\t-1e308\n3\t1e308\n", {notFinite}},
        {"1e-300\t1\n2e-300\t1e300\n3\t1\n", {notFinite}},
    };
    AntennaFile f;
    for (const auto& [text, messages] : cases) {
        EXPECT_EQ(load(text, f), messages) << text;
        EXPECT_EQ(f.Ok, messages.empty() || messages.back()[0] != '!') << text;
    }
    load("#* Yagi\n1\t10\n1\t20\n", f);
    EXPECT_EQ(f.Antenna, "Yagi"); // taken before failing
    load("#* " + std::string(900000, 'Y') + "\n" + records(3), f);
    EXPECT_TRUE(f.Ok && f.Antenna->size() == 4093u); // only its start
    EXPECT_EQ(load(records(100), f), std::vector<std::string>{});
    EXPECT_EQ(load(records(150), f), std::vector<std::string>{"Too many records in Antenna File, "
                                                              "discarding excess."});
    ASSERT_TRUE(f.Ok && f.IntTable.size() == 100u); // the first 100 load
    EXPECT_EQ(csinterpolate(f.IntTable, 50), 100);
    // Whatever the path names, one message says why (folder, pipe, device: the command's tests).
    const auto dir = test::ScratchDir();
    const auto huge = test::WriteBytes(dir / "huge.tab", records(3) + std::string(1 << 20, '#'));
    const std::pair<std::string, std::string> unreadable[] = {
        {(dir / "none.tab").string(), "No such file or directory"},
        {huge, "it is larger than 1048576 bytes"},
        {"/proc/self/mem", "Input/output error"},
    };
    for (const auto& [path, reason] : unreadable) {
        test::FakeDialogs dialogs;
        EXPECT_FALSE(ReadAntennaFile(path, dialogs).Ok);
        EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Error: cannot open antenna file " +
                                                            path + ": " + reason + "."});
    }
}
