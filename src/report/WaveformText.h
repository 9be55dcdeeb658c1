#pragma once

#include "report/WaveSampleReader.h"

#include <ostream>
#include <string>

namespace zav {

// The title every view of a recording carries: "ZAV: ", the step's title, a blank, ObsTime.
std::string WaveTitle(const std::string& stepTitle, const std::string& obsTime);

// A gnuplot script holding the samples as an inline data block, then the commands that plot
// them (CR LF line ends). The time of sample k is k steps of 1 / rate added up from 0; each
// line holds the time and the normalised voltage in shortest round-trip form. Reads the
// samples as it writes, so the memory used does not grow with the recording. False when the
// stream failed.
bool WriteGnuplotScript(WaveSampleReader& samples, const std::string& stepTitle,
                        const std::string& obsTime, std::ostream& out);

// The two-column table: "Time", tab, "NormalisedVoltage", then per sample the time and the
// normalised voltage formatted "0.000000", tab-separated, CR LF line ends. False when the
// stream failed.
bool WriteSampleTable(WaveSampleReader& samples, std::ostream& out, char decimalSeparator = '.');

} // namespace zav
