#include "measure/RawRecordingFile.h"

#include "platform/FileAccess.h"

#include <cstdio>
#include <vector>

namespace zav {
namespace {

void putLittleEndian32(unsigned char* out, std::uint32_t v) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<unsigned char>(v >> (8 * i));
}

} // namespace

RawRecordingFile::~RawRecordingFile() {
    if (m_file)
        std::fclose(m_file);
}

bool RawRecordingFile::Create(const std::string& path, const std::string& header) {
    if (m_file)
        std::fclose(m_file);
    // The raw recording is this program's own file: the previous one is removed and the new
    // one created afresh, never written through a link someone placed at the name.
    std::remove(path.c_str());
    m_file = CreateExclusiveFile(path, &m_error);
    m_headerBytes = header.size();
    m_samples = 0;
    // The data size field stays zero until Finish knows the count.
    const unsigned char zero[4] = {};
    m_ok = m_file && std::fwrite(header.data(), 1, header.size(), m_file) == header.size() &&
           std::fwrite(zero, 1, 4, m_file) == 4;
    return m_ok;
}

bool RawRecordingFile::Append(const std::int16_t* samples, std::size_t count) {
    if (!m_ok)
        return false;
    std::vector<unsigned char> bytes(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        const auto u = static_cast<std::uint16_t>(samples[i]);
        bytes[2 * i] = static_cast<unsigned char>(u & 0xFF);
        bytes[2 * i + 1] = static_cast<unsigned char>(u >> 8);
    }
    m_ok = std::fwrite(bytes.data(), 1, bytes.size(), m_file) == bytes.size();
    if (m_ok)
        m_samples += static_cast<std::int64_t>(count);
    return m_ok;
}

bool RawRecordingFile::Finish() {
    if (!m_file)
        return false;
    const auto dataBytes = static_cast<std::uint32_t>(2 * m_samples);
    unsigned char field[4];
    if (m_ok && m_headerBytes >= 8) {
        // RIFF size: everything behind the RIFF size field itself.
        putLittleEndian32(field, static_cast<std::uint32_t>(m_headerBytes + 4 - 8) + dataBytes);
        m_ok = std::fseek(m_file, 4, SEEK_SET) == 0 && std::fwrite(field, 1, 4, m_file) == 4;
    }
    if (m_ok) {
        putLittleEndian32(field, dataBytes);
        m_ok = std::fseek(m_file, static_cast<long>(m_headerBytes), SEEK_SET) == 0 &&
               std::fwrite(field, 1, 4, m_file) == 4;
    }
    m_ok = std::fclose(m_file) == 0 && m_ok;
    m_file = nullptr;
    return m_ok;
}

} // namespace zav
