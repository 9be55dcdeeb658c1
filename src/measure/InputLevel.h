#pragma once

#include "measure/LevelMeter.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace zav {

// The live input meter's reading, for setting the receiver's audio gain before step 1.
struct InputLevelReading {
    double rmsDbfs;    // RMS of the latest stretch, dB of full scale (a full-scale square: 0)
    double peakDbfs;   // largest sample since the last reading, dB of full scale
    double headroomDb; // from that peak up to the steps' clipping limit; negative when over
    bool clipping;     // over the limit in this reading or one of the few before it
};

// The steps flag clipping when their peak detector, which reads a sine's RMS, exceeds 0.7 of
// full scale: a sample beyond 0.7·√2 of full scale, −0.09 dBFS.
double ClipLimitDbfs();

// Samples in, readings out: the RMS over a sliding window and the peak between readings, and
// the clipping warning held a moment so that a short overload is still seen.
class InputLevel {
public:
    explicit InputLevel(std::size_t windowSamples, int clipHoldReadings = 10);

    void Add(const std::int16_t* samples, std::size_t count);
    // The reading since the last one; restarts the peak.
    InputLevelReading TakeReading();
    bool AnySamples() const { return m_samples > 0; }

private:
    LevelMeter m_rms;
    int m_peak = 0; // largest magnitude since the last reading
    int m_clipHold;
    int m_clipReadingsLeft = 0;
    std::int64_t m_samples = 0;
};

// The meter's texts: "RMS -23.4 dBFS", "Peak -12.0 dBFS", "Headroom 11.9 dB to the clipping
// limit", and what to do with the receiver's audio gain.
std::string RmsLevelText(const InputLevelReading& r, char separator);
std::string PeakLevelText(const InputLevelReading& r, char separator);
std::string HeadroomText(const InputLevelReading& r, char separator);
std::string LevelAdvice(const InputLevelReading& r);

} // namespace zav
