#include "platform/ResourceFolder.h"

#include "platform/Paths.h"

#include <filesystem>

namespace zav {

std::string ResourceFolder(const std::string& programDir, const std::string& fileName) {
    namespace fs = std::filesystem;
    const std::string own = WithTrailingSeparator(programDir);
    std::error_code ignored;
    if (fs::is_regular_file(fs::path(own) / fileName, ignored))
        return own;
    // Installed: programs in bin/, helpers in libexec/zav/, resources in share/zav/.
    for (const char* up : {"..", "../.."}) {
        const fs::path installed = (fs::path(own) / up / "share" / "zav").lexically_normal();
        if (fs::is_regular_file(installed / fileName, ignored))
            return WithTrailingSeparator(installed.string());
    }
    return own;
}

} // namespace zav
