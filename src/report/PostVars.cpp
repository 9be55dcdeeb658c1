#include "report/PostVars.h"

#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"

#include <cctype>
#include <string_view>
#include <utility>

namespace zav {
namespace {

std::string encoded(const std::string& text) {
    return UrlEncode(text, true);
}

} // namespace

std::string PostVars(const ReportSource& s) {
    const SetupRecord& f = s.setup;
    const ResultGrid& calc = s.gridCalc;
    const char sep = s.decimalSeparator;
    // The server reads "." whatever the sender's locale: every number goes out with it.
    const auto number = [sep](const std::string& shown) { return LocaleFreeNumber(shown, sep); };
    std::string out = "Program=ZAV";
    auto item = [&out](const char* key, const std::string& value) {
        out += '&';
        out += key;
        out += '=';
        out += value;
    };
    item("Version", VersionText());
    item("ObsTime", s.observation.ObsTime);
    item("Tester", encoded(f.Tester));
    item("Location", encoded(f.Location));
    item("Environment", encoded(f.Environment));
    item("Frequency", encoded(number(f.Frequency)));
    item("Receiver", encoded(f.Receiver));
    item("Bandwidth", encoded(number(f.Bandwidth)));
    item("MBW", encoded(number(MeasurementBandwidthText(s))));
    item("MeasInt", encoded(Format(s.observation.durationSeconds, "0.000", '.')));
    item("RxNF", encoded(number(f.RxNF)));
    item("Antenna", encoded(f.Antenna));
    item("AntGain", encoded(Format(s.NumAntGain, "0.00", '.')));
    item("AntFact", encoded(Format(s.NumAntFact, "0.00", '.')));
    item("Attenuator", encoded(number(f.Attenuator)));
    item("AGC", encoded(number(f.AGC)));
    item("Loss", encoded(number(f.Loss)));
    const std::pair<const char*, int> calcCells[] = {
        {"RxAvg", 5},   {"RxRms", 9},    {"RxQp", 13},   {"RxPk", 17},
        {"FsAvg", 6},   {"FsRms", 10},   {"FsQp", 14},   {"FsPk", 18},
        {"NormAvg", 7}, {"NormRms", 11}, {"NormQp", 15}, {"NormPk", 19}};
    for (const auto& [key, cell] : calcCells)
        item(key, number(calc.Text(cell)));
    item("QpRms", number(s.gridMeas.Text(23)));
    item("PkRms", number(s.gridMeas.Text(27)));
    item("Notes", encoded(f.Notes));
    if (!s.observation.ObsLat.empty() && !s.observation.ObsLon.empty()) {
        item("Latitude", number(s.observation.ObsLat));
        item("Longitude", number(s.observation.ObsLon));
    }
    return out;
}

std::string TransferAddress(const std::string& URL) {
    auto startsWith = [&URL](std::string_view scheme) {
        if (URL.size() < scheme.size())
            return false;
        for (std::size_t i = 0; i < scheme.size(); ++i)
            if (std::tolower(static_cast<unsigned char>(URL[i])) != scheme[i])
                return false;
        return true;
    };
    if (startsWith("http://") || startsWith("https://"))
        return URL;
    return "http://" + URL;
}

} // namespace zav
