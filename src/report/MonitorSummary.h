#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zav {

// One hour of one frequency: how many readings and their spread.
struct HourSummary {
    int hour = 0; // 0..23, the hour of ObsTime as logged (local time)
    int n = 0;
    double min = 0, median = 0, max = 0;
};

struct FrequencySummary {
    double frequencyMHz = 0;
    std::vector<HourSummary> hours; // in hour order, hours without a reading left out
};

struct LogSummary {
    std::string column;
    std::vector<FrequencySummary> frequencies; // in frequency order
    int skippedRows = 0; // rows without a frequency, a time or a number in the column
};

// The RMS field strength: what a survey campaign reports by default.
inline constexpr const char* kDefaultSummaryColumn = "FsRms";

// Reads a data log (tab-separated, header row of keys, CR LF or LF; "." or "," as the decimal
// separator) and summarises `column` per frequency and hour. Nothing, and `error`, when the
// text has no such column.
std::optional<LogSummary> SummariseDataLog(std::string_view text, const std::string& column,
                                           std::string* error);

// The median of the values (the mean of the middle two for an even count); 0 when empty.
double Median(std::vector<double> values);

} // namespace zav
