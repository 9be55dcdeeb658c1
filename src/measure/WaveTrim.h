#pragma once

#include <cstdint>
#include <string>

namespace zav {

// Cuts the raw recording `rawPath` into the step's file `wavPath`: the raw header's words from
// offset 8 up to the data size field (H being the template's header length, see
// WaveTemplate), a RIFF size of 2 * keep + 36 and a data size of 2 * keep whatever that header's
// length, then the `keep` samples that follow the first `sampleRate` ones: the settling second
// is dropped. The old file stays until the new one is complete. False (and `error`) when the
// raw recording cannot be read, is too short, or the result cannot be written.
bool TrimRecording(const std::string& rawPath, const std::string& wavPath,
                   std::int64_t headerLength, std::int32_t sampleRate, std::int64_t keep,
                   std::string* error = nullptr);

} // namespace zav
