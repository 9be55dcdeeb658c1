#include "cli/CalibrateOption.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "cli/Json.h"
#include "measure/CalRxModel.h"
#include "measure/P372Comparison.h"
#include "platform/SilentDialogs.h"

#include <sstream>

namespace zav {
namespace {

constexpr std::pair<const char*, CalSource> kKinds[] = {
    {"carrier", CalSource::Carrier},
    {"density", CalSource::NoiseDensity},
    {"enr", CalSource::ExcessNoiseRatio},
};

// The dialog as the operator would see it with this source and level typed in.
struct OpenDialog {
    SetupRecord setup; // a copy: the command never applies the figure
    SilentDialogs dialogs;
    CalRxModel model;

    OpenDialog(const MainModel& main, const CalibrationRequest& request)
        : setup(main.setup),
          model(setup, main.steps.yfact, dialogs, nullptr, main.steps.decimalSeparator) {
        model.open();
        model.chooseSource(request.source);
        model.CalLevel = request.level;
        model.calibrationLevelChanged();
    }
};

std::string number(const std::optional<double>& value) {
    return value ? JsonNumber(*value) : "null";
}

} // namespace

std::optional<CalibrationRequest> ParseCalibration(const std::string& option, CliIo& io) {
    const std::size_t colon = option.find(':');
    CalibrationRequest request;
    request.kind = option.substr(0, colon);
    bool known = false;
    for (const auto& [name, source] : kKinds) {
        if (request.kind == name) {
            request.source = source;
            known = true;
        }
    }
    if (colon == std::string::npos || !known) {
        UsageError(io, "measure", "--calibrate takes carrier:DBM, density:DBMHZ or enr:DB");
        return std::nullopt;
    }
    request.level = option.substr(colon + 1);
    // The level box's own check and message.
    SetupRecord unused;
    CliDialogs dialogs(io.err);
    CalRxModel check(unused, 0, dialogs, nullptr);
    check.CalLevel = request.level;
    bool cancel = false;
    check.calibrationLevelLeft(cancel);
    if (cancel)
        return std::nullopt;
    return request;
}

int PrintCalibration(const MainModel& main, const CalibrationRequest& request, CliIo& io) {
    // "&CalibrateRx" is offered only after a calculation that succeeded with limits on.
    if (!main.commands.calibrateRxEnabled) {
        io.err << "zavcli measure: no results to calibrate from (the calibration needs a "
                  "successful calculation with limits on)\n";
        return kExitFailed;
    }
    const OpenDialog dialog(main, request);
    const CalRxModel& m = dialog.model;
    io.out << "YFactorDb\t" << m.yFactorText << "\n"
           << "SystemNF\t" << m.systemNfText << "\n"
           << "RxNF\t" << m.receiverNfText << "\n"
           << "NoiseFloor\t" << m.noiseFloorText << "\n";
    if (!m.statusText.empty())
        io.err << m.statusText << "\n";
    return m.ApplyEnabled ? kExitOk : kExitFailed;
}

std::string CalibrationJsonField(const MainModel& main, const CalibrationRequest& request) {
    std::ostringstream out;
    out << ",\"calibration\":{\"source\":" << JsonString(request.kind)
        << ",\"level\":" << JsonString(request.level);
    if (!main.commands.calibrateRxEnabled) {
        out << ",\"available\":false}";
        return out.str();
    }
    const OpenDialog dialog(main, request);
    const CalRxModel& m = dialog.model;
    out << ",\"available\":true"
        << ",\"YFactorDb\":" << number(m.result.yFactorDb)
        << ",\"SystemNF\":" << number(m.result.systemNfDb)
        << ",\"RxNF\":" << number(m.result.receiverNfDb)
        << ",\"NoiseFloor\":" << number(m.result.noiseFloorDbm)
        << ",\"refusal\":" << JsonString(m.statusText) << "}";
    return out.str();
}

std::string P372JsonFields(const MainModel& main) {
    const std::optional<P372Comparison> c =
        SiteAgainstP372(main.steps, main.setup, main.steps.decimalSeparator);
    if (!c)
        return ",\"Fa\":null,\"P372\":null";
    std::ostringstream out;
    out << ",\"Fa\":" << JsonNumber(c->FaDb)
        << ",\"P372\":{\"environment\":" << JsonString(c->environment)
        << ",\"Fam\":" << number(c->FamDb) << ",\"lower\":" << number(c->lowerDb)
        << ",\"upper\":" << number(c->upperDb) << ",\"delta\":" << number(c->deltaDb)
        << ",\"galactic\":" << JsonNumber(c->galacticDb)
        << ",\"inRange\":" << (c->inRange ? "true" : "false")
        << ",\"galacticInRange\":" << (c->galacticInRange ? "true" : "false") << "}";
    return out.str();
}

} // namespace zav
