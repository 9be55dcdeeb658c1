#pragma once

#include <array>
#include <string>

namespace zav {

// The environments the set-up offers, in list order.
inline constexpr std::array<const char*, 4> kEnvironments = {"Business", "Residential", "Rural",
                                                             "Quiet rural"};

// One observation's set-up, held as the texts the operator sees; numbers are read with
// Number() where they are used. Field names are the ones the window and the profile use.
struct SetupRecord {
    std::string Tester;
    std::string Location;
    std::string lat;         // decimal degrees, north positive; "0.000000" or empty
    std::string lon;         // decimal degrees, east positive
    std::string Environment; // the list's text; empty while nothing is selected
    std::string Frequency;   // MHz, "0.000"
    std::string Receiver;
    std::string Bandwidth; // receiver noise bandwidth, Hz, "0"
    std::string RxNF;      // receiver noise figure, dB, "0.00"
    std::string Antenna;
    std::string AntGain; // dBi, or dB/m with the antenna-factor option, "0.00"
    std::string Feedline;
    std::string Loss;       // feed-line loss, dB, "0.0"
    std::string Attenuator; // dB, "0.0"
    std::string AGC;        // AGC threshold, dB, "0"
    std::string Interval;   // thousands of samples, or milliseconds
    std::string Notes;

    // The loaded antenna file's path, or empty while none is loaded; the profile keeps it.
    std::string AntFileName;

    // The last accepted texts of AGC and Interval: a change is text != tag.
    std::string AGCTag;
    std::string IntervalTag;
};

} // namespace zav
