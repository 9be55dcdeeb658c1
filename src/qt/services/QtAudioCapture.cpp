#include "qt/services/QtAudioCapture.h"

#include "measure/WaveDeviceMessages.h"
#include "qt/services/AudioDevices.h"

#include <QAudioSource>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <vector>

namespace zav {
namespace {

// Short device buffers: the first samples then arrive soon after the stream starts.
constexpr int kBufferMs = 50;
constexpr int kPollMs = 50;
constexpr int kPresenceCheckMs = 250;

DeviceError errorFor(QAudio::Error error) {
    switch (error) {
    case QAudio::OpenError:
        return {kDeviceOpenError, "The audio input could not be opened."};
    case QAudio::IOError:
        return {kDeviceIoError, "The audio input failed while recording."};
    case QAudio::UnderrunError:
        return {kDeviceUnderrun, "The audio input fell behind."};
    case QAudio::FatalError:
    case QAudio::NoError:
        break;
    }
    return {kDeviceFatalError, "The sound system stopped the audio input."};
}

} // namespace

CaptureOutcome QtAudioCapture::Capture(const CaptureRequest& request, CaptureSink& sink) {
    CaptureOutcome outcome;
    const std::optional<QAudioDevice> device = FindAudioInput(request.device);
    if (!device) {
        outcome.error = {kDeviceMissing,
                         request.device.empty()
                             ? std::string("No audio input device is available.")
                             : "The audio input \"" + request.device + "\" is not available."};
        return outcome;
    }
    QAudioFormat format;
    format.setSampleRate(request.sampleRate);
    format.setChannelCount(1);
    format.setSampleFormat(QAudioFormat::Int16);
    if (request.sampleRate <= 0 || !device->isFormatSupported(format)) {
        outcome.error = {kDeviceBadFormat, "The audio input cannot record 16-bit mono at " +
                                               std::to_string(request.sampleRate) + " Hz."};
        return outcome;
    }
    if (request.samples <= 0) {
        outcome.status = CaptureStatus::Completed;
        return outcome;
    }

    QAudioSource source(*device, format);
    source.setBufferSize(format.bytesForDuration(kBufferMs * 1000));
    QElapsedTimer clock;
    clock.start();
    QIODevice* stream = source.start();
    if (!stream || source.error() != QAudio::NoError) {
        outcome.error =
            errorFor(source.error() == QAudio::NoError ? QAudio::OpenError : source.error());
        return outcome;
    }

    QEventLoop loop;
    bool done = false;
    auto finish = [&](CaptureStatus status, DeviceError error = {}) {
        if (done)
            return;
        done = true;
        outcome.status = status;
        outcome.error = std::move(error);
        loop.quit();
    };

    std::int64_t delivered = 0;
    qint64 lastSamplesMs = 0;
    QByteArray carry; // an odd byte left from the last read
    std::vector<std::int16_t> block;
    bool draining = false;
    auto drain = [&] {
        if (draining)
            return;
        draining = true;
        while (!done) {
            QByteArray bytes = carry + stream->readAll();
            if (bytes.size() < 2) {
                carry = bytes;
                break;
            }
            const qsizetype whole = bytes.size() / 2;
            carry = bytes.size() % 2 ? bytes.right(1) : QByteArray();
            const std::int64_t wanted = std::min<std::int64_t>(whole, request.samples - delivered);
            block.resize(static_cast<std::size_t>(wanted));
            std::memcpy(block.data(), bytes.constData(), block.size() * 2);
            if (outcome.startupMs < 0)
                outcome.startupMs = clock.elapsed();
            lastSamplesMs = clock.elapsed();
            delivered += wanted;
            if (!sink.Samples(block.data(), block.size()))
                finish(CaptureStatus::Stopped);
            else if (delivered >= request.samples)
                finish(CaptureStatus::Completed);
        }
        draining = false;
    };

    QObject::connect(stream, &QIODevice::readyRead, &loop, drain);
    QObject::connect(&source, &QAudioSource::stateChanged, &loop, [&](QAudio::State state) {
        if (state == QAudio::StoppedState && source.error() != QAudio::NoError)
            finish(CaptureStatus::Failed, errorFor(source.error()));
    });
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        drain();
        if (done)
            return;
        if (!sink.Continue())
            return finish(CaptureStatus::Stopped);
        if (source.error() != QAudio::NoError && source.error() != QAudio::UnderrunError)
            return finish(CaptureStatus::Failed, errorFor(source.error()));
        const qint64 now = clock.elapsed();
        if (outcome.startupMs < 0 && now > m_timeouts.firstSamplesMs)
            return finish(CaptureStatus::Failed,
                          {kDeviceSilent, "The audio input delivered no samples within " +
                                              std::to_string(m_timeouts.firstSamplesMs / 1000) +
                                              " s."});
        if (outcome.startupMs >= 0 && now - lastSamplesMs > m_timeouts.gapMs)
            finish(CaptureStatus::Failed,
                   {kDeviceSilent, "The audio input stopped delivering samples."});
    });
    // The sound system may move the stream elsewhere when its input goes away, or when the
    // default input changes under a recording from the default: a recording that is partly
    // from another input would be wrong, so either is an error.
    QTimer presence;
    const QByteArray id = device->id();
    const bool followsDefault = request.device.empty();
    auto movedElsewhere = [&] {
        if (followsDefault && FindAudioInput({}).value_or(QAudioDevice()).id() != id)
            return true;
        const auto inputs = InputsRecordedNow();
        return inputs && std::any_of(inputs->begin(), inputs->end(), [&](const std::string& input) {
                   return input != id.toStdString();
               });
    };
    QObject::connect(&presence, &QTimer::timeout, &loop, [&] {
        if (!AudioInputPresent(id))
            finish(CaptureStatus::Failed, {kDeviceRemoved, "The audio input was removed."});
        else if (movedElsewhere())
            finish(CaptureStatus::Failed,
                   {kDeviceRemoved, "The sound system moved the recording to another input."});
    });
    poll.start(kPollMs);
    presence.start(kPresenceCheckMs);
    if (!done)
        loop.exec();
    poll.stop();
    presence.stop();
    source.stop();
    return outcome;
}

} // namespace zav
