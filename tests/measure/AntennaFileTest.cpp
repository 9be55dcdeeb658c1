#include "measure/AntennaFile.h"
#include "WaveBytes.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sys/stat.h>
#include <tuple>

using namespace zav;

namespace {

const std::string kTitle = "ZAV Antenna File error:";
const std::string kTooFew = "Not enough records in Antenna File (min=3).";
const std::string kUnsorted = "Antenna File not sorted, load aborted.";
const std::string kBad = "Bad data record, aborting.";
const std::string kTooMany = "Too many records in Antenna File, discarding excess.";
const std::string kNotFinite = "Antenna File values out of range (not finite), load aborted.";

struct Loaded {
    AntennaFile file;
    test::FakeDialogs dialogs;
};

Loaded load(const std::string& text, char separator = '.') {
    Loaded l;
    const auto path = test::WriteBytes(test::ScratchDir() / "antenna.tab", text);
    l.file = ReadAntennaFile(path, l.dialogs, separator);
    for (const auto& shown : l.dialogs.messages)
        EXPECT_EQ(shown.title, kTitle);
    return l;
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

    // sin has no curvature at 0 and π, like a natural spline's ends: a close fit inside.
    std::vector<std::pair<double, double>> points;
    for (int i = 0; i < 20; ++i)
        points.push_back({1 + i * std::acos(-1.0) / 19, std::sin(i * std::acos(-1.0) / 19)});
    const auto curve = table(points);
    for (double x = 1; x < 1 + std::acos(-1.0); x += 0.01)
        EXPECT_NEAR(csinterpolate(curve, x), std::sin(x - 1), 1e-4) << x;
    for (const auto& [x, y] : points) // every record is met exactly
        EXPECT_EQ(csinterpolate(curve, x), y) << x;

    // The lower point's weight is single precision: near a large value the reading differs
    // from an all-double evaluation, but only by float rounding.
    const auto peak = table({{1000, 0}, {1001, 1e6}, {1002, 0}});
    const double x = 1001.3, a = (1002 - x) / 1, b = (x - 1001) / 1;
    const double allDouble = a * 1e6 + ((a * a * a - a) * peak[1][2]) / 6 + b * 0;
    const double got = csinterpolate(peak, x);
    EXPECT_NE(got, allDouble);
    EXPECT_NEAR(got, allDouble, 1e6 * 1e-7);
}

TEST(ReadAntennaFile, GoodFilesInEveryLineEnding) {
    for (const std::string eol : {"\n", "\r\n", "\r"}) {
        const Loaded l = load("\xEF\xBB\xBF# made by hand" + eol + "#* Dipole, 7 MHz" + eol +
                              "#*not a description" + eol + eol + "1.5\t10\tnote\twith tab" + eol +
                              "2\t20" + eol + "3\tabc" + eol);
        EXPECT_TRUE(l.file.Ok && l.dialogs.messages.empty());
        EXPECT_EQ(l.file.Antenna, "Dipole, 7 MHz");
        ASSERT_EQ(l.file.IntTable.size(), 3u);
        EXPECT_EQ(
            std::make_tuple(l.file.IntTable[0][0], l.file.IntTable[0][1], l.file.IntTable[2][1]),
            std::make_tuple(1.5, 10.0, 0.0)); // not a number: 0
    }
    const Loaded comma = load("1,5\t10,25\n2\t20\n3\t30", ',');
    ASSERT_TRUE(comma.file.Ok);
    EXPECT_EQ(std::make_pair(comma.file.IntTable[0][0], comma.file.IntTable[0][1]),
              std::make_pair(1.5, 10.25));
    EXPECT_FALSE(comma.file.Antenna.has_value());
}

TEST(ReadAntennaFile, EveryProblemHasItsMessage) {
    const auto critical = MessageIcon::Critical, none = MessageIcon::None;
    struct Case {
        std::string text;
        bool ok;
        std::vector<std::string> messages;
        std::vector<MessageIcon> icons;
    };
    // Reading stops at the first problem; too few records is then checked as well.
    const Case cases[] = {
        {records(3), true, {}, {}},
        {records(100), true, {}, {}},
        {records(2), false, {kTooFew}, {critical}},
        {"#* Yagi\n1\t10\n1\t20\n3\t30\n", false, {kUnsorted, kTooFew}, {critical, critical}},
        {records(3) + "2.5\t1\n", false, {kUnsorted}, {critical}},
        {"0\t10\n" + records(3), false, {kUnsorted, kTooFew}, {critical, critical}},
        {"-1\t10\n" + records(3), false, {kUnsorted, kTooFew}, {critical, critical}},
        {"abc\t10\n" + records(3), false, {kUnsorted, kTooFew}, {critical, critical}},
        {"1 10\n2\t20\n3\t30\n", false, {kBad, kTooFew}, {none, critical}},
        // Lines of blanks and tabs are empty lines, wherever they stand.
        {records(3) + " \n", true, {}, {}},
        {"1\t10\n\t\n2\t20\n  \t \n3\t30\n", true, {}, {}},
        {records(150), true, {kTooMany}, {none}},
        // Tables whose spline overflows would put infinity or NaN into every field strength.
        {"1\t1e308\n2\t-1e308\n3\t1e308\n", false, {kNotFinite}, {critical}},
        {"1e-300\t1\n2e-300\t1e300\n3\t1\n", false, {kNotFinite}, {critical}},
    };
    for (const Case& c : cases) {
        const Loaded l = load(c.text);
        const std::string what = c.text.substr(0, 20);
        EXPECT_EQ(l.file.Ok, c.ok) << what;
        EXPECT_EQ(l.dialogs.texts(), c.messages) << what;
        for (std::size_t i = 0; i < c.icons.size() && i < l.dialogs.messages.size(); ++i)
            EXPECT_EQ(l.dialogs.messages[i].icon, c.icons[i]) << what << " " << i;
    }
    EXPECT_EQ(load("#* Yagi\n1\t10\n1\t20\n").file.Antenna, "Yagi"); // taken before failing
    // A line without an end in sight keeps only its start.
    const Loaded endless = load("#* " + std::string(900000, 'Y') + "\n" + records(3));
    EXPECT_TRUE(endless.file.Ok);
    EXPECT_EQ(endless.file.Antenna->size(), 4093u);
    // More than 100 records: the first 100 load after the warning.
    const Loaded many = load(records(150));
    ASSERT_EQ(many.file.IntTable.size(), 100u);
    EXPECT_EQ(csinterpolate(many.file.IntTable, 50), 100);

    // Whatever the path names, one message says why, and reading never waits: a pipe
    // nobody writes to and an endless device are refused, not read.
    const auto dir = test::ScratchDir();
    const auto fifo = dir / "fifo.tab";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const auto huge = test::WriteBytes(dir / "huge.tab", records(3) + std::string(1 << 20, '#'));
    const std::pair<std::string, std::string> unreadable[] = {
        {(dir / "none.tab").string(), "No such file or directory"},
        {huge, "it is larger than 1048576 bytes"},
        {dir.string(), "it is a folder"},
        {fifo.string(), "it is not a regular file"},
        {"/proc/self/mem", "Input/output error"},
    };
    for (const auto& [path, reason] : unreadable) {
        test::FakeDialogs dialogs;
        EXPECT_FALSE(ReadAntennaFile(path, dialogs).Ok);
        EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Error: cannot open antenna file " +
                                                            path + ": " + reason + "."});
    }
}
