#pragma once

#include "platform/Version.h"

#include <string>

namespace zav {

// The main window's caption: "ZAV - " & profile name & " - V" & major.minor.revision.
inline std::string WindowCaption(const std::string& profileName) {
    return "ZAV - " + profileName + " - V" + VersionText();
}

} // namespace zav
