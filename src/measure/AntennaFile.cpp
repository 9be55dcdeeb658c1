#include "measure/AntennaFile.h"

#include "platform/FileAccess.h"
#include "platform/Number.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace zav {

namespace {

constexpr const char* kTitle = "ZAV Antenna File error:";

// A record is a few dozen characters; a longer line keeps only its start, so that a file
// without line ends cannot fill the memory.
constexpr std::size_t kMaxLineBytes = 4096;

// A table holds at most 100 records; a megabyte leaves room for any comments around them.
constexpr std::size_t kMaxFileBytes = 1024 * 1024;

// Takes the next line, ended by CR LF, LF or a lone CR, off the front of `rest`; false at
// the end of the file.
bool nextLine(std::string_view& rest, std::string& line) {
    if (rest.empty())
        return false;
    const std::size_t end = rest.find_first_of("\r\n");
    line.assign(rest.substr(0, std::min(end, kMaxLineBytes)));
    if (end == std::string_view::npos) {
        rest = {};
        return true;
    }
    const bool crlf = rest[end] == '\r' && end + 1 < rest.size() && rest[end + 1] == '\n';
    rest.remove_prefix(end + (crlf ? 2 : 1));
    return true;
}

bool finiteRow(const AntennaRow& row) {
    return std::isfinite(row[0]) && std::isfinite(row[1]) && std::isfinite(row[2]);
}

// The spline through extreme or infinite values yields NaN or infinity somewhere: such a
// table would put those into every field strength, so it is refused.
bool finiteTable(const std::vector<AntennaRow>& t) {
    for (std::size_t i = 0; i < t.size(); ++i) {
        if (!finiteRow(t[i]))
            return false;
        if (i > 0 && !std::isfinite(csinterpolate(t, (t[i - 1][0] + t[i][0]) / 2)))
            return false;
    }
    return true;
}

// Splits at tabs into at most `maxFields` fields; the last one keeps any further tabs.
std::vector<std::string> splitTabs(const std::string& line, std::size_t maxFields) {
    std::vector<std::string> fields;
    std::size_t from = 0;
    while (fields.size() + 1 < maxFields) {
        const std::size_t tab = line.find('\t', from);
        if (tab == std::string::npos)
            break;
        fields.push_back(line.substr(from, tab - from));
        from = tab + 1;
    }
    fields.push_back(line.substr(from));
    return fields;
}

std::size_t roundHalfEvenMidpoint(std::size_t lo, std::size_t hi) {
    const std::size_t s = lo + hi;
    if (s % 2 == 0)
        return s / 2;
    const std::size_t down = s / 2;
    return down % 2 == 0 ? down : down + 1;
}

} // namespace

AntennaFile ReadAntennaFile(const std::string& path, Dialogs& dialogs, char decimalSeparator) {
    AntennaFile result;
    std::string bytes, reason;
    if (!ReadRegularFile(path, kMaxFileBytes, bytes, &reason)) {
        dialogs.ShowMessage("Error: cannot open antenna file " + path + ": " + reason + ".", kTitle,
                            MessageIcon::Critical);
        return result;
    }
    std::string_view rest = bytes;
    bool failed = false;
    double previous = 0;
    std::string line;
    bool firstLine = true;
    while (nextLine(rest, line)) {
        // Editors on some systems start a UTF-8 file with a byte-order mark; it is no text.
        if (firstLine && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
            line.erase(0, 3);
        firstLine = false;
        if (line.compare(0, 3, "#* ") == 0)
            result.Antenna = line.substr(3);
        // Editors leave lines of blanks or a lone tab where they mean an empty line.
        if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#')
            continue;
        const std::vector<std::string> fields = splitTabs(line, 3);
        if (fields.size() < 2) {
            dialogs.ShowMessage("Bad data record, aborting.", kTitle, MessageIcon::None);
            failed = true;
            break;
        }
        if (result.IntTable.size() == AntennaFile::kMaxRecords) {
            dialogs.ShowMessage("Too many records in Antenna File, discarding excess.", kTitle,
                                MessageIcon::None);
            break;
        }
        const double frequency = Number(fields[0], decimalSeparator);
        if (!(frequency > previous)) {
            dialogs.ShowMessage("Antenna File not sorted, load aborted.", kTitle,
                                MessageIcon::Critical);
            failed = true;
            break;
        }
        result.IntTable.push_back({frequency, Number(fields[1], decimalSeparator), 0.0});
        previous = frequency;
    }
    // Checked whatever ended the reading, so an early failure can bring this message too.
    if (result.IntTable.size() < 3) {
        dialogs.ShowMessage("Not enough records in Antenna File (min=3).", kTitle,
                            MessageIcon::Critical);
        failed = true;
    }
    if (!failed) {
        SplineSecondDerivatives(result.IntTable);
        if (!finiteTable(result.IntTable)) {
            dialogs.ShowMessage("Antenna File values out of range (not finite), load aborted.",
                                kTitle, MessageIcon::Critical);
            failed = true;
        }
    }
    result.Ok = !failed;
    return result;
}

void SplineSecondDerivatives(std::vector<AntennaRow>& t) {
    const std::size_t n = t.size();
    if (n == 0)
        return;
    std::vector<double> u(n, 0.0);
    t[0][2] = 0; // natural ends: no curvature at the first and last point
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double sig = (t[i][0] - t[i - 1][0]) / (t[i + 1][0] - t[i - 1][0]);
        const double p = sig * t[i - 1][2] + 2;
        t[i][2] = (sig - 1) / p;
        u[i] = (6 *
                    ((t[i + 1][1] - t[i][1]) / (t[i + 1][0] - t[i][0]) -
                     (t[i][1] - t[i - 1][1]) / (t[i][0] - t[i - 1][0])) /
                    (t[i + 1][0] - t[i - 1][0]) -
                sig * u[i - 1]) /
               p;
    }
    t[n - 1][2] = 0;
    for (std::size_t k = n - 1; k-- > 0;)
        t[k][2] = t[k][2] * t[k + 1][2] + u[k];
}

double csinterpolate(const std::vector<AntennaRow>& t, double abscissa) {
    if (t.empty())
        return 0;
    if (t.size() == 1)
        return t[0][1];
    std::size_t klo = 0, khi = t.size() - 1;
    while (khi - klo > 1) {
        const std::size_t k = roundHalfEvenMidpoint(klo, khi);
        if (t[k][0] > abscissa)
            khi = k;
        else
            klo = k;
    }
    const double h = t[khi][0] - t[klo][0];
    const float a = static_cast<float>((t[khi][0] - abscissa) / h);
    const double b = (abscissa - t[klo][0]) / h;
    const double ad = a;
    return ad * t[klo][1] + b * t[khi][1] +
           ((std::pow(ad, 3) - ad) * t[klo][2] + (std::pow(b, 3) - b) * t[khi][2]) * (h * h) / 6;
}

} // namespace zav
