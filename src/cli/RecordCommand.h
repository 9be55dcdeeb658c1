#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli record OUT.wav [--profile P.zav] [--interval N] [--device NAME] [--list-devices]:
// one measurement interval through the real audio input, recorded and trimmed exactly as a
// step records it.
int RecordCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
