#pragma once

#include "measure/BinaryFile.h"
#include "platform/Dialogs.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace zav {

// Reads a recording's 16-bit samples in file order, a block at a time, so that an export of
// any length runs in constant memory. Delivers the samples the header announces, but never
// more than the file holds: a recording cut short exports what it has, not a tail of
// invented zeros.
class WaveSampleReader {
public:
    enum class Status {
        Ok,         // samples to read
        CannotOpen, // the file could not be opened (nothing shown)
        NoSamples,  // the header check failed (and said so), or there is nothing to read
    };

    // Opens `path` and checks its header; an unusable file's message goes to `dialogs`.
    Status Open(const std::string& path, Dialogs& dialogs);

    std::int32_t SampleRate() const { return m_sampleRate; }
    // The samples that `Read` will deliver in all.
    std::int64_t Samples() const { return m_samples; }
    // Why the file could not be opened (after CannotOpen).
    const std::string& OpenError() const { return m_file.OpenError(); }

    // Up to `count` of the next samples into `out`; 0 once all are read.
    std::size_t Read(std::int16_t* out, std::size_t count);

private:
    BinaryFile m_file;
    std::int32_t m_sampleRate = 0;
    std::int64_t m_samples = 0;
    std::int64_t m_left = 0;
};

// A sample as a normalised voltage: full scale reads 1.0.
inline double NormalisedVoltage(std::int16_t sample) {
    return sample / 32768.0;
}

} // namespace zav
