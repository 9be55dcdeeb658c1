#include "app/Monitor.h"

#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/TextHelpers.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"
#include "report/DataLog.h"
#include "report/PostVars.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace zav {

const char* MonitorStateText(MonitorState state) {
    switch (state) {
    case MonitorState::Idle:
        return "Idle";
    case MonitorState::Calibrating:
        return "Measuring the sound card and the receiver";
    case MonitorState::Waiting:
        return "Waiting for the next cycle";
    case MonitorState::Measuring:
        return "Measuring";
    case MonitorState::Finished:
        return "Finished";
    case MonitorState::Stopped:
        return "Stopped";
    case MonitorState::Failed:
        return "Failed";
    }
    return "";
}

// Unattended, a step's message is told in the log of events instead of a box; a prompt is
// answered OK (the monitor asks the operator itself, once).
struct Monitor::SilentDialogs : Dialogs {
    MessageResult ShowMessage(const std::string& text, const std::string&, MessageIcon,
                              MessageButtons) override {
        last = text;
        return MessageResult::Ok;
    }
    std::optional<std::string> OpenFileName(const FileDialogRequest&) override { return {}; }
    std::optional<std::string> SaveFileName(const FileDialogRequest&) override { return {}; }
    std::string last;
};

struct Monitor::NoBeeper : Beeper {
    void Beep(int, int) override {}
};

namespace {

std::string clockText(std::time_t time) {
    const std::tm t = LocalTime(time);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &t);
    return text;
}

std::string mhzText(double frequencyMHz) {
    return Format(frequencyMHz, "0.000") + " MHz";
}

} // namespace

Monitor::Monitor(MonitorSetup setup, MonitorPlan plan, MonitorPorts ports)
    : m_setup(std::move(setup)), m_plan(std::move(plan)), m_ports(ports),
      m_queue(m_setup.queuePath.empty() ? m_setup.dataLogPath + ".queue" : m_setup.queuePath),
      m_silent(std::make_unique<SilentDialogs>()), m_beeper(std::make_unique<NoBeeper>()),
      m_steps(m_setup.setup, m_setup.options, m_commands, {*m_silent, ports.input, *m_beeper}) {
    // Unattended: no box, and a failed verdict holds the observation back.
    m_setup.options.Verbose = false;
    m_setup.options.Limits = true;
    m_setup.options.Beep = false;
    m_steps.TempWave = m_setup.tempWave;
    m_steps.decimalSeparator = m_setup.decimalSeparator;
    if (m_plan.frequenciesMHz.empty() || !m_ports.rig) {
        // Without a rig the receiver stays where the operator left it: one frequency.
        const double f = m_plan.frequenciesMHz.empty()
                             ? Number(m_setup.setup.Frequency, m_setup.decimalSeparator)
                             : m_plan.frequenciesMHz.front();
        m_plan.frequenciesMHz = {f};
    }
}

Monitor::~Monitor() = default;

void Monitor::event(const std::string& text) {
    m_status.lastEvent = text;
    if (onEvent)
        onEvent(clockText(m_ports.clock.Now()) + "  " + text);
    if (onStatus)
        onStatus(m_status);
}

void Monitor::setState(MonitorState state) {
    m_status.state = state;
    if (onStatus)
        onStatus(m_status);
}

void Monitor::setFrequency(double frequencyMHz) {
    m_setup.setup.Frequency = Format(frequencyMHz, "0.000", m_setup.decimalSeparator);
    if (m_setup.antennaValueAt) {
        if (const auto value = m_setup.antennaValueAt(frequencyMHz))
            m_setup.setup.AntGain = Format(*value, "0.00", m_setup.decimalSeparator);
    }
}

bool Monitor::tune(double frequencyMHz) {
    setFrequency(frequencyMHz);
    if (!m_ports.rig)
        return true;
    RigTuning tuning;
    tuning.frequencyHz = std::round(frequencyMHz * 1e6);
    tuning.mode = m_plan.mode;
    tuning.passbandHz = static_cast<int>(
        std::lround(std::max(0.0, Number(m_setup.setup.Bandwidth, m_setup.decimalSeparator))));
    const RigOutcome outcome = m_ports.rig->Tune(tuning);
    for (const std::string& refusal : outcome.refusals) {
        // A rig that cannot do something cannot do it next cycle either: told once.
        if (m_refusalsTold[refusal]++ == 0)
            event("Rig: " + refusal);
    }
    if (!outcome.tuned) {
        ++m_status.rigErrors;
        event("Rig: cannot tune to " + mhzText(frequencyMHz) + ": " + outcome.error +
              "; tried again next cycle");
        return false;
    }
    for (int left = m_plan.settleMs; left > 0 && !stopped(); left -= 100)
        m_ports.clock.Sleep(std::chrono::milliseconds(std::min(left, 100)));
    return true;
}

// Steps 1 and 2 are made once for the whole run, so an audio input that is away for a moment
// is waited for: the recording is made again a few times before the step counts as failed.
// False when the run was stopped meanwhile.
bool Monitor::recordCalibration(void (MeasurementSteps::*step)(), const std::string& where) {
    constexpr int kTries = 6;
    constexpr int kRetrySeconds = 5;
    const Measurement soundCard = m_steps.S1;
    for (int attempt = 1;; ++attempt) {
        m_silent->last.clear();
        m_steps.S1 = soundCard;
        m_steps.observation.ObsTime.clear();
        (m_steps.*step)();
        if (stopped())
            return false;
        if (!m_steps.observation.ObsTime.empty() || attempt == kTries)
            return true;
        ++m_status.audioGaps;
        event("Audio input gap " + where +
              (m_silent->last.empty() ? std::string() : ": " + m_silent->last) +
              "; recorded again in " + std::to_string(kRetrySeconds) + " s");
        if (!waitUntil(m_ports.clock.Now() + kRetrySeconds))
            return false;
    }
}

bool Monitor::calibrate() {
    setState(MonitorState::Calibrating);
    auto ask = [&](const char* text) {
        return !m_setup.askOperator ||
               m_ports.dialogs.ShowMessage(text, kAppTitle, MessageIcon::None,
                                           MessageButtons::OkCancel) == MessageResult::Ok;
    };
    if (!ask("Power off receiver, connect to sound card and hit OK.."))
        return false;
    if (!recordCalibration(&MeasurementSteps::Step1, "during step 1"))
        return false;
    if (m_steps.observation.ObsTime.empty() || m_steps.S1.ClipFlag != 0) {
        const std::string why = m_steps.observation.ObsTime.empty() ? "no recording"
                                : m_silent->last.empty()            ? "clipping"
                                                                    : m_silent->last;
        event("Step 1 failed (" + why + "); the run cannot start");
        return false;
    }
    m_soundCard = m_steps.S1;
    if (m_steps.gridMeas.Colour(2, 1) != CellColour::WindowText)
        event("Step 1: the sound card's own noise is high: check voltage range");

    if (!ask("Power on receiver, terminate input and hit OK."))
        return false;
    std::vector<double> usable;
    for (double f : m_plan.frequenciesMHz) {
        if (stopped())
            return false;
        if (!tune(f))
            continue;
        m_steps.S1 = m_soundCard;
        if (!recordCalibration(&MeasurementSteps::Step2, "at " + mhzText(f) + " during step 2"))
            return false;
        const CellColour rms = m_steps.gridMeas.Colour(2, 2);
        if (m_steps.observation.ObsTime.empty() || m_steps.S2.ClipFlag != 0 ||
            rms == CellColour::Red) {
            const std::string why = m_steps.observation.ObsTime.empty() ? "no recording"
                                    : m_steps.S2.ClipFlag != 0
                                        ? "clipping"
                                        : "no receiver noise above the sound card's";
            event("Step 2 at " + mhzText(f) + " failed (" + why + "): frequency left out");
            continue;
        }
        if (rms == CellColour::Orange)
            event("Step 2 at " + mhzText(f) +
                  ": the receiver is less than 14 dB above the sound card");
        m_receiver[f] = m_steps.S2;
        usable.push_back(f);
    }
    if (usable.empty()) {
        event("No frequency has a receiver noise reading: the run cannot start");
        return false;
    }
    m_plan.frequenciesMHz = usable;
    return ask("Connect receiver to source and hit OK.");
}

std::string Monitor::failedVerdict() const {
    const Measurement& s3 = m_steps.S3;
    if (s3.ClipFlag != 0)
        return "clipping";
    if (s3.OverThreshold || m_steps.S2.OverThreshold)
        return "over the AGC threshold";
    const CellColour rms = m_steps.gridMeas.Colour(2, 3);
    if (rms == CellColour::Red)
        return "no noise above the sound card's own";
    if (rms == CellColour::Orange)
        return "too close to the sound card's noise";
    if (!m_commands.recordTsvButtonEnabled)
        return "too close to the receiver's noise";
    return "";
}

std::string Monitor::requestBody() {
    const ReportSource source{m_setup.setup,           m_steps.observation, m_steps.gridMeas,
                              m_steps.gridCalc,        m_steps.NumAntGain,  m_steps.NumAntFact,
                              m_setup.decimalSeparator};
    // The transfer's own request: the field list, then the account.
    std::string user = m_setup.transfer.username;
    if (!user.empty() && user[0] == '*') {
        user.erase(0, 1);
        m_history.serverDebug = 1;
    }
    return PostVars(source) + "&username=" + UrlEncode(user, true) +
           "&password=" + UrlEncode(m_setup.transfer.password, true) +
           "&Email=" + UrlEncode(m_setup.transfer.Email, true) +
           "&client=1&debug=" + std::to_string(m_history.serverDebug);
}

void Monitor::measureAt(double frequencyMHz) {
    if (!tune(frequencyMHz) || stopped())
        return;
    m_silent->last.clear();
    m_steps.S1 = m_soundCard;
    m_steps.S2 = m_receiver[frequencyMHz];
    // A recording that is cancelled keeps the last stamp: cleared, an empty stamp means
    // no recording, whatever the reason.
    m_steps.observation.ObsTime.clear();
    m_steps.Step3();
    if (stopped() && m_steps.observation.ObsTime.empty())
        return; // dropped on the way out
    if (m_steps.observation.ObsTime.empty()) {
        ++m_status.audioGaps;
        event("Audio input gap at " + mhzText(frequencyMHz) + ", cycle " +
              std::to_string(m_status.cycle) +
              (m_silent->last.empty() ? std::string() : ": " + m_silent->last));
        return;
    }
    if (const std::string why = failedVerdict(); !why.empty()) {
        ++m_status.failedVerdicts;
        event(mhzText(frequencyMHz) + " at " + m_steps.observation.ObsTime + " not logged: " + why);
        return;
    }
    const ReportSource source{m_setup.setup,           m_steps.observation, m_steps.gridMeas,
                              m_steps.gridCalc,        m_steps.NumAntGain,  m_steps.NumAntFact,
                              m_setup.decimalSeparator};
    if (!AppendDataLog(m_setup.dataLogPath, source)) {
        event("Cannot append to the data log " + m_setup.dataLogPath +
              " (is the disk full?): the run stops; every earlier row is kept");
        setState(MonitorState::Failed);
        m_ports.stop = true;
        return;
    }
    ++m_status.logged;

    MonitorObservation obs;
    obs.cycle = m_status.cycle;
    obs.frequencyMHz = frequencyMHz;
    obs.obsTime = m_steps.observation.ObsTime;
    obs.time = m_ports.clock.Now();
    obs.faDb = m_steps.lastCalculation.Fa;
    if (m_steps.lastCalculation.rows[1])
        obs.fsRmsDbuvPerM = m_steps.lastCalculation.rows[1]->fsDbuvPerM;
    std::string note = "logged";
    if (m_setup.postEnabled && m_ports.poster) {
        const int before = m_status.posted;
        post(requestBody());
        note += m_status.state == MonitorState::Failed ? ", not posted"
                : m_status.posted > before             ? ", posted"
                : m_queue.Empty()                      ? ""
                                                       : ", queued";
    }
    obs.line = obs.obsTime + "  " + mhzText(frequencyMHz) + "  FsRms " +
               (obs.fsRmsDbuvPerM ? Format(*obs.fsRmsDbuvPerM, "0.0") : std::string("-")) +
               " dBuV/m  Fa " + (obs.faDb ? Format(*obs.faDb, "0.0") : std::string("-")) + " dB  " +
               note;
    if (onObservation)
        onObservation(obs);
    if (onStatus)
        onStatus(m_status);
}

void Monitor::post(const std::string& body) {
    // Queued first, so that the order holds and a crash in the request loses nothing.
    std::string error;
    if (!m_queue.Push(body, &error)) {
        // A queue that cannot be kept could lose what it holds: like a full data log, this
        // ends the run, with the queue on disk as it was.
        event("Cannot keep the post queue on disk (" + error + "): the run stops; the row of " +
              m_steps.observation.ObsTime + " is logged but not posted");
        setState(MonitorState::Failed);
        m_ports.stop = true;
        return;
    }
    flushQueue();
}

void Monitor::flushQueue() {
    while (!m_queue.Empty() && !stopped()) {
        const PostAttempt attempt =
            m_ports.poster->Post(TransferAddress(m_setup.transfer.URL), m_queue.Front());
        if (attempt.delivery == PostDelivery::NeverLeft) {
            if (!m_serverDown)
                event("Server unreachable (" + attempt.error + "): observations are queued in " +
                      m_queue.Path() + " and sent later");
            m_serverDown = true;
            break;
        }
        m_serverDown = false;
        std::string error;
        if (!m_queue.Pop(&error))
            event("Cannot update the post queue on disk: " + error);
        if (attempt.delivery == PostDelivery::Unknown) {
            ++m_status.postUncertain;
            event("No answer after the request went out (" + attempt.error +
                  "): not sent again, in case it arrived");
            continue;
        }
        const HttpResponse& reply = attempt.response;
        const std::optional<std::string> cc = reply.status == 200 && m_ports.xml
                                                  ? m_ports.xml->FirstElementText(reply.body, "cc")
                                                  : std::nullopt;
        if (cc && IsNumber(*cc) && Number(*cc) == 0) {
            ++m_status.posted;
            continue;
        }
        ++m_status.postRefused;
        std::string reason =
            reply.status != 200 ? "HTTP status code:" + std::to_string(reply.status)
            : m_ports.xml
                ? UrlDecode(
                      m_ports.xml->FirstElementText(reply.body, "reason").value_or(reply.body))
                : reply.body;
        event("The server refused an observation: " + reason);
    }
    m_status.queued = m_queue.Size();
}

bool Monitor::waitUntil(std::time_t time) {
    while (!stopped()) {
        const std::time_t now = m_ports.clock.Now();
        if (now >= time)
            return true;
        const auto left = std::chrono::seconds(time - now);
        m_ports.clock.Sleep(
            std::min<std::chrono::milliseconds>(left, std::chrono::milliseconds(250)));
    }
    return false;
}

void Monitor::runCycle() {
    setState(MonitorState::Measuring);
    if (m_setup.postEnabled && m_ports.poster)
        flushQueue();
    for (double f : m_plan.frequenciesMHz) {
        if (stopped())
            return;
        measureAt(f);
    }
}

void Monitor::Run() {
    m_status = MonitorStatus{};
    std::string error;
    if (m_setup.postEnabled && m_ports.poster && !m_queue.Load(&error))
        event("Post queue: " + error);
    m_status.queued = m_queue.Size();
    if (m_plan.frequenciesMHz.size() > 1 && !m_setup.antennaValueAt)
        event("No antenna file: the antenna " +
              std::string(m_setup.options.AntFact ? "factor " : "gain ") + m_setup.setup.AntGain +
              (m_setup.options.AntFact ? " dB/m" : " dBi") + " is used on every frequency");
    if (!calibrate()) {
        setState(m_status.state == MonitorState::Failed ? MonitorState::Failed
                 : stopped()                            ? MonitorState::Stopped
                                                        : MonitorState::Failed);
        return;
    }
    const std::time_t start = m_ports.clock.Now();
    for (int cycle = 1;; ++cycle) {
        const std::time_t begins =
            start + static_cast<std::time_t>(cycle - 1) * m_plan.intervalSeconds;
        if ((m_plan.count > 0 && cycle > m_plan.count) || (m_plan.until && begins >= *m_plan.until))
            break;
        m_status.nextCycle = begins;
        setState(MonitorState::Waiting);
        if (!waitUntil(begins))
            break;
        m_status.cycle = cycle;
        runCycle();
        if (m_status.state == MonitorState::Failed)
            return;
        if (stopped())
            break;
    }
    m_status.nextCycle = 0;
    event("Run ended: " + std::to_string(m_status.logged) + " logged, " +
          std::to_string(m_status.failedVerdicts) + " failed verdicts, " +
          std::to_string(m_status.audioGaps) + " audio gaps, " +
          std::to_string(m_status.rigErrors) + " rig errors" +
          (m_setup.postEnabled ? ", " + std::to_string(m_status.posted) + " posted, " +
                                     std::to_string(m_status.queued) + " queued"
                               : std::string()));
    setState(stopped() ? MonitorState::Stopped : MonitorState::Finished);
}

} // namespace zav
