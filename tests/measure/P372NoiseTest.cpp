#include "measure/P372Noise.h"
#include "measure/P372Comparison.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;

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
