#include "measure/P372Comparison.h"

#include "measure/MeasurementSteps.h"
#include "platform/Number.h"

namespace zav {

P372Comparison CompareWithP372(double faDb, double frequencyMHz, const std::string& environment) {
    P372Comparison c;
    c.FaDb = faDb;
    c.frequencyMHz = frequencyMHz;
    c.environment = environment;
    c.galacticDb = P372Median(P372Curve::Galactic, frequencyMHz);
    c.galacticInRange = P372InRange(P372Curve::Galactic, frequencyMHz);
    c.curve = P372CurveForEnvironment(environment);
    if (!c.curve)
        return c;
    const P372CurveData& data = P372Data(*c.curve);
    const double fam = P372Median(*c.curve, frequencyMHz);
    c.FamDb = fam;
    c.lowerDb = fam - data.lowerDecileDb;
    c.upperDb = fam + data.upperDecileDb;
    c.deltaDb = faDb - fam;
    c.inRange = P372InRange(*c.curve, frequencyMHz);
    if (faDb < *c.lowerDb)
        c.placement = P372Placement::BelowLowerDecile;
    else if (faDb > *c.upperDb)
        c.placement = P372Placement::AboveUpperDecile;
    else
        c.placement = P372Placement::WithinDeciles;
    return c;
}

std::optional<P372Comparison> SiteAgainstP372(const MeasurementSteps& steps,
                                              const SetupRecord& setup, char decimalSeparator) {
    const FieldStrength& calc = steps.lastCalculation;
    // The RMS received-power cell is filled by every calculation that succeeds.
    if (steps.gridCalc.Text(9).empty() || calc.outcome != CalcOutcome::Done || !calc.Fa)
        return std::nullopt;
    const double frequencyMHz = Number(setup.Frequency, decimalSeparator);
    if (!(frequencyMHz > 0))
        return std::nullopt;
    return CompareWithP372(*calc.Fa, frequencyMHz, setup.Environment);
}

const char* PlacementText(P372Placement placement) {
    switch (placement) {
    case P372Placement::BelowLowerDecile:
        return "below the lower decile";
    case P372Placement::WithinDeciles:
        return "within the deciles";
    case P372Placement::AboveUpperDecile:
        break;
    }
    return "above the upper decile";
}

} // namespace zav
