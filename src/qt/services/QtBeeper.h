#pragma once

#include "platform/Beeper.h"

#include <QAudioSink>
#include <QBuffer>
#include <QByteArray>
#include <QElapsedTimer>
#include <QTimer>

#include <memory>

namespace zav {

// The beep as a generated sine tone on the default audio output. It plays in the background
// (the caller goes on at once); a new beep replaces one still sounding. Silent when there is
// no output device.
class QtBeeper : public Beeper {
public:
    QtBeeper();
    ~QtBeeper() override;

    void Beep(int frequencyHz, int durationMs) override;

private:
    void stop();

    std::unique_ptr<QAudioSink> m_sink;
    QByteArray m_tone;
    QBuffer m_buffer;
    qint64 m_toneUs = 0;
    QElapsedTimer m_started;
    QTimer m_watch; // closes the stream once the device has played the tone
};

} // namespace zav
