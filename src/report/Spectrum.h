#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zav {

// A recording's averaged magnitude spectrum, from 0 Hz to half the sample rate.
struct Spectrum {
    std::vector<double> frequencyHz;
    std::vector<double> levelDbfs; // a full-scale sine in one bin reads 0 dBFS
    std::size_t blockSize = 0;     // samples per transform; the bin width is rate / blockSize
    std::size_t blocks = 0;        // how many blocks were averaged
};

// The lowest level a bin reports: digital silence, not minus infinity.
inline constexpr double kSpectrumFloorDbfs = -200.0;

// Welch's average: Hann-windowed blocks of `blockSize` samples (a power of two), each
// overlapping the one before by half, their power spectra averaged, then scaled so that a sine
// of amplitude A on a bin reads 20 log10(A) dBFS. A recording shorter than one block uses the
// largest power of two it holds; fewer than 16 samples give an empty spectrum.
Spectrum AverageSpectrum(std::span<const std::int16_t> samples, double sampleRateHz,
                         std::size_t blockSize = 4096);

} // namespace zav
