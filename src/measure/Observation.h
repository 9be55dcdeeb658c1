#pragma once

#include <ctime>
#include <string>

namespace zav {

// The stamp of the last recording: identifies the observation in every output.
struct Observation {
    std::string ObsTime;          // "yyyymmddhhmmss" local time; empty after a failed recording
    std::string ObsLat;           // latitude at recording time, "00.000000", or empty
    std::string ObsLon;           // longitude likewise
    double durationSeconds = 0.0; // samples / sample rate of the recording
    bool positionFrozen = false;  // set by the first output; a new recording clears it
};

// The observation time stamp: local date and time as yyyymmddhhmmss, 24-hour clock.
std::string FormatObsTime(std::time_t time);

// A position field's text as stored with the observation: empty stays empty, a number is
// formatted "00.000000".
std::string FormatObsCoordinate(const std::string& fieldText, char decimalSeparator);

} // namespace zav
