#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// The sound-card helper's entry: runs the commands that need the audio devices (args[0] names
// the command), with zavcli's usage rules and help texts.
int RunSoundCardCli(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
