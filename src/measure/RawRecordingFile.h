#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace zav {

// The raw recording (".tmp") as it arrives: the template's header, then the samples, written
// block by block so that any length fits in little memory. The size fields are settled by
// Finish for the samples actually written.
class RawRecordingFile {
public:
    RawRecordingFile() = default;
    ~RawRecordingFile();
    RawRecordingFile(const RawRecordingFile&) = delete;
    RawRecordingFile& operator=(const RawRecordingFile&) = delete;

    // `header`: the template's bytes in front of its data size field. Whatever is at `path`
    // (an old recording, a link) is removed first and the file created new, mode 0600.
    bool Create(const std::string& path, const std::string& header);
    // Why Create failed, in words.
    const std::string& CreateError() const { return m_error; }
    bool Append(const std::int16_t* samples, std::size_t count);
    // Writes the RIFF and data sizes and closes the file.
    bool Finish();

    std::int64_t Samples() const { return m_samples; }

private:
    std::FILE* m_file = nullptr;
    std::size_t m_headerBytes = 0;
    std::int64_t m_samples = 0;
    bool m_ok = false;
    std::string m_error;
};

} // namespace zav
