#include "qt/services/QtBeeper.h"

#include "measure/SineTone.h"

#include <QMediaDevices>

#include <cstring>

namespace zav {
namespace {

constexpr int kRate = 44100;
constexpr double kAmplitude = 0.5; // of full scale: audible, not harsh
constexpr int kWatchMs = 20;
constexpr int kPlayOutMs = 3000;
// A sound system can take a second or two to start a stream; one that never plays the tone
// is closed after this long beyond it.
constexpr int kGiveUpAfterMs = 8000;

} // namespace

QtBeeper::QtBeeper() {
    QObject::connect(&m_watch, &QTimer::timeout, [this] {
        // The device's own clock says how much it has played; a few seconds more cover a
        // sound system whose clock runs ahead of what it has really sounded (an idle null
        // sink renders late). Keeping the quiet stream open costs nothing.
        const qint64 toneMs = m_toneUs / 1000;
        if (!m_sink ||
            (m_sink->processedUSecs() >= m_toneUs && m_started.elapsed() > toneMs + kPlayOutMs) ||
            m_started.elapsed() > toneMs + kGiveUpAfterMs)
            stop();
    });
}

QtBeeper::~QtBeeper() {
    stop();
}

void QtBeeper::stop() {
    m_watch.stop();
    if (m_sink)
        m_sink->stop();
    m_sink.reset();
    m_buffer.close();
}

void QtBeeper::Beep(int frequencyHz, int durationMs) {
    stop();
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull() || frequencyHz <= 0 || durationMs <= 0)
        return;
    const std::vector<std::int16_t> tone = SineTone(frequencyHz, durationMs, kRate, kAmplitude);
    m_tone.resize(static_cast<qsizetype>(tone.size() * 2));
    std::memcpy(m_tone.data(), tone.data(), tone.size() * 2);
    m_buffer.setBuffer(&m_tone);
    m_buffer.open(QIODevice::ReadOnly);
    QAudioFormat format;
    format.setSampleRate(kRate);
    format.setChannelCount(1);
    format.setSampleFormat(QAudioFormat::Int16);
    m_toneUs = format.durationForBytes(static_cast<qint32>(m_tone.size()));
    m_sink = std::make_unique<QAudioSink>(device, format);
    m_sink->start(&m_buffer);
    if (m_sink->error() != QAudio::NoError && m_sink->error() != QAudio::UnderrunError) {
        stop(); // a beep never reports anything
        return;
    }
    m_started.start();
    m_watch.start(kWatchMs);
}

} // namespace zav
