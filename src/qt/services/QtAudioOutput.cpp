#include "qt/services/QtAudioOutput.h"

#include "measure/BinaryFile.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveHeader.h"
#include "platform/SilentDialogs.h"

#include <QAudioSink>
#include <QBuffer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMediaDevices>
#include <QTimer>

namespace zav {
namespace {

// A device whose clock stands still this long (its start-up included) has stopped playing.
constexpr int kStallMs = 5000;
constexpr qint64 kEndToleranceUs = 50000;
constexpr int kEndStillMs = 200;

DeviceError errorFor(QAudio::Error error) {
    switch (error) {
    case QAudio::OpenError:
        return {kDeviceOpenError, "The audio output could not be opened."};
    case QAudio::IOError:
        return {kDeviceIoError, "The audio output failed while playing."};
    default:
        break;
    }
    return {kDeviceFatalError, "The sound system stopped the audio output."};
}

struct Pcm {
    QAudioFormat format;
    QByteArray bytes;
};

// The file as the WAVE reader sees it: 16-bit mono or 8-bit stereo, the two layouts with a
// block alignment of 2.
std::optional<Pcm> readPcm(const std::string& path, DeviceError& error) {
    BinaryFile file;
    if (!file.Open(path)) {
        error = {kDeviceBadFile, "Cannot open " + path + "."};
        return std::nullopt;
    }
    SilentDialogs silent;
    const WaveInfo info = ReadWaveHeader(file, silent);
    const std::int64_t first = file.Position();
    file.Seek(22);
    const std::int16_t channels = file.ReadInt16();
    file.Seek(34);
    const std::int16_t bits = file.ReadInt16();
    Pcm pcm;
    pcm.format.setSampleRate(info.SampleRate);
    if (info.SampleRate > 0 && channels == 1 && bits == 16) {
        pcm.format.setChannelCount(1);
        pcm.format.setSampleFormat(QAudioFormat::Int16);
    } else if (info.SampleRate > 0 && channels == 2 && bits == 8) {
        pcm.format.setChannelCount(2);
        pcm.format.setSampleFormat(QAudioFormat::UInt8);
    } else {
        error = {kDeviceBadFile, "Unsupported WAVE file format."};
        return std::nullopt;
    }
    pcm.bytes.resize(static_cast<qsizetype>(std::max(0, info.Samples)) * 2);
    file.Seek(first);
    const std::size_t got = file.Read(pcm.bytes.data(), static_cast<std::size_t>(pcm.bytes.size()));
    pcm.bytes.truncate(static_cast<qsizetype>(got)); // a short file plays what it holds
    return pcm;
}

} // namespace

std::optional<DeviceError> QtAudioOutput::PlayWave(const std::string& path) {
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull())
        return std::nullopt;
    DeviceError error;
    std::optional<Pcm> pcm = readPcm(path, error);
    if (!pcm)
        return error;
    if (pcm->bytes.isEmpty())
        return std::nullopt;

    QBuffer buffer(&pcm->bytes);
    buffer.open(QIODevice::ReadOnly);
    QAudioSink sink(device, pcm->format);
    sink.start(&buffer);
    if (sink.error() != QAudio::NoError && sink.error() != QAudio::UnderrunError)
        return errorFor(sink.error());

    const qint64 lengthUs = pcm->format.durationForBytes(
        static_cast<qint32>(std::min<qsizetype>(pcm->bytes.size(), INT32_MAX)));
    QEventLoop loop;
    std::optional<DeviceError> failure;
    qint64 played = -1;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        const QAudio::Error e = sink.error();
        // The device's own clock: how much it has played, its latency included.
        const qint64 now = sink.processedUSecs();
        if (sink.state() == QAudio::StoppedState && e != QAudio::NoError &&
            e != QAudio::UnderrunError) {
            failure = errorFor(e);
            loop.quit();
        } else if (now >= lengthUs) {
            loop.quit();
        } else if (now != played) {
            played = now;
            sinceProgress.restart();
        } else if (now >= lengthUs - kEndToleranceUs && sinceProgress.elapsed() > kEndStillMs) {
            loop.quit(); // a clock that stops a hair before the end
        } else if (sinceProgress.elapsed() > kStallMs) {
            failure = DeviceError{kDeviceSilent, "The audio output stopped playing."};
            loop.quit();
        }
    });
    poll.start(20);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    sink.stop();
    return failure;
}

} // namespace zav
