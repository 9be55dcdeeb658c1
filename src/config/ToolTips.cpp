#include "config/ToolTips.h"

#include <map>

namespace zav {

std::string SetupFieldTip(SetupField field, bool antennaFactor, bool samples) {
    switch (field) {
    case SetupField::Tester:
        return "Who made the observation: a name or call sign, in the report and the data log";
    case SetupField::Location:
        return "Where the observation was made, in words";
    case SetupField::lat:
        return "Latitude of the site in degrees, north positive (-90 to 90); may stay empty";
    case SetupField::lon:
        return "Longitude of the site in degrees, east positive (-180 to 180); may stay empty";
    case SetupField::Environment:
        return "The kind of site, for the comparison with the ITU-R P.372 man-made noise "
               "curves: Business, Residential, Rural or Quiet rural";
    case SetupField::Frequency:
        return "Frequency the receiver is tuned to, MHz (0.1 to 10000)";
    case SetupField::Receiver:
        return "The receiver's make, model and mode, in words";
    case SetupField::Bandwidth:
        return "The receiver's noise bandwidth, Hz (more than 0, at most 200000)";
    case SetupField::RxNF:
        return "The receiver's noise figure, dB (0 or more); CalibrateRx measures it";
    case SetupField::Antenna:
        return "The antenna, in words";
    case SetupField::AntGain:
        return antennaFactor
                   ? "Antenna factor, dB/m: field strength over terminal voltage; double-click "
                     "the caption for gain instead"
                   : "Antenna gain, dBi (negative for a small or lossy antenna); double-click "
                     "the caption for an antenna factor instead";
    case SetupField::Feedline:
        return "The feed line between antenna and receiver, in words";
    case SetupField::Loss:
        return "Loss of the feed line at this frequency, dB (0 or more)";
    case SetupField::Attenuator:
        return "Attenuation switched in ahead of the receiver, dB (0 or more)";
    case SetupField::AGC:
        return "AGC threshold, dB (10 or more): how far the external noise may differ from the "
               "receiver's own before the receiver's automatic gain control would change its "
               "gain between the two readings. Turn the AGC off where the receiver allows";
    case SetupField::Interval:
        return samples ? "Length of each recording in thousands of samples (k): 8, 16, 32, 64, "
                         "128 or 256; double-click the caption for milliseconds"
                       : "Length of each recording, ms (500 to 10000); double-click the caption "
                         "for samples";
    case SetupField::Notes:
        return "Free notes for the report and the data log; double-click copies them";
    }
    return {};
}

std::string GridHeadingTip(const std::string& heading) {
    static const std::map<std::string, std::string> tips = {
        {"Sound card", "Step 1: the sound card's own noise, receiver off"},
        {"Receiver", "Step 2: the receiver's own noise, its input terminated"},
        {"External", "Step 3: the noise from the antenna"},
        {"Avg (V)", "Average detector, volts of full scale (1.0), reading a steady sine's RMS"},
        {"RMS (V)", "Root-mean-square voltage, volts of full scale (1.0)"},
        {"QP (V)", "QP: quasi-peak detector as for interference measurements, volts of full "
                   "scale (1.0), reading a steady sine's RMS"},
        {"Pk (V)", "Peak detector, volts of full scale (1.0), reading a steady sine's RMS; above "
                   "0.700 the recording clips"},
        {"QP/RMS (dB)", "Quasi-peak over RMS, dB: how impulsive the noise is"},
        {"Pk/RMS (dB)", "Peak over RMS (crest factor), dB: random noise reads about 10 to 12"},
        {"Detector", "Which detector the row's results use"},
        {"Avg", "Results of the average detector"},
        {"RMS", "Results of the RMS detector: the noise power"},
        {"QP", "Results of the quasi-peak detector"},
        {"Pk", "Results of the peak detector"},
        {"Rx (dBm)", "External noise power at the receiver's input, dBm in the receiver's "
                     "bandwidth"},
        {"FS (dBuV/m)", "Field strength at the antenna, dB above 1 microvolt per metre, in the "
                        "receiver's bandwidth (MBW: measurement bandwidth)"},
        {"Normalised FS (dBuV/m)",
         "Field strength normalised to a 1 Hz bandwidth, dB above 1 microvolt per metre, for "
         "comparing observations made with different bandwidths"},
    };
    const auto it = tips.find(heading);
    return it == tips.end() ? std::string() : it->second;
}

std::string P372FigureTip(const std::string& caption) {
    static const std::map<std::string, std::string> tips = {
        {"Fa (dB above kT0b)",
         "External noise factor Fa, dB: the external noise power over the thermal noise kT0b "
         "of the receiver's bandwidth b at T0 = 290 K"},
        {"Median man-made noise",
         "Median man-made noise of the chosen environment at this frequency from ITU-R P.372, "
         "dB above kT0b"},
        {"Difference (dB)", "Fa less the environment's median, dB: positive is noisier"},
        {"Falls", "Where Fa falls against the environment's spread between its lower and upper "
                  "deciles, dB"},
        {"Galactic median (dB)",
         "Median galactic noise at this frequency from ITU-R P.372, dB above kT0b: the floor a "
         "quiet site reaches below about 30 MHz"},
    };
    const auto it = tips.find(caption);
    return it == tips.end() ? std::string() : it->second;
}

} // namespace zav
