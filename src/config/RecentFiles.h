#pragma once

#include "platform/Conversions.h"

#include <array>
#include <string>

namespace zav {

// The File menu's recent-profile entries 1..MaxMru (element 0 is not used). An entry shows
// a full path and is visible exactly when that path is not empty.
struct RecentFiles {
    std::array<std::string, MaxMru + 1> Caption;
    std::array<bool, MaxMru + 1> Visible{};
};

} // namespace zav
