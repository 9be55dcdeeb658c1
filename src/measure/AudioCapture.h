#pragma once

#include "platform/AudioOutput.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace zav {

// One recording as the sound-card input asks for it: 16-bit mono samples at a given rate.
struct CaptureRequest {
    std::string device; // the input's name; empty for the system's default input
    std::int32_t sampleRate = 0;
    std::int64_t samples = 0; // counted from the first sample that arrives, not by the clock
};

// Where the samples go while they arrive.
class CaptureSink {
public:
    virtual ~CaptureSink() = default;
    // A block of samples in arrival order; false stops the capture.
    virtual bool Samples(const std::int16_t* data, std::size_t count) = 0;
    // Asked regularly, also while the device delivers nothing: false stops the capture.
    virtual bool Continue() = 0;
};

enum class CaptureStatus {
    Completed, // every sample asked for was delivered
    Stopped,   // the sink said stop
    Failed     // the device failed, vanished or went silent; `error` says how
};

struct CaptureOutcome {
    CaptureStatus status = CaptureStatus::Failed;
    DeviceError error;
    std::int64_t startupMs = -1; // from starting the stream to its first samples; -1 if none
};

// Port for the sound card's recording input. The capture blocks until the samples are in,
// the sink stops it, or the device fails; it never delivers more than `samples`.
class AudioCapture {
public:
    virtual ~AudioCapture() = default;
    virtual CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) = 0;
};

} // namespace zav
