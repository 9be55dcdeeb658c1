#pragma once

#include <string>

namespace zav {

inline constexpr int kVersionMajor = ZAV_VERSION_MAJOR;
inline constexpr int kVersionMinor = ZAV_VERSION_MINOR;
inline constexpr int kVersionRevision = ZAV_VERSION_PATCH;

// The program's title, as message boxes and the caption show it.
inline constexpr const char* kAppTitle = "ZAV";

// major "." minor "." revision, as the report, the data log and the caption show it.
inline std::string VersionText() {
    return std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) + "." +
           std::to_string(kVersionRevision);
}

} // namespace zav
