#pragma once

#include <cstdint>
#include <string>

namespace zav {

// Samples a step keeps: an interval in units of 1024 samples, or in milliseconds at
// `sampleRate` (rounded to the nearest sample, a half to even).
std::int64_t SamplesToKeep(std::int32_t interval, bool intervalInSamples, std::int32_t sampleRate);

// Samples the device records for `keep` kept ones: a settling second first, and a tenth of
// a second to spare behind, round(1.1 * rate + keep) with a half to even.
std::int64_t SamplesToRecord(std::int32_t sampleRate, std::int64_t keep);

// The raw recording beside the step's file: "x.wav" records into "x.tmp".
std::string RawRecordingPath(const std::string& wavefile);

} // namespace zav
