#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli monitor-summary: count, minimum, median and maximum of a data-log column per
// frequency and hour.
int MonitorSummaryCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
