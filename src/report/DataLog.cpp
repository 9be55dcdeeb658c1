#include "report/DataLog.h"

#include "platform/Format.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"

#include <cstdio>
#include <vector>

namespace zav {

std::string DataLogHeader() {
    static constexpr const char* kKeys[] = {
        "Program",     "Version",   "ObsTime",  "Tester",     "Location", "Latitude", "Longitude",
        "Environment", "Frequency", "Receiver", "Bandwidth",  "MBW",      "MeasInt",  "RxNF",
        "Antenna",     "AntGain",   "AntFact",  "Attenuator", "AGC",      "Loss",     "RxRms",
        "RxQp",        "RxPk",      "FsRms",    "FsQp",       "FsPk",     "NormRms",  "NormQp",
        "NormPk",      "QpRms",     "PkRms",    "Notes"};
    std::string header;
    for (const char* key : kKeys) {
        header += key;
        header += '\t';
    }
    return header + "\r\n";
}

std::string DataLogRow(const ReportSource& s) {
    const SetupRecord& f = s.setup;
    const ResultGrid& calc = s.gridCalc;
    const char sep = s.decimalSeparator;
    const std::vector<std::string> values = {
        "ZAV",
        VersionText(),
        s.observation.ObsTime,
        f.Tester,
        f.Location,
        s.observation.ObsLat,
        s.observation.ObsLon,
        f.Environment,
        f.Frequency,
        f.Receiver,
        f.Bandwidth,
        MeasurementBandwidthText(s),
        Format(s.observation.durationSeconds, "0.000", sep),
        f.RxNF,
        f.Antenna,
        Format(s.NumAntGain, "0.00", sep),
        Format(s.NumAntFact, "0.00", sep),
        f.Attenuator,
        f.AGC,
        f.Loss,
        calc.Text(9),
        calc.Text(13),
        calc.Text(17),
        calc.Text(10),
        calc.Text(14),
        calc.Text(18),
        calc.Text(11),
        calc.Text(15),
        calc.Text(19),
        s.gridMeas.Text(23),
        s.gridMeas.Text(27),
        UrlEncode(f.Notes, true),
    };
    std::string row;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            row += '\t';
        row += values[i];
    }
    return row + "\r\n";
}

bool AppendDataLog(const std::string& path, const ReportSource& source) {
    std::FILE* file = std::fopen(path.c_str(), "ab");
    if (!file)
        return false;
    bool ok = std::fseek(file, 0, SEEK_END) == 0;
    const long length = ok ? std::ftell(file) : -1;
    if (length >= 0) {
        const std::string text =
            (length == 0 ? DataLogHeader() : std::string()) + DataLogRow(source);
        ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        ok = std::fflush(file) == 0 && ok;
    } else {
        ok = false;
    }
    return std::fclose(file) == 0 && ok;
}

} // namespace zav
