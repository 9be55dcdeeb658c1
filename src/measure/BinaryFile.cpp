#include "measure/BinaryFile.h"

#include "platform/FileAccess.h"

#include <cstring>

#ifndef _WIN32
#include <sys/types.h>
#endif

namespace zav {

namespace {

bool seekStream(std::FILE* f, std::int64_t offset) {
#ifdef _WIN32
    return _fseeki64(f, offset, SEEK_SET) == 0;
#else
    if (static_cast<std::int64_t>(static_cast<off_t>(offset)) != offset)
        return false;
    return fseeko(f, static_cast<off_t>(offset), SEEK_SET) == 0;
#endif
}

std::int64_t fileSize(std::FILE* f) {
#ifdef _WIN32
    if (_fseeki64(f, 0, SEEK_END) != 0)
        return -1;
    const std::int64_t size = _ftelli64(f);
#else
    if (fseeko(f, 0, SEEK_END) != 0)
        return -1;
    const std::int64_t size = ftello(f);
#endif
    std::rewind(f);
    return size;
}

} // namespace

bool BinaryFile::Open(const std::string& path) {
    Close();
    m_openError.clear();
    m_file = OpenRegularFile(path, &m_openError);
    m_position = 0;
    m_streamAtPosition = true;
    if (m_file && fileSize(m_file) > kMaxBytes) {
        Close();
        m_openError = "it is larger than a WAVE file can be";
    }
    return m_file != nullptr;
}

void BinaryFile::Close() {
    if (m_file)
        std::fclose(m_file);
    m_file = nullptr;
}

bool BinaryFile::Seek(std::int64_t offset) {
    if (offset < 0)
        return false;
    m_position = offset;
    m_streamAtPosition = false; // settled lazily by the next read
    return true;
}

std::size_t BinaryFile::Read(void* out, std::size_t count) {
    std::size_t got = 0;
    if (m_file && !m_streamAtPosition) {
        std::clearerr(m_file);
        m_streamAtPosition = seekStream(m_file, m_position);
    }
    if (m_file && m_streamAtPosition)
        got = std::fread(out, 1, count, m_file);
    if (got < count) {
        std::memset(static_cast<unsigned char*>(out) + got, 0, count - got);
        // The stream stopped at the end; later reads must start from the logical position.
        m_streamAtPosition = false;
    }
    m_position += static_cast<std::int64_t>(count);
    return got;
}

std::int16_t BinaryFile::ReadInt16() {
    unsigned char b[2];
    Read(b, 2);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(b[0] | (b[1] << 8)));
}

std::int32_t BinaryFile::ReadInt32() {
    unsigned char b[4];
    Read(b, 4);
    const std::uint32_t u = std::uint32_t(b[0]) | (std::uint32_t(b[1]) << 8) |
                            (std::uint32_t(b[2]) << 16) | (std::uint32_t(b[3]) << 24);
    return static_cast<std::int32_t>(u);
}

std::string BinaryFile::ReadChars(std::size_t count) {
    std::string s(count, '\0');
    Read(s.data(), count);
    return s;
}

} // namespace zav
