#pragma once

#include "platform/Dialogs.h"
#include "report/Spectrum.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zav {

inline constexpr const char* kPlotTimeLabel = "Time (s)";
inline constexpr const char* kPlotVoltageLabel = "Normalised voltage (V)";
inline constexpr const char* kPlotFrequencyLabel = "Frequency (Hz)";
inline constexpr const char* kPlotLevelLabel = "Magnitude (dBFS)";

// More samples than this (about 12 minutes at 44.1 kHz) are not held for the plot window;
// the plot then shows the beginning and says so.
inline constexpr std::int64_t kMaxPlotSamples = std::int64_t{1} << 25;

// Everything the plot window shows of one recording.
struct WavePlot {
    std::string title;   // "ZAV: " step title " " ObsTime
    std::string obsTime; // the default name of a saved image
    std::int32_t sampleRate = 0;
    std::vector<std::int16_t> samples;
    std::int64_t samplesInFile = 0; // more than samples.size() when the plot holds only the start
    Spectrum spectrum;

    double DurationSeconds() const {
        return sampleRate > 0 ? static_cast<double>(samples.size()) / sampleRate : 0.0;
    }
};

// Reads the recording at `wavePath` for the plot window and works out its spectrum. Nothing
// when the file cannot be opened or holds no samples (an unusable header says so through
// `dialogs`).
std::optional<WavePlot> LoadWavePlot(const std::string& wavePath, const std::string& stepTitle,
                                     const std::string& obsTime, Dialogs& dialogs);

} // namespace zav
