#include "cli/AnalyseCommand.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "cli/Json.h"
#include "measure/BinaryFile.h"
#include "measure/WaveAnalysis.h"
#include "measure/WaveHeader.h"
#include "platform/Number.h"
#include "platform/SilentDialogs.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <sstream>

namespace zav {

namespace {

constexpr double kDefaultFrequencyMHz = 7.0;
constexpr double kProgressAboveSeconds = 5.0;

std::string significant9(double v) {
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 9);
    return std::string(buf, r.ptr);
}

} // namespace

int AnalyseCommand(const std::vector<std::string>& args, CliIo& io) {
    std::string path;
    double frequencyMHz = kDefaultFrequencyMHz;
    bool json = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--json") {
            json = true;
        } else if (a == "--frequency") {
            if (i + 1 >= args.size() || !IsNumber(args[i + 1]))
                return UsageError(io, "analyse", "--frequency needs a number of MHz");
            frequencyMHz = Number(args[++i]);
        } else if (a.size() > 1 && a[0] == '-') {
            return UsageError(io, "analyse", "unknown option \"" + a + "\"");
        } else if (path.empty()) {
            path = a;
        } else {
            return UsageError(io, "analyse", "one file only");
        }
    }
    if (path.empty())
        return UsageError(io, "analyse", "no file given");

    WaveInfo info;
    {
        BinaryFile probe;
        if (!probe.Open(path)) {
            io.err << "zavcli analyse: cannot open " << path << ": " << probe.OpenError() << "\n";
            return kExitFailed;
        }
        SilentDialogs silent;
        info = ReadWaveHeader(probe, silent);
    }
    std::function<void(double)> progress;
    int shown = -1;
    if (io.errIsTerminal && info.SampleRate > 0 &&
        info.Samples > kProgressAboveSeconds * info.SampleRate) {
        progress = [&](double fraction) {
            const int percent = static_cast<int>(fraction * 100);
            if (percent != shown) {
                shown = percent;
                io.err << "\ranalysing " << path << ": " << percent << "%" << std::flush;
            }
        };
    }

    CliDialogs dialogs(io.err);
    Measurement m;
    const bool ok = AnalyseWave(path, frequencyMHz, m, dialogs, info, progress);
    if (shown >= 0)
        io.err << "\r\033[K" << std::flush;
    if (!ok) {
        if (dialogs.messages().empty())
            io.err << "zavcli analyse: " << path << ": no samples to analyse (sample rate "
                   << info.SampleRate << ", " << info.Samples << " samples)\n";
        return kExitFailed;
    }

    const std::pair<const char*, double> fields[] = {
        {"Avg", m.Avg},     {"Ms", m.Ms},         {"Rms", m.Rms},
        {"QP", m.QP},       {"Pk", m.Pk},         {"QpRms", m.QpRms},
        {"PkRms", m.PkRms}, {"AvgRms", m.AvgRms}, {"ClipFlag", m.ClipFlag}};
    std::ostringstream out;
    if (json) {
        out << "{\"SampleRate\":" << info.SampleRate << ",\"Samples\":" << info.Samples;
        for (const auto& [name, value] : fields)
            out << ",\"" << name << "\":" << JsonNumber(value);
        out << "}\n";
    } else {
        out << "SampleRate\t" << info.SampleRate << "\nSamples\t" << info.Samples << "\n";
        for (const auto& [name, value] : fields)
            out << name << "\t" << significant9(value) << "\n";
    }
    io.out << out.str();
    return kExitOk;
}

} // namespace zav
