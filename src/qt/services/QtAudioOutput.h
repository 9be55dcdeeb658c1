#pragma once

#include "platform/AudioOutput.h"

namespace zav {

// Plays a recording through the default audio output (QAudioSink), to its end. It waits in a
// local event loop that keeps windows painted but takes no input, so no other command can
// start meanwhile. Silent, and no error, when there is no output device.
class QtAudioOutput : public AudioOutput {
public:
    std::optional<DeviceError> PlayWave(const std::string& path) override;
};

} // namespace zav
