#pragma once

#include "measure/AudioCapture.h"
#include "measure/CaptureProgress.h"
#include "platform/AudioInput.h"
#include "platform/Dialogs.h"

#include <ctime>
#include <functional>
#include <string>

namespace zav {

// The sound-card input of a step. The template decides the rate; the device records a
// settling second, the samples to keep and a tenth of a second to spare into the raw
// ".tmp" beside the step's file, which is then cut into the step's ".wav". Failures show
// "Error: recording wave file: ..." and leave the previous ".wav" in place.
class WaveRecorder : public AudioInput {
public:
    struct Ports {
        AudioCapture& capture;
        Dialogs& dialogs;
        CaptureProgress* progress = nullptr; // the progress window; none for a quiet run
    };

    // `templatePath`: the template "ZAV.wav". `deviceName`: the chosen input when a recording
    // starts ("" for the system default). `clock`: the time that stamps the recording.
    WaveRecorder(Ports ports, std::string templatePath, std::function<std::string()> deviceName,
                 std::function<std::time_t()> clock = {});

    Recording RecordWave(const RecordingRequest& request) override;

    // How the last capture went: its outcome and how long the stream took to start.
    const CaptureOutcome& LastCapture() const { return m_last; }

private:
    Recording fail(const std::string& message);

    Ports m_ports;
    std::string m_templatePath;
    std::function<std::string()> m_deviceName;
    std::function<std::time_t()> m_clock;
    CaptureOutcome m_last;
};

} // namespace zav
