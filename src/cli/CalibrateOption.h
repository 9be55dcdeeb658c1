#pragma once

#include "app/MainModel.h"
#include "cli/CliIo.h"
#include "measure/RxCalibration.h"

#include <optional>
#include <string>

namespace zav {

// `zavcli measure --calibrate KIND:LEVEL`: the calibration dialog's figures for the source
// that stood in for the antenna in step 3.
struct CalibrationRequest {
    CalSource source = CalSource::Carrier;
    std::string kind;  // "carrier", "density" or "enr", as given
    std::string level; // as given; checked as the dialog checks its level box
};

// Reads KIND:LEVEL. On a bad value says why on `io.err` (a level that is not a number with
// the dialog's own message) and gives nothing: the command line was wrong.
std::optional<CalibrationRequest> ParseCalibration(const std::string& option, CliIo& io);

// Prints the dialog's figures, `name<TAB>value`: YFactorDb, SystemNF, RxNF, NoiseFloor (empty
// where the dialog shows nothing). Exit 1 when the dialog would not open (no results with
// limits on) or would refuse "Apply", with the reason on standard error.
int PrintCalibration(const MainModel& model, const CalibrationRequest& request, CliIo& io);

// ,"calibration":{...} for the JSON output: source, level, the four figures as numbers (null
// where missing), the refusal text ("" when none) and whether the dialog could be opened.
std::string CalibrationJsonField(const MainModel& model, const CalibrationRequest& request);

// ,"Fa":...,"P372":{...} for the JSON output: the external noise factor and its comparison
// with the ITU-R P.372 curves; both null while the results grid is empty.
std::string P372JsonFields(const MainModel& model);

} // namespace zav
