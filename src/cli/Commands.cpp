#include "cli/Commands.h"

#include <filesystem>

#include "cli/AnalyseCommand.h"
#include "cli/AntennaCommand.h"
#include "cli/ExportCommand.h"
#include "cli/GpsCommand.h"
#include "cli/MeasureCommand.h"
#include "cli/MonitorSummaryCommand.h"
#include "cli/NmeaCommand.h"
#include "cli/ProfileCommand.h"
#include "cli/SoundCardHelper.h"
#include "cli/UpdateCommand.h"

#include <algorithm>

namespace zav {
namespace {

int printHelp(const std::vector<std::string>& args, CliIo& io);

const std::vector<Command> kCommands = {
    {"help", "zavcli help [COMMAND]", "Lists the commands, or describes one.", printHelp},
    {"analyse", "zavcli analyse FILE.wav [--frequency MHZ] [--json]",
     "Runs the WAVE reader and the four detectors on FILE as one measurement step does.",
     AnalyseCommand},
    {"measure",
     "zavcli measure [--profile P.zav] [--limits on|off] [--log FILE.tab] [--report FILE.txt] "
     "[--post] [--calibrate carrier:DBM|density:DBMHZ|enr:DB] [--json] SOUNDCARD.wav RECEIVER.wav "
     "EXTERNAL.wav",
     "The three steps and the field-strength calculation on three recordings; prints the "
     "text report.",
     RunMeasure},
    {"monitor",
     "zavcli monitor [--profile P.zav] [--frequencies 3.5,5.3,7.0] [--every 10m] "
     "[--count N | --until TIME] [--rig MODEL --rig-port PORT] [--device NAME] [--mode MODE] "
     "[--settle MS] [--log FILE.tab] [--step1 FILE.wav --step2 FILE.wav ...] [--step3 FILE.wav]",
     "Unattended monitoring: steps 1 and 2 once (step 2 at every frequency), then step 3 on "
     "every frequency each cycle; each observation whose verdict passes is logged and posted "
     "and printed as one line. Ctrl-C ends the run between rows.",
     [](const std::vector<std::string>& args, CliIo& io) {
         return RunInSoundCardHelper("monitor", args, io);
     }},
    {"monitor-summary", "zavcli monitor-summary LOG.tab [--column KEY] [--json]",
     "Count, minimum, median and maximum of a data-log column (the RMS field strength by "
     "default) per frequency and hour of ObsTime.",
     MonitorSummaryCommand},
    {"record",
     "zavcli record OUT.wav [--profile P.zav] [--interval N] [--device NAME] | "
     "zavcli record --list-devices",
     "Records one measurement interval through the audio input as a step does (the template "
     "ZAV.wav, the settling second, the trimming) and prints the file, rate, samples kept and "
     "the stream's start-up in ms; --list-devices lists the inputs.",
     [](const std::vector<std::string>& args, CliIo& io) {
         return RunInSoundCardHelper("record", args, io);
     }},
    {"profile", "zavcli profile P.zav [--json]",
     "Loads a profile as the desktop program opens it and prints every setting.", ProfileCommand},
    {"antenna", "zavcli antenna FILE.tab --at MHZ [--at MHZ ...]",
     "Loads an antenna file and prints the interpolated factor at each frequency.", AntennaCommand},
    {"nmea", "zavcli nmea [FILE|-]", "Prints every event the NMEA interpreter raises.",
     NmeaCommand},
    {"gps",
     "zavcli gps (--device PORT | --file FILE) [--acc METRES] [--speed BAUD] "
     "[--timeout SECONDS]",
     "Captures an averaged position as the \"Get Position\" dialog does.", GpsCommand},
    {"update", "zavcli update [--base-url URL]", "Runs the update check.", UpdateCommand},
    {"export", "zavcli export gnuplot|table FILE.wav [OUT] [--title TITLE]",
     "Writes the gnuplot script or the sample table of a recording.", ExportCommand},
};

const Command* find(const std::string& name) {
    auto it = std::find_if(kCommands.begin(), kCommands.end(),
                           [&](const Command& c) { return name == c.name; });
    return it == kCommands.end() ? nullptr : &*it;
}

void describe(const Command& c, std::ostream& out) {
    out << "usage: " << c.synopsis << "\n  " << c.description << "\n";
    if (!c.run)
        out << "  (not yet available)\n";
}

int printHelp(const std::vector<std::string>& args, CliIo& io) {
    if (!args.empty()) {
        const Command* c = find(args[0]);
        if (!c) {
            io.err << "zavcli: unknown command \"" << args[0] << "\"\n";
            return kExitUsage;
        }
        describe(*c, io.out);
        return kExitOk;
    }
    io.out << "zavcli: ZAV without a window.\n\nCommands:\n";
    for (const Command& c : kCommands) {
        io.out << "  " << c.synopsis << "\n      " << c.description;
        if (!c.run)
            io.out << " (not yet available)";
        io.out << "\n";
    }
    io.out << "\nExit status: 0 success, 1 the work failed, 2 bad usage.\n";
    return kExitOk;
}

} // namespace

const std::vector<Command>& Commands() {
    return kCommands;
}

int UsageError(CliIo& io, const std::string& command, const std::string& why) {
    if (!why.empty())
        io.err << "zavcli " << command << ": " << why << "\n";
    if (const Command* c = find(command))
        io.err << "usage: " << c->synopsis << "\n";
    return kExitUsage;
}

std::optional<int> CheckProfileExists(CliIo& io, const std::string& command,
                                      const std::string& path) {
    std::error_code ec;
    if (path.empty() || std::filesystem::is_regular_file(
                            std::filesystem::path(std::u8string(path.begin(), path.end())), ec))
        return std::nullopt;
    io.err << "zavcli " << command << ": no such profile: " << path << "\n";
    return kExitUsage;
}

int RunCli(const std::vector<std::string>& args, CliIo& io) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h")
        return printHelp({}, io);
    const Command* c = find(args[0]);
    if (!c) {
        io.err << "zavcli: unknown command \"" << args[0] << "\"; see zavcli help\n";
        return kExitUsage;
    }
    std::vector<std::string> rest(args.begin() + 1, args.end());
    if (std::find(rest.begin(), rest.end(), "--help") != rest.end()) {
        describe(*c, io.out);
        return kExitOk;
    }
    if (!c->run) {
        io.err << "zavcli: " << c->name << " is not yet available in this build\n";
        return kExitUsage;
    }
    return c->run(rest, io);
}

} // namespace zav
