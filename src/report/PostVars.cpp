#include "report/PostVars.h"

#include "platform/Format.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"

#include <cctype>
#include <string_view>

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
    item("Frequency", encoded(f.Frequency));
    item("Receiver", encoded(f.Receiver));
    item("Bandwidth", encoded(f.Bandwidth));
    item("MBW", encoded(MeasurementBandwidthText(s)));
    item("MeasInt", encoded(Format(s.observation.durationSeconds, "0.000", sep)));
    item("RxNF", encoded(f.RxNF));
    item("Antenna", encoded(f.Antenna));
    item("AntGain", encoded(Format(s.NumAntGain, "0.00", sep)));
    item("AntFact", encoded(Format(s.NumAntFact, "0.00", sep)));
    item("Attenuator", encoded(f.Attenuator));
    item("AGC", encoded(f.AGC));
    item("Loss", encoded(f.Loss));
    item("RxAvg", calc.Text(5));
    item("RxRms", calc.Text(9));
    item("RxQp", calc.Text(13));
    item("RxPk", calc.Text(17));
    item("FsAvg", calc.Text(6));
    item("FsRms", calc.Text(10));
    item("FsQp", calc.Text(14));
    item("FsPk", calc.Text(18));
    item("NormAvg", calc.Text(7));
    item("NormRms", calc.Text(11));
    item("NormQp", calc.Text(15));
    item("NormPk", calc.Text(19));
    item("QpRms", s.gridMeas.Text(23));
    item("PkRms", s.gridMeas.Text(27));
    item("Notes", encoded(f.Notes));
    if (!s.observation.ObsLat.empty() && !s.observation.ObsLon.empty()) {
        item("Latitude", s.observation.ObsLat);
        item("Longitude", s.observation.ObsLon);
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
