#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zav {

// The level of the latest stretch of audio, for a meter: the RMS of the last `windowSamples`
// samples in dB relative to full scale (a full-scale square wave reads 0 dB, a full-scale
// sine -3.01 dB), the same normalised voltage the detectors read.
class LevelMeter {
public:
    explicit LevelMeter(std::size_t windowSamples);

    void Add(const std::int16_t* samples, std::size_t count);
    // -infinity for silence or before any sample.
    double Dbfs() const;

private:
    std::vector<std::int16_t> m_window; // ring of the latest samples
    std::size_t m_next = 0;
    std::size_t m_filled = 0;
    std::uint64_t m_sumSquares = 0; // exact: integer squares never drift
};

// The meter's text: "-12.3 dBFS", or "-inf dBFS" for silence.
std::string LevelText(double dbfs, char decimalSeparator = '.');

} // namespace zav
