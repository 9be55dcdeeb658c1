#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli gps (--device PORT | --file FILE) [--acc METRES] [--speed BAUD] [--timeout SECONDS]:
// an averaged position captured by the rules of the "Get Position" dialog.
int GpsCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
