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

void put32(std::ofstream& out, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out.put(static_cast<char>((v >> (8 * i)) & 0xFF));
}

void put16(std::ofstream& out, std::uint16_t v) {
    out.put(static_cast<char>(v & 0xFF));
    out.put(static_cast<char>(v >> 8));
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
    out.write("RIFF", 4);
    put32(out, 36 + dataBytes);
    out.write("WAVEfmt ", 8);
    put32(out, 16);
    put16(out, 1); // PCM
    put16(out, 1); // mono
    put32(out, static_cast<std::uint32_t>(sampleRate));
    put32(out, static_cast<std::uint32_t>(sampleRate) * 2);
    put16(out, 2);
    put16(out, 16);
    out.write("data", 4);
    put32(out, dataBytes);
    for (std::int16_t v : samples)
        put16(out, static_cast<std::uint16_t>(v));
}

} // namespace zav::test
