#include "report/Spectrum.h"

#include "report/Fft.h"
#include "report/WaveSampleReader.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace zav {
namespace {

constexpr std::size_t kSmallestBlock = 16;

std::size_t largestPowerOfTwoUpTo(std::size_t n) {
    std::size_t p = 1;
    while (p <= n / 2)
        p <<= 1;
    return p;
}

} // namespace

Spectrum AverageSpectrum(std::span<const std::int16_t> samples, double sampleRateHz,
                         std::size_t blockSize) {
    Spectrum result;
    if (!IsPowerOfTwo(blockSize) || sampleRateHz <= 0 || samples.size() < kSmallestBlock)
        return result;
    const std::size_t n = std::min(blockSize, largestPowerOfTwoUpTo(samples.size()));
    const double pi = std::acos(-1.0);
    // Periodic Hann window: its sum is exactly n / 2, the coherent gain the scale undoes.
    std::vector<double> window(n);
    for (std::size_t i = 0; i < n; ++i)
        window[i] =
            0.5 - 0.5 * std::cos(2.0 * pi * static_cast<double>(i) / static_cast<double>(n));
    const double windowSum = static_cast<double>(n) / 2.0;

    const std::size_t bins = n / 2 + 1;
    std::vector<double> power(bins, 0.0);
    std::vector<std::complex<double>> block(n);
    const std::size_t hop = n / 2;
    std::size_t blocks = 0;
    for (std::size_t start = 0; start + n <= samples.size(); start += hop, ++blocks) {
        for (std::size_t i = 0; i < n; ++i)
            block[i] = NormalisedVoltage(samples[start + i]) * window[i];
        Fft(block);
        for (std::size_t k = 0; k < bins; ++k)
            power[k] += std::norm(block[k]);
    }

    result.blockSize = n;
    result.blocks = blocks;
    result.frequencyHz.resize(bins);
    result.levelDbfs.resize(bins);
    for (std::size_t k = 0; k < bins; ++k) {
        // A sine of amplitude A puts A/2 * windowSum into each of its two mirrored bins; DC
        // and the Nyquist bin have no mirror.
        const double single = (k == 0 || k == n / 2) ? 1.0 : 2.0;
        const double amplitude =
            single * std::sqrt(power[k] / static_cast<double>(blocks)) / windowSum;
        result.frequencyHz[k] = sampleRateHz * static_cast<double>(k) / static_cast<double>(n);
        result.levelDbfs[k] = amplitude > 0
                                  ? std::max(kSpectrumFloorDbfs, 20.0 * std::log10(amplitude))
                                  : kSpectrumFloorDbfs;
    }
    return result;
}

} // namespace zav
