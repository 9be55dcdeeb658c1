#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli monitor: unattended noise monitoring, one line per observation.
int MonitorCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
