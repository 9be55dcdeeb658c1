#include "cli/RecordCommand.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "cli/HeadlessModel.h"
#include "measure/LevelMeter.h"
#include "measure/RecordingCounts.h"
#include "measure/WaveRecorder.h"
#include "platform/Number.h"
#include "platform/ResourceFolder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <limits>
#include <optional>

namespace zav {
namespace {

std::atomic<bool> g_interrupted{false};

extern "C" void onInterrupt(int) {
    g_interrupted = true;
}

// Progress on standard error while it is a terminal; Ctrl-C cancels the recording cleanly.
class TerminalProgress : public CaptureProgress {
public:
    TerminalProgress(CliIo& io, std::string file) : m_io(io), m_file(std::move(file)) {}

    void Begin(std::int64_t totalSamples) override {
        m_total = totalSamples;
        m_shown = false;
        Update(0, -std::numeric_limits<double>::infinity());
    }
    void Update(std::int64_t samplesSoFar, double levelDbfs) override {
        if (!m_io.errIsTerminal)
            return;
        const auto now = std::chrono::steady_clock::now();
        if (m_shown && samplesSoFar < m_total && now - m_last < std::chrono::milliseconds(100))
            return;
        m_last = now;
        m_shown = true;
        const int percent = m_total > 0 ? static_cast<int>(100 * samplesSoFar / m_total) : 0;
        m_io.err << "\rrecording " << m_file << ": " << percent << "% (" << samplesSoFar << " of "
                 << m_total << " samples), level " << LevelText(levelDbfs) << "\033[K"
                 << std::flush;
    }
    bool CancelRequested() override { return g_interrupted; }
    void End() override {
        if (m_shown)
            m_io.err << "\r\033[K" << std::flush;
    }

private:
    CliIo& m_io;
    std::string m_file;
    std::int64_t m_total = 0;
    bool m_shown = false;
    std::chrono::steady_clock::time_point m_last;
};

struct RecordArgs {
    std::string out;
    std::string profile;
    std::optional<std::int32_t> interval;
    std::string device;
    bool listDevices = false;
};

std::string templatePath() {
    const std::string dir = QCoreApplication::applicationDirPath().toStdString();
    return ResourceFolder(dir, "ZAV.wav") + "ZAV.wav";
}

} // namespace

int RecordCommand(const std::vector<std::string>& args, CliIo& io) {
    RecordArgs a;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--list-devices") {
            a.listDevices = true;
        } else if (arg == "--profile" || arg == "--interval" || arg == "--device") {
            if (i + 1 >= args.size())
                return UsageError(io, "record", arg + " needs a value");
            const std::string& value = args[++i];
            if (arg == "--profile") {
                a.profile = value;
            } else if (arg == "--device") {
                a.device = value;
            } else {
                const double n = IsNumber(value) ? std::nearbyint(Number(value)) : -1;
                if (n < 0 || n > INT32_MAX)
                    return UsageError(io, "record", "--interval needs a whole number");
                a.interval = static_cast<std::int32_t>(n);
            }
        } else if (arg.size() > 1 && arg[0] == '-') {
            return UsageError(io, "record", "unknown option " + arg);
        } else if (a.out.empty()) {
            a.out = arg;
        } else {
            return UsageError(io, "record", "one output file only");
        }
    }

    if (a.listDevices) {
        const std::vector<std::string> names = AudioInputNames();
        if (names.empty()) {
            io.err << "zavcli record: no audio input device found\n";
            return kExitFailed;
        }
        for (const std::string& name : names)
            io.out << name << "\n";
        return kExitOk;
    }
    if (a.out.empty())
        return UsageError(io, "record", "no output file given");
    const std::string raw = RawRecordingPath(a.out);
    if (raw == a.out)
        return UsageError(io, "record", "the output file cannot end in .tmp");

    if (const auto status = CheckProfileExists(io, "record", a.profile))
        return *status;
    // The interval and its unit as the profile gives them, as a step reads them.
    HeadlessModel headless(a.profile, io.err);
    const MainModel& model = headless.model();
    const std::int32_t interval =
        a.interval ? *a.interval
                   : static_cast<std::int32_t>(std::nearbyint(Number(model.setup.Interval)));

    CliDialogs dialogs(io.err);
    QtAudioCapture capture;
    TerminalProgress progress(io, a.out);
    WaveRecorder recorder({capture, dialogs, &progress}, templatePath(), [&a] { return a.device; });
    g_interrupted = false;
    auto previous = std::signal(SIGINT, onInterrupt);
    const Recording rec = recorder.RecordWave({a.out, interval, model.options.Samples});
    std::signal(SIGINT, previous == SIG_ERR ? SIG_DFL : previous);

    std::error_code ignored;
    std::filesystem::remove(raw, ignored);
    if (rec.status == RecordingStatus::Cancelled) {
        io.err << "zavcli record: cancelled\n";
        return kExitFailed;
    }
    if (rec.status != RecordingStatus::Recorded)
        return kExitFailed;
    io.out << "File\t" << a.out << "\nSampleRate\t" << rec.sampleRate << "\nSamples\t"
           << rec.samples << "\nStartupMs\t" << recorder.LastCapture().startupMs << "\n";
    return kExitOk;
}

} // namespace zav
