#include "measure/FieldStrength.h"
#include "WaveBytes.h"
#include "measure/AntennaFile.h"
#include "measure/P372Comparison.h"
#include "measure/P372Noise.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace zav;

namespace {

FieldStrengthInputs baseInputs(double y = 1) {
    FieldStrengthInputs in;
    in.ms1 = 1e-8;
    in.ms2 = 1e-6 + 1e-8;
    in.ms3 = in.ms1 + y * (in.ms2 - in.ms1);
    in.rms3 = std::sqrt(in.ms3);
    in.bandwidthHz = 2700;
    in.frequencyMHz = 7;
    return in;
}

// Field strength of noise Fa dB above kT0 in b Hz for G dBi, from the flux density at an
// isotropic aperture (E² = 120π·kTb·4π/λ²), not the program's 50 Ω antenna factor route.
double independentFieldDbuvPerM(double faDb, double fMHz, double bHz, double gainDbi) {
    const double pi = std::acos(-1.0), lambda = 299.792458 / fMHz;
    const double eSquared = 120 * pi * 1.3806504e-23 * 290 * bHz * 4 * pi / (lambda * lambda);
    return 10 * std::log10(eSquared) + 120 + faDb - gainDbi;
}

// The messages shown, a critical one marked "!".
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

TEST(FieldStrength, AgreesWithTheFluxDensityDerivation) {
    const auto unity = ComputeFieldStrength(baseInputs());
    ASSERT_EQ(unity.outcome, CalcOutcome::Done);
    EXPECT_EQ(Format(unity.rows[1]->rxDbm, "0.0") + " " + Format(*unity.MBW, "0.00"),
              "-139.7 34.31"); // −174.0 + 34.3
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> y(1.5, 1e5), f(0.1, 500), b(100, 200000), g(-10, 15),
        nf(0, 15), loss(0, 20);
    for (int i = 0; i < 200; ++i) {
        const double yf = i < 10 ? 1.0 : y(rng); // Y = 1 means T0 whatever the receiver
        FieldStrengthInputs in = baseInputs(yf);
        in.frequencyMHz = f(rng), in.bandwidthHz = b(rng), in.antGain = g(rng);
        in.rxNfDb = nf(rng), in.attenuatorDb = loss(rng), in.antFact = i % 2;
        const double gain = in.antFact ? *ComputeFieldStrength(in).NumAntGain : in.antGain;
        const auto r = ComputeFieldStrength(in);
        ASSERT_EQ(r.outcome, CalcOutcome::Done);
        EXPECT_DOUBLE_EQ(*r.yfact, yf);
        const double L = std::pow(10, in.attenuatorDb / 10);
        const double te = L * (std::pow(10, in.rxNfDb / 10) - 1) * 290 + (L - 1) * 290;
        const double fa = 10 * std::log10((yf * (290 + te) - te) / 290);
        EXPECT_NEAR(*r.Fa, fa, 1e-9);
        EXPECT_NEAR(r.rows[1]->fsDbuvPerM,
                    independentFieldDbuvPerM(fa, in.frequencyMHz, in.bandwidthHz, gain), 1e-3);
        EXPECT_NEAR(r.rows[1]->normFsDbuvPerM,
                    independentFieldDbuvPerM(fa, in.frequencyMHz, 1.0, gain), 1e-3);
    }
}

TEST(FieldStrength, DetectorRowsSilentRefusalsAndTheArithmeticErrorPath) {
    FieldStrengthInputs in = baseInputs();
    in.avgRms3 = -1.05, in.qpRms3 = 2.5, in.pkRms3 = 11.0;
    const auto r = ComputeFieldStrength(in);
    EXPECT_DOUBLE_EQ(r.rows[0]->rxDbm, r.rows[1]->rxDbm - 1.05);
    EXPECT_DOUBLE_EQ(r.rows[2]->fsDbuvPerM, r.rows[1]->fsDbuvPerM + 2.5);
    EXPECT_DOUBLE_EQ(r.rows[3]->normFsDbuvPerM, r.rows[1]->normFsDbuvPerM + 11.0);
    in.rms3 = 0; // no ratios: only the RMS row
    const auto onlyRms = ComputeFieldStrength(in);
    EXPECT_TRUE(!onlyRms.rows[0] && onlyRms.rows[1] && !onlyRms.rows[2] && !onlyRms.rows[3]);
    const std::pair<void (*)(FieldStrengthInputs&), CalcOutcome> cases[] = {
        {[](FieldStrengthInputs& in) { in.ms3 = 0; }, CalcOutcome::NoExternal},
        {[](FieldStrengthInputs& in) { in.externalOverThreshold = true; }, CalcOutcome::NoExternal},
        {[](FieldStrengthInputs& in) { in.ms2 = in.ms1; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.ms3 = in.ms1 / 2; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.bandwidthHz = 0; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.frequencyMHz = -1; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.rxNfDb = 4000; }, CalcOutcome::ArithmeticError}};
    for (const auto& [change, outcome] : cases) {
        FieldStrengthInputs spoilt = baseInputs();
        change(spoilt);
        EXPECT_EQ(ComputeFieldStrength(spoilt).outcome, outcome) << static_cast<int>(outcome);
    }
    // Y below 1 with a noisy receiver: Text falls below zero, nothing shown, Y kept.
    in = baseInputs(0.5), in.rxNfDb = 10;
    const auto low = ComputeFieldStrength(in);
    EXPECT_TRUE(low.outcome == CalcOutcome::NotComputable && *low.Text < 0 && !low.Fa);
    EXPECT_DOUBLE_EQ(*low.yfact, 0.5);
}

TEST(P372Noise, CurvesAndRangesMatchTheRecommendation) {
    // The recommendation's table: c (level at 1 MHz), d (fall per decade), decile deviations.
    const std::tuple<P372Curve, double, double, double, double> table[] = {
        {P372Curve::Business, 76.8, 27.7, 11.0, 6.7},
        {P372Curve::Residential, 72.5, 27.7, 10.6, 5.3},
        {P372Curve::Rural, 67.2, 27.7, 9.2, 4.6},
        {P372Curve::QuietRural, 53.6, 28.6, 9.2, 4.6},
        {P372Curve::Galactic, 52.0, 23.0, 2.0, 2.0}};
    for (const auto& [curve, c, d, upper, lower] : table) {
        EXPECT_NEAR(P372Median(curve, 1.0), c, 1e-12);
        EXPECT_NEAR(P372Median(curve, 0.5) - P372Median(curve, 5.0), d, 1e-9);
        EXPECT_EQ(P372Data(curve).upperDecileDb + P372Data(curve).lowerDecileDb / 100,
                  upper + lower / 100);
    }
    for (const char* env : kEnvironments)
        EXPECT_STREQ(P372Data(P372CurveForEnvironment(env).value()).name, env);
    for (const char* other : {"", "Galactic", "rural"})
        EXPECT_FALSE(P372CurveForEnvironment(other)) << other;
    EXPECT_TRUE(P372InRange(P372Curve::QuietRural, 0.3) && P372InRange(P372Curve::Business, 250) &&
                P372InRange(P372Curve::Galactic, 100));
    EXPECT_FALSE(P372InRange(P372Curve::Rural, 0.29) || P372InRange(P372Curve::Rural, 251) ||
                 P372InRange(P372Curve::Galactic, 144) || P372InRange(P372Curve::Galactic, 0));
}

TEST(P372Noise, ComparisonPlacesTheObservation) {
    const double fam = P372Median(P372Curve::Residential, 3.6);
    P372Comparison c = CompareWithP372(fam + 4.0, 3.6, "Residential");
    ASSERT_TRUE(c.FamDb && c.deltaDb && c.placement && c.inRange);
    EXPECT_NEAR(*c.deltaDb + 10 * *c.lowerDb + 100 * *c.upperDb, // weighted: a swap shows
                4 + 10 * (fam - 5.3) + 100 * (fam + 10.6), 1e-9);
    for (double delta : {-5.31, -5.29, 10.59, 10.61})
        EXPECT_EQ(*CompareWithP372(fam + delta, 3.6, "Residential").placement,
                  delta < -5.3   ? P372Placement::BelowLowerDecile
                  : delta > 10.6 ? P372Placement::AboveUpperDecile
                                 : P372Placement::WithinDeciles)
            << delta;
    c = CompareWithP372(10.0, 432.0, "Rural"); // outside the fitted range: given, flagged
    EXPECT_TRUE(c.FamDb && !c.inRange && !c.galacticInRange);
    c = CompareWithP372(10.0, 7.0, ""); // no environment: Fa and galactic noise only
    EXPECT_TRUE(!c.FamDb && !c.deltaDb && !c.placement && !c.curve && c.galacticInRange);
}

TEST(csinterpolate, KnownPointsLinesAndSmoothCurves) {
    const auto line = table({{1, 10}, {2, 20}, {3, 30}}); // outside, the end cubics go on
    for (double x : {2.5, 4.0, 0.5})
        EXPECT_NEAR(csinterpolate(line, x), 10 * x, 1e-5) << x;
    // sin has no curvature at 0 and π, like a natural spline's ends.
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
    AntennaFile f; // not a number: 0
    for (const std::string eol : {"\n", "\r\n", "\r"}) {
        const std::string text = "\xEF\xBB\xBF# made by hand" + eol + "#* Dipole, 7 MHz" + eol +
                                 "#*not a description" + eol + eol + "1.5\t10\tnote\twith tab" +
                                 eol + "2\t20" + eol + "3\tabc" + eol;
        ASSERT_TRUE(load(text, f).empty() && f.Ok && f.IntTable.size() == 3u);
        EXPECT_EQ(f.Antenna, "Dipole, 7 MHz");
        EXPECT_EQ(std::vector<double>({f.IntTable[0][0], f.IntTable[0][1], f.IntTable[2][1]}),
                  std::vector<double>({1.5, 10, 0}));
    }
    ASSERT_TRUE(load("1,5\t10,25\n2\t20\n3\t30", f, ',').empty() && f.Ok && !f.Antenna);
    EXPECT_EQ(std::make_pair(f.IntTable[0][0], f.IntTable[0][1]), std::make_pair(1.5, 10.25));
}

TEST(ReadAntennaFile, EveryProblemHasItsMessage) {
    const std::string tooFew = "!Not enough records in Antenna File (min=3).",
                      unsorted = "!Antenna File not sorted, load aborted.",
                      notFinite = "!Antenna File values out of range (not finite), load aborted.";
    // Reading stops at the first problem; too few records is then checked as well.
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
