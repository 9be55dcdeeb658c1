#include "cli/MonitorCommand.h"

#include "app/Monitor.h"
#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "cli/HeadlessModel.h"
#include "measure/WaveRecorder.h"
#include "platform/Number.h"
#include "platform/ResourceFolder.h"
#include "qt/services/HamlibRig.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtFormPoster.h"
#include "qt/services/QtXmlLookup.h"

#include <QCoreApplication>

#include <atomic>
#include <csignal>
#include <deque>
#include <filesystem>
#include <thread>

namespace zav {
namespace {

std::atomic<bool> g_stop{false};

extern "C" void onStopSignal(int) {
    g_stop = true;
}

struct WallClock : MonitorClock {
    std::time_t Now() override { return std::time(nullptr); }
    void Sleep(std::chrono::milliseconds d) override { std::this_thread::sleep_for(d); }
};

// A recording in progress is dropped when the run is asked to stop.
struct StopOnRequest : CaptureProgress {
    void Begin(std::int64_t) override {}
    void Update(std::int64_t, double) override {}
    bool CancelRequested() override { return g_stop; }
    void End() override {}
};

// The sound card's input for the run. zavcli monitor names the audio device adapter here
// and nowhere else, so the adapter can come from wherever the audio path lives.
std::unique_ptr<AudioInput> OpenDeviceInput(const std::string& device, Dialogs& dialogs) {
    struct DeviceInput : AudioInput {
        DeviceInput(const std::string& device, Dialogs& dialogs)
            : recorder(
                  {capture, dialogs, &progress},
                  ResourceFolder(QCoreApplication::applicationDirPath().toStdString(), "ZAV.wav") +
                      "ZAV.wav",
                  [device] { return device; }) {}
        Recording RecordWave(const RecordingRequest& request) override {
            return recorder.RecordWave(request);
        }
        QtAudioCapture capture;
        StopOnRequest progress;
        WaveRecorder recorder;
    };
    return std::make_unique<DeviceInput>(device, dialogs);
}

// Steps 1 and 2 from files when given, step 3 from a file for a demonstration or a
// benchmark; every other recording from the sound card, opened only when one is needed.
struct RunInput : AudioInput {
    RunInput(Dialogs& dialogs, std::string device)
        : m_dialogs(dialogs), m_device(std::move(device)),
          m_files(dialogs, [this]() -> std::optional<std::string> { return m_next; }) {}

    Recording RecordWave(const RecordingRequest& request) override {
        if (!calibrationFiles.empty() || !step3File.empty()) {
            if (!calibrationFiles.empty()) {
                m_next = calibrationFiles.front();
                calibrationFiles.pop_front();
            } else {
                m_next = step3File;
            }
            Recording rec = m_files.RecordWave(request);
            rec.time = std::time(nullptr); // the observation is now, not when the file was made
            return rec;
        }
        if (!m_deviceInput)
            m_deviceInput = OpenDeviceInput(m_device, m_dialogs);
        return m_deviceInput->RecordWave(request);
    }

    std::deque<std::string> calibrationFiles;
    std::string step3File;

private:
    Dialogs& m_dialogs;
    std::string m_device;
    std::optional<std::string> m_next;
    FileAudioInput m_files;
    std::unique_ptr<AudioInput> m_deviceInput;
};

struct MonitorArgs {
    std::string profile, log, device, step1, step3, frequencies, every, until, count, rig, rigPort,
        mode, settle;
    std::vector<std::string> step2;
};

} // namespace

int MonitorCommand(const std::vector<std::string>& args, CliIo& io) {
    MonitorArgs a;
    const std::vector<std::pair<const char*, std::string*>> valued = {
        {"--profile", &a.profile}, {"--log", &a.log},          {"--device", &a.device},
        {"--step1", &a.step1},     {"--step3", &a.step3},      {"--frequencies", &a.frequencies},
        {"--every", &a.every},     {"--until", &a.until},      {"--count", &a.count},
        {"--rig", &a.rig},         {"--rig-port", &a.rigPort}, {"--mode", &a.mode},
        {"--settle", &a.settle}};
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        std::string* target = nullptr;
        for (const auto& [name, field] : valued)
            if (arg == name)
                target = field;
        if (target || arg == "--step2") {
            if (i + 1 >= args.size())
                return UsageError(io, "monitor", arg + " needs a value");
            if (target)
                *target = args[++i];
            else
                a.step2.push_back(args[++i]);
        } else {
            return UsageError(io, "monitor", "unknown argument " + arg);
        }
    }
    if (!a.count.empty() && !a.until.empty())
        return UsageError(io, "monitor", "--count and --until exclude each other");

    const std::time_t now = std::time(nullptr);
    MonitorPlan plan;
    if (!a.profile.empty()) {
        IniFile profile;
        if (profile.Load(a.profile))
            for (const std::string& problem : ReadMonitorSection(profile, now, plan))
                io.err << "zavcli monitor: " << a.profile << ": " << problem << "\n";
    }
    if (!a.frequencies.empty()) {
        const auto list = ParseFrequencyList(a.frequencies);
        if (!list)
            return UsageError(io, "monitor", "--frequencies takes MHz values such as 3.5,5.3,7.0");
        plan.frequenciesMHz = *list;
    }
    if (!a.every.empty()) {
        const auto seconds = ParseDuration(a.every);
        if (!seconds)
            return UsageError(io, "monitor", "--every takes a duration such as 10m, 90s or 1h");
        plan.intervalSeconds = *seconds;
    }
    if (!a.count.empty()) {
        if (!IsNumber(a.count) || Number(a.count) < 1 || Number(a.count) > 1e7 ||
            a.count.find_first_not_of("0123456789") != std::string::npos)
            return UsageError(io, "monitor", "--count takes a whole number of cycles");
        plan.count = static_cast<int>(Number(a.count));
        plan.until.reset();
    }
    if (!a.until.empty()) {
        plan.until = ParseUntil(a.until, now);
        if (!plan.until)
            return UsageError(io, "monitor", "--until takes HH:MM or YYYY-MM-DD HH:MM");
        plan.count = 0;
    }
    if (!a.rig.empty()) {
        if (a.rig.find_first_not_of("0123456789") != std::string::npos || a.rig.size() > 7)
            return UsageError(io, "monitor", "--rig takes a Hamlib rig model number");
        plan.rigModel = static_cast<int>(Number(a.rig));
    }
    if (!a.rigPort.empty())
        plan.rigPort = a.rigPort;
    if (!a.mode.empty())
        plan.mode = a.mode;
    if (!a.settle.empty()) {
        if (a.settle.find_first_not_of("0123456789") != std::string::npos || a.settle.size() > 5)
            return UsageError(io, "monitor", "--settle takes milliseconds");
        plan.settleMs = static_cast<int>(Number(a.settle));
    }
    if (const std::string problem = CheckMonitorPlan(plan); !problem.empty())
        return UsageError(io, "monitor", problem);
    std::string rigName;
    if (plan.rigModel != 0 && !HamlibRig::KnownModel(plan.rigModel, &rigName)) {
        io.err << "zavcli monitor: " << rigName << "\n";
        return kExitFailed;
    }
    for (const std::string* file : {&a.step1, &a.step3})
        if (!file->empty() && !std::filesystem::is_regular_file(*file))
            return io.err << "zavcli monitor: no such file: " << *file << "\n", kExitFailed;
    for (const std::string& file : a.step2)
        if (!std::filesystem::is_regular_file(file))
            return io.err << "zavcli monitor: no such file: " << file << "\n", kExitFailed;
    const std::size_t frequencies = std::max<std::size_t>(1, plan.frequenciesMHz.size());
    if (!a.step2.empty() &&
        (a.step1.empty() || (a.step2.size() != 1 && a.step2.size() != frequencies)))
        return UsageError(io, "monitor",
                          "--step2 needs --step1, and one file or one per frequency");

    HeadlessModel headless(a.profile, io.err);
    MainModel& m = headless.model();
    MonitorSetup setup;
    setup.setup = m.setup;
    setup.options = m.options;
    setup.transfer = m.state.transfer;
    setup.postEnabled = m.state.transfer.online && !m.state.transfer.URL.empty();
    setup.dataLogPath = a.log.empty() ? m.outputs.TsvFileName : a.log;
    setup.tempWave = m.steps.TempWave;
    if (!m.setup.AntFileName.empty())
        setup.antennaValueAt = [&m](double f) { return m.antenna.ValueAt(f); };
    setup.askOperator = false; // nobody at the receiver to answer

    CliDialogs dialogs(io.err);
    dialogs.showPrompts = false;
    RunInput input(dialogs, a.device);
    if (!a.step1.empty()) {
        input.calibrationFiles.push_back(a.step1);
        for (std::size_t i = 0; i < (a.step2.empty() ? 0 : frequencies); ++i)
            input.calibrationFiles.push_back(a.step2.size() == 1 ? a.step2[0] : a.step2[i]);
    }
    input.step3File = a.step3;

    std::unique_ptr<HamlibRig> rig;
    if (plan.rigModel != 0) {
        rig = std::make_unique<HamlibRig>(plan.rigModel, plan.rigPort);
        io.err << "zavcli monitor: rig " << rigName
               << (plan.rigPort.empty() ? "" : " at " + plan.rigPort) << "\n";
    }
    QtFormPoster poster;
    QtXmlLookup xml;
    WallClock clock;
    g_stop = false;
    auto oldInt = std::signal(SIGINT, onStopSignal);
    auto oldTerm = std::signal(SIGTERM, onStopSignal);

    Monitor monitor(setup, plan, {dialogs, input, rig.get(), &poster, &xml, clock, g_stop});
    monitor.onEvent = [&io](const std::string& text) { io.err << text << "\n" << std::flush; };
    monitor.onObservation = [&io](const MonitorObservation& o) {
        io.out << o.line << "\n" << std::flush;
    };
    monitor.Run();

    std::signal(SIGINT, oldInt == SIG_ERR ? SIG_DFL : oldInt);
    std::signal(SIGTERM, oldTerm == SIG_ERR ? SIG_DFL : oldTerm);
    return monitor.status().state == MonitorState::Failed ? kExitFailed : kExitOk;
}

} // namespace zav
