#include "report/MonitorSummary.h"

#include "platform/Number.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace zav {
namespace {

std::vector<std::string_view> splitTabs(std::string_view line) {
    std::vector<std::string_view> cells;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = line.find('\t', start);
        cells.push_back(line.substr(start, tab == std::string_view::npos ? tab : tab - start));
        if (tab == std::string_view::npos)
            return cells;
        start = tab + 1;
    }
}

// A number written with "." or with ",".
std::optional<double> readNumber(std::string_view text) {
    for (char sep : {'.', ','}) {
        if (IsNumber(text, sep)) {
            const double v = Number(text, sep);
            if (std::isfinite(v))
                return v;
        }
    }
    return std::nullopt;
}

} // namespace

double Median(std::vector<double> values) {
    if (values.empty())
        return 0;
    const std::size_t mid = values.size() / 2;
    std::nth_element(values.begin(), values.begin() + static_cast<long>(mid), values.end());
    const double upper = values[mid];
    if (values.size() % 2 == 1)
        return upper;
    const double lower = *std::max_element(values.begin(), values.begin() + static_cast<long>(mid));
    return (lower + upper) / 2;
}

std::optional<LogSummary> SummariseDataLog(std::string_view text, const std::string& column,
                                           std::string* error) {
    std::size_t pos = 0;
    auto nextLine = [&](std::string_view& line) {
        if (pos >= text.size())
            return false;
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos)
            end = text.size();
        line = text.substr(pos, end - pos);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        pos = end + 1;
        return true;
    };
    std::string_view header;
    if (!nextLine(header)) {
        *error = "the data log is empty";
        return std::nullopt;
    }
    const std::vector<std::string_view> keys = splitTabs(header);
    auto indexOf = [&](std::string_view key) -> std::optional<std::size_t> {
        for (std::size_t i = 0; i < keys.size(); ++i)
            if (keys[i] == key)
                return i;
        return std::nullopt;
    };
    const auto frequency = indexOf("Frequency"), time = indexOf("ObsTime"), value = indexOf(column);
    if (!frequency || !time) {
        *error = "this is not a data log: no Frequency or ObsTime column";
        return std::nullopt;
    }
    if (!value) {
        *error = "the data log has no column " + column;
        return std::nullopt;
    }

    std::map<double, std::map<int, std::vector<double>>> readings;
    LogSummary summary;
    summary.column = column;
    std::string_view line;
    while (nextLine(line)) {
        if (line.empty())
            continue;
        const std::vector<std::string_view> cells = splitTabs(line);
        const std::size_t needed = std::max({*frequency, *time, *value});
        std::optional<double> f, v;
        int hour = -1;
        if (cells.size() > needed) {
            f = readNumber(cells[*frequency]);
            v = readNumber(cells[*value]);
            const std::string_view t = cells[*time];
            if (t.size() == 14 &&
                std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }))
                hour = (t[8] - '0') * 10 + (t[9] - '0');
        }
        if (!f || !v || hour < 0 || hour > 23) {
            ++summary.skippedRows;
            continue;
        }
        // Frequencies as logged ("7.000", "7,000") meet on the kHz.
        readings[std::round(*f * 1000) / 1000][hour].push_back(*v);
    }
    for (auto& [mhz, hours] : readings) {
        FrequencySummary fs;
        fs.frequencyMHz = mhz;
        for (auto& [hour, values] : hours) {
            HourSummary h;
            h.hour = hour;
            h.n = static_cast<int>(values.size());
            h.min = *std::min_element(values.begin(), values.end());
            h.max = *std::max_element(values.begin(), values.end());
            h.median = Median(values);
            fs.hours.push_back(h);
        }
        summary.frequencies.push_back(std::move(fs));
    }
    return summary;
}

} // namespace zav
