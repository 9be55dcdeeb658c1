#include "report/TextReport.h"

#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Version.h"

namespace zav {

bool HasResults(const ReportSource& s) {
    for (int row = 1; row < s.gridCalc.Rows(); ++row)
        for (int column = 1; column < s.gridCalc.Columns(); ++column)
            if (!s.gridCalc.Text(row, column).empty())
                return true;
    return false;
}

std::string MeasurementBandwidthText(const ReportSource& s) {
    const double bandwidthHz = Number(s.setup.Bandwidth, s.decimalSeparator);
    if (!(bandwidthHz > 0))
        return {};
    return Format(10.0 * std::log(bandwidthHz) / LogTen, "0.00", s.decimalSeparator);
}

std::string TextResults(const ReportSource& s) {
    const SetupRecord& f = s.setup;
    const ResultGrid& calc = s.gridCalc;
    const char sep = s.decimalSeparator;
    std::string out;
    auto item = [&out](const char* label, const std::string& value) {
        out += label;
        out += '\t';
        out += value;
        out += "\r\n";
    };
    item("Program", "ZAV");
    item("Version", VersionText());
    item("ObsTime", s.observation.ObsTime);
    item("Tester", f.Tester);
    item("Location", f.Location);
    item("Latitude", s.observation.ObsLat);
    item("Longitude", s.observation.ObsLon);
    item("Environment", f.Environment);
    item("Frequency (MHz)", f.Frequency);
    item("Receiver", f.Receiver);
    item("Bandwidth (Hz)", f.Bandwidth);
    item("MBW (dB)", MeasurementBandwidthText(s));
    item("Measurement Interval (s)", Format(s.observation.durationSeconds, "0.000", sep));
    item("Receiver Noise Figure (dB)", f.RxNF);
    item("Antenna", f.Antenna);
    item("Antenna Gain (dBi)", Format(s.NumAntGain, "0.00", sep));
    item("Antenna Factor (dB/m)", Format(s.NumAntFact, "0.00", sep));
    item("Attenuator (dB)", f.Attenuator);
    item("AGC threshold (dB)", f.AGC);
    item("Feed line", f.Feedline);
    item("Other loss (dB)", f.Loss);
    item("Avg Rx power (dBm)", calc.Text(5));
    item("RMS Rx power (dBm)", calc.Text(9));
    item("QP Rx power (dBm)", calc.Text(13));
    item("Pk Rx power (dBm)", calc.Text(17));
    item("Avg FS (dBuV/m)", calc.Text(6));
    item("RMS FS (dBuV/m)", calc.Text(10));
    item("QP FS (dBuV/m)", calc.Text(14));
    item("Pk FS (dBuV/m)", calc.Text(18));
    item("Norm Avg FS (dBuV/m)", calc.Text(7));
    item("Norm RMS FS (dBuV/m)", calc.Text(11));
    item("Norm QP FS (dBuV/m)", calc.Text(15));
    item("Norm Pk FS (dBuV/m)", calc.Text(19));
    item("QP/RMS Ratio (dB)", s.gridMeas.Text(23));
    item("Pk/RMS Ratio (dB)", s.gridMeas.Text(27));
    out += "\r\nNotes:\r\n";
    out += f.Notes;
    out += "\r\n";
    return out;
}

std::string SavedTextResults(const ReportSource& source) {
    return TextResults(source) + "\r\n";
}

std::string EmailTextResults(const ReportSource& source) {
    return TextResults(source) + "--\r\n";
}

std::string EmailSubject(const Observation& observation) {
    return "### ZAV report ### " + observation.ObsTime;
}

} // namespace zav
