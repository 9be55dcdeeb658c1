#pragma once

#include "report/ReportSource.h"

#include <string>

namespace zav::test {

// A finished observation with every grid cell the outputs copy, and no position.
struct ReportFixture {
    SetupRecord setup;
    Observation observation;
    ResultGrid gridMeas = ResultGrid::MakeMeasGrid(), gridCalc = ResultGrid::MakeCalcGrid();
    ReportFixture();
    ReportSource source() const;
};

// An expected file from tests/data, with "@VERSION@" replaced by the program's version.
std::string ExpectedFile(const std::string& name);

} // namespace zav::test
