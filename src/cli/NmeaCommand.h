#pragma once

#include "cli/CliIo.h"

#include <istream>
#include <string>
#include <vector>

namespace zav {

// zavcli nmea [FILE|-]: every event the NMEA interpreter raises, one per line.
int NmeaCommand(const std::vector<std::string>& args, CliIo& io);

// The lines of a capture as a receiver sent them: split at LF, one CR before it dropped; a
// last line without a line end counts too.
std::vector<std::string> ReadNmeaLines(std::istream& in);

} // namespace zav
