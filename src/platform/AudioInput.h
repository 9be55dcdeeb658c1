#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace zav {

// What a measurement step asks of the recording input.
struct RecordingRequest {
    std::string wavefile;          // where the step's recording must end up (TempWave & ".wav")
    std::int32_t interval = 0;     // milliseconds, or units of 1024 samples
    bool intervalInSamples = true; // the "Samples (k)" option
};

enum class RecordingStatus { Recorded, Failed, Cancelled };

struct Recording {
    RecordingStatus status = RecordingStatus::Failed;
    std::int64_t samples = 0; // samples kept in the file
    std::int32_t sampleRate = 0;
    std::time_t time = 0; // when the recording was made: the observation's time stamp
};

// Port for the step's recording: a sound-card input records one interval, the "recordings
// from files" input takes a WAVE file recorded elsewhere. Either leaves the file at
// request.wavefile. A failure has already been shown to the operator by the input.
class AudioInput {
public:
    virtual ~AudioInput() = default;
    virtual Recording RecordWave(const RecordingRequest& request) = 0;
};

} // namespace zav
