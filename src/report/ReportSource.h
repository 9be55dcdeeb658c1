#pragma once

#include "config/ResultGrid.h"
#include "config/SetupRecord.h"
#include "measure/Observation.h"

namespace zav {

// What every output of an observation copies: the set-up as typed, the observation's stamp,
// the grids' cell texts as displayed and the antenna values the calculation kept.
struct ReportSource {
    const SetupRecord& setup;
    const Observation& observation;
    const ResultGrid& gridMeas;
    const ResultGrid& gridCalc;
    double NumAntGain;
    double NumAntFact;
    char decimalSeparator = '.';
};

// True when the calculation filled at least one cell of the results grid: nothing that
// outputs an observation's results runs without them.
bool HasResults(const ReportSource& source);

// "MBW": 10·log10(bandwidth) formatted "0.00"; empty when the bandwidth is not above 0.
std::string MeasurementBandwidthText(const ReportSource& source);

} // namespace zav
