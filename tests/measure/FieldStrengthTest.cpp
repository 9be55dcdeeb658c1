#include "measure/FieldStrength.h"
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

// Field strength of noise Fa dB above kT0 in b Hz for an antenna of gain G dBi, from the power
// flux density at an isotropic aperture (E² = 120π·kTb·4π/λ²), not from the 50 Ω microvolt
// reference and antenna factor the program uses.
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
        // The antenna factor as the gain it stands for.
        const double gain = in.antFact ? *ComputeFieldStrength(in).NumAntGain : in.antGain;
        const auto r = ComputeFieldStrength(in);
        ASSERT_EQ(r.outcome, CalcOutcome::Done);
        EXPECT_DOUBLE_EQ(*r.yfact, yf);
        // Text from the Y factor with the loss and receiver temperatures spelled out.
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
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        FieldStrengthInputs in = baseInputs();
        cases[i].first(in);
        EXPECT_EQ(ComputeFieldStrength(in).outcome, cases[i].second) << i;
    }
    // Y below 1 with a noisy receiver: Text falls below zero, nothing shown, Y kept.
    FieldStrengthInputs in = baseInputs(0.5);
    in.rxNfDb = 10;
    const auto r = ComputeFieldStrength(in);
    EXPECT_TRUE(r.outcome == CalcOutcome::NotComputable && *r.Text < 0 && !r.Fa);
    EXPECT_DOUBLE_EQ(*r.yfact, 0.5);
}
