#include "cli/MeasureCommand.h"

#include "cli/CalibrateOption.h"
#include "cli/Commands.h"
#include "cli/HeadlessModel.h"
#include "cli/Json.h"
#include "cli/PostCommand.h"
#include "platform/AtomicFile.h"
#include "platform/Number.h"
#include "report/TextReport.h"

#include <filesystem>
#include <optional>
#include <sstream>

namespace zav {
namespace {

struct MeasureArgs {
    std::string profile;
    bool limits = true;
    std::string log;
    std::string report;
    bool json = false;
    bool post = false;
    std::optional<CalibrationRequest> calibrate; // --calibrate KIND:LEVEL
    std::vector<std::string> files;
};

const char* colourName(CellColour c) {
    switch (c) {
    case CellColour::Red:
        return "red";
    case CellColour::Orange:
        return "orange";
    case CellColour::WindowText:
        break;
    }
    return "normal";
}

std::string gridJson(const ResultGrid& g) {
    std::string out = "[";
    for (int r = 0; r < g.Rows(); ++r) {
        out += r ? ",[" : "[";
        for (int c = 0; c < g.Columns(); ++c)
            out += (c ? "," : "") + JsonString(g.Text(r, c));
        out += "]";
    }
    return out + "]";
}

struct StepVerdict {
    bool ran = false;
    std::vector<std::string> messages;
};

} // namespace

int RunMeasure(const std::vector<std::string>& args, CliIo& io) {
    MeasureArgs a;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        if (arg == "--json") {
            a.json = true;
        } else if (arg == "--profile" || arg == "--log" || arg == "--report" || arg == "--limits") {
            if (!hasValue)
                return UsageError(io, "measure", arg + " needs a value");
            const std::string& value = args[++i];
            if (arg == "--profile")
                a.profile = value;
            else if (arg == "--log")
                a.log = value;
            else if (arg == "--report")
                a.report = value;
            else if (value == "on" || value == "off")
                a.limits = value == "on";
            else
                return UsageError(io, "measure", "--limits takes on or off");
        } else if (arg == "--calibrate") {
            if (!hasValue)
                return UsageError(io, "measure", "--calibrate needs a value");
            a.calibrate = ParseCalibration(args[++i], io);
            if (!a.calibrate)
                return kExitUsage;
        } else if (arg == "--post") {
            a.post = true;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return UsageError(io, "measure", "unknown option " + arg);
        } else {
            a.files.push_back(arg);
        }
    }
    if (a.files.size() != 3)
        return UsageError(io, "measure",
                          "three recordings are needed: sound card, receiver, external");
    if (!a.limits && (!a.log.empty() || !a.report.empty() || a.post))
        return UsageError(io, "measure",
                          "results without limits are never logged, reported or posted: "
                          "--limits off cannot go with --log, --report or --post");
    if (const auto status = CheckProfileExists(io, "measure", a.profile))
        return *status;
    for (const std::string& f : a.files) {
        if (!std::filesystem::is_regular_file(f)) {
            io.err << "zavcli measure: no such file: " << f << "\n";
            return kExitFailed;
        }
    }

    HeadlessModel headless(a.profile, io.err);
    MainModel& m = headless.model();
    if (!a.log.empty())
        m.outputs.TsvFileName = a.log;
    m.options.Verbose = true; // the judgements' messages are printed; prompts are not
    if (m.options.Limits != a.limits)
        m.optionsMenu.toggleLimits();
    headless.recordings.assign(a.files.begin(), a.files.end());

    // Each step runs only when the desktop program would let the operator press it.
    StepVerdict verdicts[3];
    const std::vector<std::string>& shown = headless.dialogs().messages();
    bool unusable = false;
    for (int step = 0; step < 3; ++step) {
        if ((step == 1 && !m.commands.Step2) || (step == 2 && !m.commands.Step3))
            break;
        const std::size_t before = shown.size();
        if (step == 0)
            m.Step1();
        else if (step == 1)
            m.Step2();
        else
            m.Step3();
        verdicts[step].messages.assign(shown.begin() + static_cast<long>(before), shown.end());
        // A step that measured nothing leaves its column empty: no report stands on it.
        if (m.steps.gridMeas.Text(2, step + 1).empty()) {
            if (m.focus == FocusTarget::SetupBox)
                io.err << "zavcli measure: a set-up value of the profile was refused; nothing "
                          "measured\n";
            else
                io.err << "zavcli measure: " << a.files[static_cast<std::size_t>(step)]
                       << " gave no measurement\n";
            unusable = true;
            break;
        }
        verdicts[step].ran = true;
    }
    const bool calculated = !m.steps.gridCalc.Text(9).empty();
    if (unusable)
        return kExitFailed;

    int status = calculated ? kExitOk : kExitFailed;
    if (!a.log.empty()) {
        if (m.commands.recordTsvEnabled)
            m.recordTsv();
        if (m.commands.recordTsvEnabled) { // still enabled: nothing was written
            io.err << "zavcli measure: no data-log row written to " << a.log << "\n";
            status = kExitFailed;
        }
    }
    if (!a.report.empty()) {
        std::string error;
        if (!m.commands.saveTextEnabled) {
            io.err << "zavcli measure: no results to save in " << a.report << "\n";
            status = kExitFailed;
        } else if (!WriteFileAtomically(a.report, SavedTextResults(m.reportSource()), &error)) {
            io.err << "zavcli measure: " << error << "\n";
            status = kExitFailed;
        }
    }

    std::optional<PostOutcome> posted;
    if (a.post) {
        posted = PostObservation(m, io);
        if (posted->status != kExitOk)
            status = kExitFailed;
    }

    const std::string report = TextResults(m.reportSource());
    if (!a.json) {
        // The calibration dialog's figures stand in for the report.
        if (!a.calibrate)
            io.out << report;
        else if (PrintCalibration(m, *a.calibrate, io) != kExitOk)
            status = kExitFailed;
        // The transfer dialog's Message text follows the report.
        if (posted && !posted->Message.empty())
            io.out << posted->Message << "\n";
        return status;
    }
    const FieldStrength& calc = m.steps.lastCalculation;
    std::ostringstream out;
    out << "{\"gridMeas\":" << gridJson(m.steps.gridMeas)
        << ",\"gridCalc\":" << gridJson(m.steps.gridCalc)
        << ",\"yfact\":" << (calc.yfact ? JsonNumber(*calc.yfact) : "null")
        << ",\"Text\":" << (calc.Text ? JsonNumber(*calc.Text) : "null")
        << ",\"MBW\":" << (calc.MBW ? JsonNumber(*calc.MBW) : "null") << P372JsonFields(m);
    if (a.calibrate)
        out << CalibrationJsonField(m, *a.calibrate);
    out << ",\"verdicts\":[";
    for (int step = 0; step < 3; ++step) {
        out << (step ? "," : "") << "{\"ran\":" << (verdicts[step].ran ? "true" : "false")
            << ",\"colours\":[";
        for (int row = 1; row <= 6; ++row)
            out << (row > 1 ? "," : "") << '"' << colourName(m.steps.gridMeas.Colour(row, step + 1))
                << '"';
        out << "],\"messages\":[";
        for (std::size_t i = 0; i < verdicts[step].messages.size(); ++i)
            out << (i ? "," : "") << JsonString(verdicts[step].messages[i]);
        out << "]}";
    }
    out << "],\"report\":" << JsonString(report);
    if (posted)
        out << ",\"transfer\":{\"Message\":" << JsonString(posted->Message)
            << ",\"sent\":" << (posted->status == kExitOk ? "true" : "false") << "}";
    out << "}\n";
    io.out << out.str();
    return status;
}

} // namespace zav
