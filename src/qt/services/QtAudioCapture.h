#pragma once

#include "measure/AudioCapture.h"

namespace zav {

// The sound card's recording input on Qt Multimedia (QAudioSource). The capture counts
// samples, never the clock: the stream may start late. It waits in a local event loop, so
// that windows repaint and a progress window's Cancel works. An input that is missing,
// vanishes, fails or stays silent too long ends the capture with an error, never a hang.
class QtAudioCapture : public AudioCapture {
public:
    struct Timeouts {
        int firstSamplesMs = 10000; // the stream's start-up, which can take a second or two
        int gapMs = 5000;           // no samples for this long after the first ones
    };

    QtAudioCapture() = default;
    explicit QtAudioCapture(Timeouts timeouts) : m_timeouts(timeouts) {}

    CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) override;

private:
    Timeouts m_timeouts;
};

} // namespace zav
