#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zav::test {

// Test signals as signed 16-bit samples.
std::vector<std::int16_t> Sine(double amplitude, double frequencyHz, int sampleRate,
                               std::size_t count, double offset = 0.0);
// Gaussian noise of the given RMS (in sample units), repeatable for a seed; clipped to 16 bits.
std::vector<std::int16_t> Noise(double rms, std::size_t count, unsigned seed);

// Writes a canonical 44-byte-header 16-bit mono PCM WAVE file.
void WriteWave(const std::string& path, const std::vector<std::int16_t>& samples, int sampleRate);

} // namespace zav::test
