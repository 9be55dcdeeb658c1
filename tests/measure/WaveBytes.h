#pragma once

#include <gtest/gtest.h>

#include "testsupport/ScratchDir.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace zav::test {

inline std::string LittleEndian(std::uint32_t v, int bytes) {
    std::string s;
    for (int i = 0; i < bytes; ++i)
        s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}

// The header fields a test may spoil; by default a canonical 16-bit mono PCM file.
struct WaveHeader {
    std::string riff = "RIFF", wave = "WAVE", fmt = "fmt ", data = "data";
    std::int32_t formatSize = 16;
    std::uint16_t tag = 1, channels = 1, align = 2, bits = 16;
    std::int32_t rate = 44100;
    std::string formatExtra, between; // bytes behind the 16 standard ones; chunks before "data"
    std::int64_t dataSize = -1;       // -1: two bytes per sample given

    std::string Bytes(const std::vector<std::int16_t>& samples = {}) const {
        auto le = [](auto v, int n) { return LittleEndian(static_cast<std::uint32_t>(v), n); };
        std::string s = riff + le(0, 4) + wave + fmt + le(formatSize, 4) + le(tag, 2) +
                        le(channels, 2) + le(rate, 4) + le(rate * align, 4) + le(align, 2) +
                        le(bits, 2) + formatExtra + between + data +
                        le(dataSize >= 0 ? dataSize : 2 * std::int64_t(samples.size()), 4);
        for (std::int16_t v : samples)
            s += le(static_cast<std::uint16_t>(v), 2);
        return s;
    }
};

inline std::string WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

} // namespace zav::test
