#pragma once

#include "platform/Dialogs.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace zav {

// One row per record: frequency (MHz), antenna factor (dB/m), and the cubic spline's second
// derivative at that point.
using AntennaRow = std::array<double, 3>;

// What an antenna file gave: its table, its description line and whether it can be used.
struct AntennaFile {
    static constexpr std::size_t kMaxRecords = 100;

    std::vector<AntennaRow> IntTable;
    // The text behind the last "#* " line read, if there was one. It counts even when the
    // load fails later, as the field it fills has then already been written.
    std::optional<std::string> Antenna;
    bool Ok = false;
};

// Reads an antenna file: "#* " description, "#" comments, empty lines, and records of
// frequency and factor split at tabs, strictly increasing in frequency, 3 to 100 of them.
// Shows each problem under the title "ZAV Antenna File error:"; a file with more than 100
// records keeps its first 100 after a warning. On success the spline is ready for
// csinterpolate. `decimalSeparator` is the one the numbers are read with.
AntennaFile ReadAntennaFile(const std::string& path, Dialogs& dialogs, char decimalSeparator = '.');

// Fills column 2 with the second derivatives of the natural cubic spline (zero curvature at
// both ends) through the table's points. Needs at least two rows; more than two to bend.
void SplineSecondDerivatives(std::vector<AntennaRow>& table);

// The spline's value at `abscissa` (MHz); outside the table, the end interval's cubic goes
// on. The weight of the lower point is kept in single precision on purpose, so that
// readings agree to the last digit with antenna factors logged by earlier versions.
double csinterpolate(const std::vector<AntennaRow>& table, double abscissa);

} // namespace zav
