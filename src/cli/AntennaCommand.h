#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli antenna FILE.tab --at MHZ [--at MHZ ...]: loads an antenna file and prints the
// interpolated antenna factor at each frequency, "0.00", one per line.
int AntennaCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
