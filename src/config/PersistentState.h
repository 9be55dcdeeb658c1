#pragma once

#include "config/GpsSettings.h"
#include "config/RecentFiles.h"
#include "config/SiteAddress.h"
#include "config/TransferSettings.h"

#include <string>

namespace zav {

// What the main window keeps between runs besides the set-up record and the options: the
// current profile, the transfer account, the GPS settings, the recent list and the web site.
struct PersistentState {
    std::string CurrentDir;          // with a trailing separator; where profile dialogs start
    std::string ProfilePath;         // full path of the current profile
    std::string ProfileName = "ZAV"; // its base name, for the caption
    TransferSettings transfer;
    GpsSettings gps;
    RecentFiles recent;
    std::string BaseUrl = kDefaultBaseUrl;
    std::string InputDevice; // the recording input's name; empty for the system default
};

} // namespace zav
