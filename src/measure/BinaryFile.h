#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace zav {

// A file opened for reading raw bytes at absolute offsets. Reading past the end is not an
// error: the missing bytes read as zero, so a short file looks like one padded with zeros
// and every caller still gets a value for each read.
class BinaryFile {
public:
    BinaryFile() = default;
    explicit BinaryFile(const std::string& path) { Open(path); }
    ~BinaryFile() { Close(); }
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;

    // A WAVE file's sizes are 32-bit: nothing larger is one of its files.
    static constexpr std::int64_t kMaxBytes = 0xFFFFFFFFLL + 8;

    // False when the file cannot be opened, is no regular file (a folder, a device, a pipe)
    // or is larger than kMaxBytes; the object then reads as an empty file and OpenError()
    // says why.
    bool Open(const std::string& path);
    const std::string& OpenError() const { return m_openError; }
    void Close();
    bool IsOpen() const { return m_file != nullptr; }

    // Byte offset of the next read, from the start of the file.
    std::int64_t Position() const { return m_position; }
    // Moves to an absolute offset (may lie past the end); a negative offset is refused.
    bool Seek(std::int64_t offset);

    // Reads `count` bytes into `out`; returns how many came from the file, the rest are zero.
    std::size_t Read(void* out, std::size_t count);

    // Fixed-size little-endian reads and four-character identifiers.
    std::int16_t ReadInt16();
    std::int32_t ReadInt32();
    std::string ReadChars(std::size_t count);

private:
    std::FILE* m_file = nullptr;
    std::string m_openError;
    std::int64_t m_position = 0;
    bool m_streamAtPosition = true; // the stream's own position equals m_position
};

} // namespace zav
