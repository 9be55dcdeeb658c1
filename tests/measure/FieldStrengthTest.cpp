#include "measure/FieldStrength.h"
#include "measure/P372Comparison.h"
#include "measure/P372Noise.h"
#include "platform/Format.h"

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

TEST(FieldStrength, DetectorRowsCarryTheExternalRatios) {
    FieldStrengthInputs in = baseInputs();
    in.avgRms3 = -1.05, in.qpRms3 = 2.5, in.pkRms3 = 11.0;
    const auto r = ComputeFieldStrength(in);
    ASSERT_TRUE(r.rows[0] && r.rows[2] && r.rows[3]);
    EXPECT_DOUBLE_EQ(r.rows[0]->rxDbm, r.rows[1]->rxDbm - 1.05);
    EXPECT_DOUBLE_EQ(r.rows[2]->fsDbuvPerM, r.rows[1]->fsDbuvPerM + 2.5);
    EXPECT_DOUBLE_EQ(r.rows[3]->normFsDbuvPerM, r.rows[1]->normFsDbuvPerM + 11.0);
    in.rms3 = 0; // no ratios: only the RMS row
    const auto onlyRms = ComputeFieldStrength(in);
    EXPECT_TRUE(!onlyRms.rows[0] && onlyRms.rows[1] && !onlyRms.rows[2] && !onlyRms.rows[3]);
}

TEST(FieldStrength, SilentRefusalsAndTheArithmeticErrorPath) {
    const std::pair<void (*)(FieldStrengthInputs&), CalcOutcome> cases[] = {
        {[](FieldStrengthInputs& in) { in.ms3 = 0; }, CalcOutcome::NoExternal},
        {[](FieldStrengthInputs& in) { in.externalOverThreshold = true; }, CalcOutcome::NoExternal},
        {[](FieldStrengthInputs& in) { in.ms2 = in.ms1; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.ms3 = in.ms1 / 2; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.bandwidthHz = 0; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.frequencyMHz = -1; }, CalcOutcome::NotComputable},
        {[](FieldStrengthInputs& in) { in.rxNfDb = 4000; }, CalcOutcome::ArithmeticError}};
    for (const auto& [change, outcome] : cases) {
        FieldStrengthInputs in = baseInputs();
        change(in);
        EXPECT_EQ(ComputeFieldStrength(in).outcome, outcome) << static_cast<int>(outcome);
    }
    // Y below 1 with a noisy receiver: Text falls below zero, nothing shown, Y kept.
    FieldStrengthInputs in = baseInputs(0.5);
    in.rxNfDb = 10;
    const auto r = ComputeFieldStrength(in);
    EXPECT_TRUE(r.outcome == CalcOutcome::NotComputable && *r.Text < 0 && !r.Fa);
    EXPECT_DOUBLE_EQ(*r.yfact, 0.5);
}

TEST(P372Noise, CurvesAndRangesMatchTheRecommendation) {
    // The recommendation's table: c (level at 1 MHz), d (fall per decade), decile deviations.
    struct Row {
        P372Curve curve;
        double c, d, upper, lower;
    };
    const Row table[] = {{P372Curve::Business, 76.8, 27.7, 11.0, 6.7},
                         {P372Curve::Residential, 72.5, 27.7, 10.6, 5.3},
                         {P372Curve::Rural, 67.2, 27.7, 9.2, 4.6},
                         {P372Curve::QuietRural, 53.6, 28.6, 9.2, 4.6},
                         {P372Curve::Galactic, 52.0, 23.0, 2.0, 2.0}};
    for (const Row& row : table) {
        EXPECT_NEAR(P372Median(row.curve, 1.0), row.c, 1e-12);
        EXPECT_NEAR(P372Median(row.curve, 0.5) - P372Median(row.curve, 5.0), row.d, 1e-9);
        EXPECT_EQ(P372Data(row.curve).upperDecileDb + P372Data(row.curve).lowerDecileDb / 100,
                  row.upper + row.lower / 100);
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
    EXPECT_NEAR(fam, 57.0904, 1e-4); // worked out separately from c and d
    P372Comparison c = CompareWithP372(fam + 4.0, 3.6, "Residential");
    ASSERT_TRUE(c.FamDb && c.deltaDb && c.placement);
    EXPECT_NEAR(*c.deltaDb + 10 * *c.lowerDb + 100 * *c.upperDb, // weighted: a swap shows
                4 + 10 * (fam - 5.3) + 100 * (fam + 10.6), 1e-9);
    EXPECT_TRUE(c.inRange);
    EXPECT_NEAR(c.galacticDb, 52.0 - 23.0 * std::log10(3.6), 1e-9);
    const std::pair<double, P372Placement> placements[] = {
        {-5.31, P372Placement::BelowLowerDecile},
        {-5.29, P372Placement::WithinDeciles},
        {4.0, P372Placement::WithinDeciles},
        {10.61, P372Placement::AboveUpperDecile}};
    for (const auto& [delta, placement] : placements)
        EXPECT_EQ(*CompareWithP372(fam + delta, 3.6, "Residential").placement, placement) << delta;
    EXPECT_STREQ(PlacementText(P372Placement::AboveUpperDecile), "above the upper decile");

    c = CompareWithP372(10.0, 432.0, "Rural"); // outside the fitted range: given, flagged
    EXPECT_TRUE(c.FamDb && !c.inRange && !c.galacticInRange);
    c = CompareWithP372(10.0, 7.0, ""); // no environment: Fa and galactic noise only
    EXPECT_FALSE(c.FamDb || c.deltaDb || c.placement || c.curve || c.inRange);
    EXPECT_TRUE(c.galacticInRange);
}
