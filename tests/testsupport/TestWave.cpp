#include "testsupport/TestWave.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <stdexcept>

namespace zav::test {
namespace {

std::int16_t clip(double v) {
    return static_cast<std::int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
}

// Little-endian, as WAVE files store their numbers.
void put(std::ofstream& out, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.put(static_cast<char>((v >> (8 * i)) & 0xFF));
}

} // namespace

std::vector<std::int16_t> Sine(double amplitude, double frequencyHz, int sampleRate,
                               std::size_t count, double offset) {
    std::vector<std::int16_t> s(count);
    const double w = 2 * std::acos(-1.0) * frequencyHz / sampleRate;
    for (std::size_t i = 0; i < count; ++i)
        s[i] = clip(offset + amplitude * std::sin(w * static_cast<double>(i)));
    return s;
}

std::vector<std::int16_t> Noise(double rms, std::size_t count, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> dist(0.0, rms);
    std::vector<std::int16_t> s(count);
    for (auto& v : s)
        v = clip(dist(rng));
    return s;
}

void WriteWave(const std::string& path, const std::vector<std::int16_t>& samples, int sampleRate) {
    std::ofstream out(path, std::ios::binary);
    if (!out)
        throw std::runtime_error("cannot write " + path);
    const auto dataBytes = static_cast<std::uint32_t>(samples.size() * 2);
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    out.write("RIFF", 4);
    put(out, 36 + dataBytes, 4);
    out.write("WAVEfmt ", 8);
    put(out, 16, 4);
    put(out, 1, 2); // PCM
    put(out, 1, 2); // mono
    put(out, rate, 4);
    put(out, rate * 2, 4);
    put(out, 2, 2);
    put(out, 16, 2);
    out.write("data", 4);
    put(out, dataBytes, 4);
    for (std::int16_t v : samples)
        put(out, static_cast<std::uint16_t>(v), 2);
}

} // namespace zav::test
