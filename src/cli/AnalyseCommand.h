#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli analyse FILE.wav [--frequency MHZ] [--json]: the header check and the four detectors
// on a recording, as one measurement step runs them after recording.
int AnalyseCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
