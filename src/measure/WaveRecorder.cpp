#include "measure/WaveRecorder.h"

#include "measure/LevelMeter.h"
#include "measure/RawRecordingFile.h"
#include "measure/RecordingCounts.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveTemplate.h"
#include "measure/WaveTrim.h"
#include "platform/Version.h"

#include <limits>

namespace zav {
namespace {

// The meter shows the last 100 ms.
constexpr double kLevelWindowSeconds = 0.1;

// Feeds the raw file, the meter and the progress window as the samples arrive.
class RecordingSink : public CaptureSink {
public:
    RecordingSink(RawRecordingFile& raw, LevelMeter& meter, CaptureProgress* progress)
        : m_raw(raw), m_meter(meter), m_progress(progress) {}

    bool Samples(const std::int16_t* data, std::size_t count) override {
        if (!m_raw.Append(data, count)) {
            writeFailed = true;
            return false;
        }
        m_meter.Add(data, count);
        if (m_progress)
            m_progress->Update(m_raw.Samples(), m_meter.Dbfs());
        return Continue();
    }

    bool Continue() override { return !(m_progress && m_progress->CancelRequested()); }

    bool writeFailed = false;

private:
    RawRecordingFile& m_raw;
    LevelMeter& m_meter;
    CaptureProgress* m_progress;
};

} // namespace

WaveRecorder::WaveRecorder(Ports ports, std::string templatePath,
                           std::function<std::string()> deviceName,
                           std::function<std::time_t()> clock)
    : m_ports(ports), m_templatePath(std::move(templatePath)), m_deviceName(std::move(deviceName)),
      m_clock(std::move(clock)) {
    if (!m_clock)
        m_clock = [] { return std::time(nullptr); };
}

Recording WaveRecorder::fail(const std::string& message) {
    m_ports.dialogs.ShowMessage(message, kAppTitle, MessageIcon::Critical);
    return Recording{};
}

Recording WaveRecorder::RecordWave(const RecordingRequest& request) {
    m_last = CaptureOutcome{};
    const std::optional<WaveTemplate> templ = ReadWaveTemplate(m_templatePath, m_ports.dialogs);
    if (!templ)
        return Recording{};
    const std::int32_t rate = templ->SampleRate;
    const std::int64_t keep = SamplesToKeep(request.interval, request.intervalInSamples, rate);
    const std::int64_t total = SamplesToRecord(rate, keep);
    // Both files carry 32-bit sizes.
    const std::int64_t maxSamples = (std::int64_t{std::numeric_limits<std::int32_t>::max()} - 64 -
                                     static_cast<std::int64_t>(templ->header.size())) /
                                    2;
    if (keep < 0 || total > maxSamples)
        return fail(RecordingErrorMessage(
            {kDeviceBadFormat, "The interval " + std::to_string(request.interval) +
                                   " gives no recording length this file format can hold."}));

    const std::string rawPath = RawRecordingPath(request.wavefile);
    RawRecordingFile raw;
    if (!raw.Create(rawPath, templ->header))
        return fail(RecordingErrorMessage(
            {kDeviceBadFile, "Cannot write " + rawPath + ": " + raw.CreateError() + "."}));

    LevelMeter meter(static_cast<std::size_t>(rate * kLevelWindowSeconds + 0.5));
    RecordingSink sink(raw, meter, m_ports.progress);
    const CaptureRequest capture{m_deviceName ? m_deviceName() : std::string(), rate, total};
    if (m_ports.progress)
        m_ports.progress->Begin(total);
    m_last = m_ports.capture.Capture(capture, sink);
    if (m_ports.progress)
        m_ports.progress->End();
    const bool finished = raw.Finish();

    if (sink.writeFailed || (m_last.status == CaptureStatus::Completed && !finished))
        return fail(RecordingErrorMessage({kDeviceBadFile, "Cannot write " + rawPath + "."}));
    if (m_last.status == CaptureStatus::Failed)
        return fail(RecordingErrorMessage(m_last.error));
    if (m_last.status == CaptureStatus::Stopped) {
        Recording cancelled;
        cancelled.status = RecordingStatus::Cancelled;
        return cancelled;
    }
    if (raw.Samples() != total)
        return fail(RecordingErrorMessage(
            {kDeviceIoError, "The device delivered " + std::to_string(raw.Samples()) + " of " +
                                 std::to_string(total) + " samples."}));

    Recording rec;
    rec.time = m_clock();
    std::string error;
    if (!TrimRecording(rawPath, request.wavefile, templ->HeaderLength, rate, keep, &error))
        return fail(RecordingErrorMessage({kDeviceBadFile, error + "."}));
    rec.status = RecordingStatus::Recorded;
    rec.samples = keep;
    rec.sampleRate = rate;
    return rec;
}

} // namespace zav
