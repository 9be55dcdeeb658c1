#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// The name of the program that runs the commands needing the sound card. zavcli itself
// loads no GUI library (Qt Multimedia pulls in Qt Gui), so those commands live in this
// helper, which zavcli replaces itself with when one of them is asked for.
inline constexpr const char* kSoundCardHelperName = "zavcli-audio";

// Where the helper is for a zavcli in `programDir`: beside it in the build tree, or in
// ../libexec/zav when installed. Empty when neither exists.
std::string SoundCardHelperPath(const std::string& programDir);

// Runs `command` with `args` in the helper, which takes over this process (its output, its
// signals, its exit status). Returns only when the helper cannot be started.
int RunInSoundCardHelper(const std::string& command, const std::vector<std::string>& args,
                         CliIo& io);

} // namespace zav
