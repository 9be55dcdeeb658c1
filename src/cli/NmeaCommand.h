#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli nmea [FILE|-]: every event the NMEA interpreter raises, one per line.
int NmeaCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
