#include "cli/MonitorSummaryCommand.h"

#include "cli/Commands.h"
#include "cli/Json.h"
#include "platform/Format.h"
#include "report/MonitorSummary.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace zav {
namespace {

// A data log of 500 readings on 5 frequencies is 150 kB; years of them stay far below this.
constexpr std::uintmax_t kMaxLogBytes = 512ull * 1024 * 1024;

std::string json(const LogSummary& s) {
    std::string out = "{\"column\": " + JsonString(s.column) + ", \"frequencies\": [";
    for (std::size_t i = 0; i < s.frequencies.size(); ++i) {
        const FrequencySummary& f = s.frequencies[i];
        out += (i ? ", " : "") + std::string("{\"MHz\": ") + JsonNumber(f.frequencyMHz) +
               ", \"hours\": [";
        for (std::size_t j = 0; j < f.hours.size(); ++j) {
            const HourSummary& h = f.hours[j];
            out += (j ? ", " : "") + std::string("{\"hour\": ") + std::to_string(h.hour) +
                   ", \"n\": " + std::to_string(h.n) + ", \"min\": " + JsonNumber(h.min) +
                   ", \"median\": " + JsonNumber(h.median) + ", \"max\": " + JsonNumber(h.max) +
                   "}";
        }
        out += "]}";
    }
    return out + "]}\n";
}

std::string table(const LogSummary& s) {
    std::string out = "MHz\thour\tn\tmin\tmedian\tmax\t(" + s.column + ")\n";
    for (const FrequencySummary& f : s.frequencies) {
        for (const HourSummary& h : f.hours) {
            out += Format(f.frequencyMHz, "0.000") + "\t" + (h.hour < 10 ? "0" : "") +
                   std::to_string(h.hour) + "\t" + std::to_string(h.n) + "\t" +
                   Format(h.min, "0.00") + "\t" + Format(h.median, "0.00") + "\t" +
                   Format(h.max, "0.00") + "\n";
        }
    }
    return out;
}

} // namespace

int MonitorSummaryCommand(const std::vector<std::string>& args, CliIo& io) {
    std::string column = kDefaultSummaryColumn, path;
    bool asJson = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--json") {
            asJson = true;
        } else if (args[i] == "--column") {
            if (i + 1 >= args.size() || args[i + 1].empty())
                return UsageError(io, "monitor-summary", "--column needs a header key");
            column = args[++i];
        } else if (args[i].size() > 1 && args[i][0] == '-') {
            return UsageError(io, "monitor-summary", "unknown option " + args[i]);
        } else if (path.empty()) {
            path = args[i];
        } else {
            return UsageError(io, "monitor-summary", "one data log only");
        }
    }
    if (path.empty())
        return UsageError(io, "monitor-summary", "no data log given");

    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        io.err << "zavcli monitor-summary: " << path << " is not a readable file\n";
        return kExitFailed;
    }
    if (std::filesystem::file_size(path, ec) > kMaxLogBytes) {
        io.err << "zavcli monitor-summary: " << path << " is too large for a data log\n";
        return kExitFailed;
    }
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    if (!in && !in.eof()) {
        io.err << "zavcli monitor-summary: " << path << " cannot be read\n";
        return kExitFailed;
    }
    std::string error;
    const auto summary = SummariseDataLog(text.str(), column, &error);
    if (!summary) {
        io.err << "zavcli monitor-summary: " << path << ": " << error << "\n";
        return kExitFailed;
    }
    if (summary->frequencies.empty()) {
        io.err << "zavcli monitor-summary: " << path << ": no row has a number in " << column
               << "\n";
        return kExitFailed;
    }
    if (summary->skippedRows > 0)
        io.err << "zavcli monitor-summary: " << summary->skippedRows << " rows without a number in "
               << column << " left out\n";
    io.out << (asJson ? json(*summary) : table(*summary));
    return kExitOk;
}

} // namespace zav
