#pragma once

#include "platform/SystemInfo.h"

#include <string>
#include <vector>

namespace zav {

// Where the system-information tool lies. On Windows the registry names msinfo32; elsewhere
// the first of `candidates` found in `searchPaths` (empty: the PATH).
class QtSystemInfo : public SystemInfo {
public:
    QtSystemInfo();
    QtSystemInfo(std::vector<std::string> candidates, std::vector<std::string> searchPaths);

    std::string ToolPath() override;

private:
    std::vector<std::string> m_candidates;
    std::vector<std::string> m_searchPaths;
};

} // namespace zav
