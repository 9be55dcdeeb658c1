#include "report/DplotCommand.h"

#include "platform/CompareVersions.h"

namespace zav {

std::string DplotCommand(const std::string& dplotVer, const std::string& currentDir,
                         const std::string& obsTime) {
    if (CompareVersions(dplotVer, "2.1.2.8", 4) >= 0)
        return "[Enable(0)][DocRestore()][SetFilename(\"" + currentDir + obsTime +
               ".grf\")][Enable(1)]";
    return "[Enable(0)][DocRestore()][Enable(1)]";
}

} // namespace zav
