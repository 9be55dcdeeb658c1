#pragma once

#include "config/SetupRecord.h"
#include "measure/P372Noise.h"

#include <optional>
#include <string>

namespace zav {

class MeasurementSteps;

// Where an observation falls against the spread of the environment's hourly medians.
enum class P372Placement { BelowLowerDecile, WithinDeciles, AboveUpperDecile };

// One observation set against the P.372 curves at its frequency. All levels in dB above
// k·T0·b. The environment's figures are missing when the set-up names no known environment.
struct P372Comparison {
    double FaDb = 0;
    double frequencyMHz = 0;
    std::string environment;
    std::optional<P372Curve> curve;
    std::optional<double> FamDb;   // the environment's median
    std::optional<double> lowerDb; // its lower decile level, Fam − lower decile
    std::optional<double> upperDb; // its upper decile level, Fam + upper decile
    std::optional<double> deltaDb; // Fa − Fam
    std::optional<P372Placement> placement;
    bool inRange = false; // the environment's curve holds at this frequency
    double galacticDb = 0;
    bool galacticInRange = false;
};

P372Comparison CompareWithP372(double faDb, double frequencyMHz, const std::string& environment);

// The comparison for the main window's current results: nothing while the results grid is
// empty (before a calculation, after a reset) or when the calculation left no Fa.
std::optional<P372Comparison> SiteAgainstP372(const MeasurementSteps& steps,
                                              const SetupRecord& setup,
                                              char decimalSeparator = '.');

// "below the lower decile", "within the deciles", "above the upper decile".
const char* PlacementText(P372Placement placement);

} // namespace zav
