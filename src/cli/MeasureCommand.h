#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli measure: the three steps and the calculation on three recordings.
int RunMeasure(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
