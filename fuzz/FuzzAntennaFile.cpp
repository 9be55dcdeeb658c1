// The antenna-file loader on any file; a table of antenna-like numbers that it accepts
// interpolates to finite values inside its range.
#include "FuzzFile.h"
#include "measure/AntennaFile.h"
#include "platform/SilentDialogs.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zav::SilentDialogs dialogs;
    const zav::AntennaFile file = zav::ReadAntennaFile(FuzzFile(data, size, ".tab"), dialogs);
    if (!file.Ok)
        return 0;
    const auto& t = file.IntTable;
    for (std::size_t i = 0; i < t.size(); ++i) {
        const bool plausible = std::fabs(t[i][0]) < 1e6 && std::fabs(t[i][1]) < 1e3 &&
                               (i == 0 || t[i][0] - t[i - 1][0] > 1e-6);
        if (!plausible)
            return 0; // extreme tables may overflow, as any arithmetic would
    }
    const double mid = (t.front()[0] + t.back()[0]) / 2;
    if (!std::isfinite(zav::csinterpolate(t, mid)))
        std::abort();
    return 0;
}
