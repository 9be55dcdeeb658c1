#include "measure/RecordingCounts.h"

#include <cmath>
#include <filesystem>

namespace zav {

std::int64_t SamplesToKeep(std::int32_t interval, bool intervalInSamples, std::int32_t sampleRate) {
    if (intervalInSamples)
        return std::int64_t{interval} * 1024;
    // std::nearbyint rounds in the default mode, to nearest with ties to even.
    return static_cast<std::int64_t>(
        std::nearbyint(static_cast<double>(sampleRate) * interval / 1000.0));
}

std::int64_t SamplesToRecord(std::int32_t sampleRate, std::int64_t keep) {
    return static_cast<std::int64_t>(std::nearbyint(1.1 * sampleRate + static_cast<double>(keep)));
}

std::string RawRecordingPath(const std::string& wavefile) {
    std::filesystem::path p(std::u8string(wavefile.begin(), wavefile.end()));
    p.replace_extension(".tmp");
    const std::u8string s = p.u8string();
    return std::string(s.begin(), s.end());
}

} // namespace zav
