#pragma once

#include <optional>
#include <string>

namespace zav {

// What a sound device reported when it failed: its error number and text.
struct DeviceError {
    int number = 0;
    std::string text;
};

// Port for playing sound: a recorded WAVE file, and the short beep. Without an output
// device both are silent; only a device that fails reports an error.
class AudioOutput {
public:
    virtual ~AudioOutput() = default;
    // Plays `path` to its end; the error when the device failed.
    virtual std::optional<DeviceError> PlayWave(const std::string& path) = 0;
};

} // namespace zav
