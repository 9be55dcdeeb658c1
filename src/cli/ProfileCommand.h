#pragma once

#include "cli/CliIo.h"

#include <string>
#include <vector>

namespace zav {

// zavcli profile P.zav [--json]: loads a profile as the desktop program opens it and prints
// every set-up field, option and transfer setting, key<TAB>value in the profile's own order
// and key names, with the texts the boxes would show.
int ProfileCommand(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
