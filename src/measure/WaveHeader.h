#pragma once

#include "measure/BinaryFile.h"
#include "platform/Dialogs.h"

#include <cstdint>

namespace zav {

// Where a recording's samples are: its rate and its count of 16-bit samples. (0, 0) means
// the file cannot be analysed; callers stop on a zero in either field.
struct WaveInfo {
    std::int32_t SampleRate = 0;
    std::int32_t Samples = 0;
};

// The sample count of a data chunk of `dataBytes` bytes: half of it, a half rounded to even
// (7 bytes give 4 samples, 5 give 2).
std::int32_t SamplesFromDataSize(std::int32_t dataBytes);

// Checks that `file`, positioned at its start, is the one layout the detectors can read:
// "RIFF" ... "WAVE", a PCM "fmt " chunk first with a block alignment of 2, and the "data"
// chunk straight behind it. On success the file stands at the first sample. Anything else
// shows "Unsupported WAVE file format." and gives (0, 0); the file stays open either way.
WaveInfo ReadWaveHeader(BinaryFile& file, Dialogs& dialogs);

} // namespace zav
