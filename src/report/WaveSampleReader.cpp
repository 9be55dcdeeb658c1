#include "report/WaveSampleReader.h"

#include "measure/WaveHeader.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace zav {

WaveSampleReader::Status WaveSampleReader::Open(const std::string& path, Dialogs& dialogs) {
    m_sampleRate = 0;
    m_samples = m_left = 0;
    if (!m_file.Open(path))
        return Status::CannotOpen;
    const WaveInfo info = ReadWaveHeader(m_file, dialogs);
    if (info.SampleRate <= 0 || info.Samples <= 0)
        return Status::NoSamples;
    std::error_code ec;
    const auto size = std::filesystem::file_size(
        std::filesystem::path(std::u8string(path.begin(), path.end())), ec);
    if (ec)
        return Status::CannotOpen;
    const std::int64_t held =
        std::max<std::int64_t>(0, (static_cast<std::int64_t>(size) - m_file.Position()) / 2);
    m_sampleRate = info.SampleRate;
    m_samples = m_left = std::min<std::int64_t>(info.Samples, held);
    return m_samples > 0 ? Status::Ok : Status::NoSamples;
}

std::size_t WaveSampleReader::Read(std::int16_t* out, std::size_t count) {
    const auto n = static_cast<std::size_t>(std::min<std::int64_t>(m_left, count));
    unsigned char* bytes = reinterpret_cast<unsigned char*>(out);
    m_file.Read(bytes, n * 2);
    // Little-endian in the file, whatever the machine.
    for (std::size_t i = 0; i < n; ++i)
        out[i] = static_cast<std::int16_t>(
            static_cast<std::uint16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8)));
    m_left -= static_cast<std::int64_t>(n);
    return n;
}

} // namespace zav
