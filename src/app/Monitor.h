#pragma once

#include "app/MonitorPlan.h"
#include "app/ObservationQueue.h"
#include "config/CommandStates.h"
#include "config/Options.h"
#include "config/SetupRecord.h"
#include "config/TransferSettings.h"
#include "measure/MeasurementSteps.h"
#include "platform/AudioInput.h"
#include "platform/Dialogs.h"
#include "platform/FormPoster.h"
#include "platform/RigControl.h"
#include "platform/XmlLookup.h"
#include "report/TransferHistory.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace zav {

enum class MonitorState { Idle, Calibrating, Waiting, Measuring, Finished, Stopped, Failed };

// The run's state in words: "Waiting", "Measuring", ...
const char* MonitorStateText(MonitorState state);

// Where a monitoring run stands; a copy goes to the watcher at every change.
struct MonitorStatus {
    MonitorState state = MonitorState::Idle;
    int cycle = 0;             // the cycle under way or last run, from 1
    std::time_t nextCycle = 0; // when the next cycle starts; 0 when none will
    int logged = 0;            // observations written to the data log
    int failedVerdicts = 0;    // measured but neither logged nor posted
    int audioGaps = 0;         // recordings the input could not make
    int rigErrors = 0;         // tunings the rig refused
    int posted = 0;            // accepted by the server
    int postRefused = 0;       // answered with a refusal
    int postUncertain = 0;     // went out without an answer: never sent again
    std::size_t queued = 0;    // waiting on disk for the server
    std::string lastEvent;
};

// One logged observation.
struct MonitorObservation {
    int cycle = 0;
    double frequencyMHz = 0;
    std::string obsTime;
    std::time_t time = 0;
    std::optional<double> faDb;          // external noise factor, dB above kT0b
    std::optional<double> fsRmsDbuvPerM; // RMS field strength
    std::string line;                    // as zavcli prints it
};

// Port for the run's time: the wall clock and a wait the run can be stopped out of.
class MonitorClock {
public:
    virtual ~MonitorClock() = default;
    virtual std::time_t Now() = 0;
    // Waits about `duration` (the caller re-checks its stop flag after each wait).
    virtual void Sleep(std::chrono::milliseconds duration) = 0;
};

// Everything the run is measured and reported with, fixed when it starts.
struct MonitorSetup {
    SetupRecord setup;
    Options options;
    TransferSettings transfer;
    bool postEnabled = false; // the profile's transfer is online with a server address
    std::string dataLogPath = "ZavData.tab";
    std::string queuePath; // the posts waiting for the server; "" beside the log
    std::string tempWave;  // base path of the step recordings, no extension
    char decimalSeparator = '.';
    // The antenna file's value at a frequency; empty without an antenna file.
    std::function<std::optional<double>(double)> antennaValueAt;
    bool askOperator = true; // prompt to terminate the input and to connect the antenna
};

struct MonitorPorts {
    Dialogs& dialogs;   // the two prompts only; no verdict ever opens a box
    AudioInput& input;  // every step's recording
    RigControl* rig;    // null: the receiver stays as the operator left it
    FormPoster* poster; // null: nothing is posted
    XmlLookup* xml;     // reads the server's replies
    MonitorClock& clock;
    std::atomic<bool>& stop; // set from anywhere (a signal, the window) to end the run
};

// Unattended monitoring: steps 1 and 2 once (step 2 at every frequency, input terminated),
// then a cycle of step 3 on every frequency every interval. Each observation whose verdict
// passes is appended to the data log and posted; failed verdicts, audio gaps and rig errors
// are counted and told, and the run goes on. Only a data log that cannot be written ends it.
class Monitor {
public:
    Monitor(MonitorSetup setup, MonitorPlan plan, MonitorPorts ports);
    ~Monitor();

    // Runs to the end of the plan, a stop or a fatal failure; the final state says which.
    void Run();

    const MonitorStatus& status() const { return m_status; }

    std::function<void(const std::string&)> onEvent;
    std::function<void(const MonitorObservation&)> onObservation;
    std::function<void(const MonitorStatus&)> onStatus;

private:
    bool calibrate();
    bool recordCalibration(void (MeasurementSteps::*step)(), const std::string& where);
    void runCycle();
    void measureAt(double frequencyMHz);
    bool tune(double frequencyMHz);
    void post(const std::string& body);
    void flushQueue();
    bool waitUntil(std::time_t time);
    bool stopped() const { return m_ports.stop.load(); }
    void setFrequency(double frequencyMHz);
    std::string failedVerdict() const;
    void event(const std::string& text);
    void setState(MonitorState state);
    std::string requestBody();

    MonitorSetup m_setup;
    MonitorPlan m_plan;
    MonitorPorts m_ports;
    MonitorStatus m_status;
    ObservationQueue m_queue;
    TransferHistory m_history;

    // The steps run on the monitor's own copy of the set-up; messages are collected, not shown.
    struct SilentDialogs;
    struct NoBeeper;
    std::unique_ptr<SilentDialogs> m_silent;
    std::unique_ptr<NoBeeper> m_beeper;
    CommandStates m_commands;
    MeasurementSteps m_steps;
    Measurement m_soundCard;
    std::map<double, Measurement> m_receiver; // step 2 at each frequency
    std::map<std::string, int> m_refusalsTold;
    bool m_serverDown = false;
};

} // namespace zav
