#include "measure/InputLevel.h"

#include "platform/Format.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace zav {
namespace {

constexpr double kFullScale = 32768.0;
// Below this the receiver's noise hardly rises above the sound card's own (step 1 allows the
// sound card up to −60 dBFS, and each step wants 14 dB more).
constexpr double kLowLevelDbfs = -46.0;
// Noise peaks stand 10 to 12 dB above its RMS; less headroom than this clips now and then.
constexpr double kMinHeadroomDb = 6.0;

double dbfs(double magnitude) {
    if (!(magnitude > 0))
        return -std::numeric_limits<double>::infinity();
    return 20.0 * std::log10(magnitude / kFullScale);
}

} // namespace

double ClipLimitDbfs() {
    return 20.0 * std::log10(0.7 * std::sqrt(2.0));
}

InputLevel::InputLevel(std::size_t windowSamples, int clipHoldReadings)
    : m_rms(windowSamples), m_clipHold(clipHoldReadings) {}

void InputLevel::Add(const std::int16_t* samples, std::size_t count) {
    m_rms.Add(samples, count);
    for (std::size_t i = 0; i < count; ++i)
        if (std::abs(int{samples[i]}) > m_peak)
            m_peak = std::abs(int{samples[i]});
    m_samples += static_cast<std::int64_t>(count);
}

InputLevelReading InputLevel::TakeReading() {
    InputLevelReading r;
    r.rmsDbfs = m_rms.Dbfs();
    r.peakDbfs = dbfs(m_peak);
    r.headroomDb = ClipLimitDbfs() - r.peakDbfs;
    r.clipping = r.headroomDb < 0 || m_clipReadingsLeft > 0;
    if (r.headroomDb < 0)
        m_clipReadingsLeft = m_clipHold;
    else if (m_clipReadingsLeft > 0)
        --m_clipReadingsLeft;
    m_peak = 0;
    return r;
}

std::string RmsLevelText(const InputLevelReading& r, char separator) {
    return "RMS " + LevelText(r.rmsDbfs, separator);
}

std::string PeakLevelText(const InputLevelReading& r, char separator) {
    return "Peak " + LevelText(r.peakDbfs, separator);
}

std::string HeadroomText(const InputLevelReading& r, char separator) {
    if (!std::isfinite(r.headroomDb))
        return "Headroom: no signal";
    if (r.headroomDb < 0)
        return "Over the clipping limit by " + Format(-r.headroomDb, "0.0", separator) + " dB";
    return "Headroom " + Format(r.headroomDb, "0.0", separator) + " dB to the clipping limit (" +
           LevelText(ClipLimitDbfs(), separator) + ")";
}

std::string LevelAdvice(const InputLevelReading& r) {
    if (r.clipping)
        return "Clipping: turn the receiver's audio gain or the recording level down";
    if (!std::isfinite(r.rmsDbfs))
        return "No signal: check the chosen input and its cable";
    if (r.headroomDb < kMinHeadroomDb)
        return "Little headroom: turn the receiver's audio gain down a little";
    if (r.rmsDbfs < kLowLevelDbfs)
        return "Low level: turn the receiver's audio gain up";
    return "Level good for measuring";
}

} // namespace zav
