#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli export gnuplot|table FILE.wav [OUT] [--title TITLE]: the gnuplot script or the
// clipboard's sample table of a recording, to OUT or standard output. The step title is
// "External Noise" unless --title names another; ObsTime is the file's modification time.
int ExportCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
