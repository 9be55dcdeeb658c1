#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace zav::test {

// 16-bit test signals, clipped; the noise Gaussian of an RMS in counts, repeatable by seed.
inline std::int16_t clip(double v) {
    return static_cast<std::int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
}
inline std::vector<std::int16_t> Sine(double amplitude, double frequencyHz, int sampleRate,
                                      std::size_t count, double offset = 0.0) {
    std::vector<std::int16_t> s(count);
    const double w = 2 * std::acos(-1.0) * frequencyHz / sampleRate;
    for (std::size_t i = 0; i < count; ++i)
        s[i] = clip(offset + amplitude * std::sin(w * static_cast<double>(i)));
    return s;
}
inline std::vector<std::int16_t> Noise(double rms, std::size_t count, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> dist(0.0, rms);
    std::vector<std::int16_t> s(count);
    for (auto& v : s)
        v = clip(dist(rng));
    return s;
}

// A canonical 44-byte-header 16-bit mono PCM WAVE file.
inline void WriteWave(const std::string& path, const std::vector<std::int16_t>& samples,
                      int sampleRate) {
    std::ofstream out(path, std::ios::binary);
    const auto data = static_cast<std::uint32_t>(samples.size() * 2);
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    auto put = [&](std::uint32_t v, int bytes) { // little-endian
        for (int i = 0; i < bytes; ++i)
            out.put(static_cast<char>((v >> (8 * i)) & 0xFF));
    };
    out.write("RIFF", 4), put(36 + data, 4), out.write("WAVEfmt ", 8);
    for (auto [v, bytes] :
         {std::pair{16u, 4}, {1u, 2}, {1u, 2}, {rate, 4}, {rate * 2, 4}, {2u, 2}, {16u, 2}})
        put(v, bytes); // PCM, mono, 16 bits
    out.write("data", 4), put(data, 4);
    for (std::int16_t v : samples)
        put(static_cast<std::uint16_t>(v), 2);
}

} // namespace zav::test
