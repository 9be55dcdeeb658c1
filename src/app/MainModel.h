#pragma once

#include "app/AntennaFileMode.h"
#include "app/MainPorts.h"
#include "app/Startup.h"
#include "config/CommandStates.h"
#include "config/Options.h"
#include "config/OptionsMenu.h"
#include "config/PersistentState.h"
#include "config/Profiles.h"
#include "config/SetupControls.h"
#include "config/SetupEvents.h"
#include "config/SetupForm.h"
#include "config/SetupRecord.h"
#include "measure/FileAudioInput.h"
#include "measure/MeasurementSteps.h"
#include "report/ObservationOutputs.h"
#include "report/SoundControls.h"
#include "report/TransferHistory.h"
#include "report/WaveformExports.h"

#include <ctime>
#include <string>

namespace zav {

// The name under which the "recordings from files" input is stored as the chosen input.
inline constexpr const char* kFileInputName = "Recordings from files...";

// The whole main window without the window: the set-up form, the options, the profiles, the
// three steps and their results, and the output commands. The desktop view calls a handler,
// then shows the state again; zavcli drives the same model with files and no window.
class MainModel : private SetupEvents, private AudioInput {
public:
    MainModel(const StartupState& startup, MainPorts ports, MainEnvironment environment);
    MainModel(const MainModel&) = delete;
    MainModel& operator=(const MainModel&) = delete;

    // Settings and profile in, grids laid out; the window caption names the profile.
    void open();
    // Settings and profile out, temporary recordings removed. False when the profile could
    // not be written (`error` says why).
    bool close(std::string* error = nullptr);
    // The running clock: true when its text changed.
    bool onClockTick(std::time_t now);

    void Step1() { runStep(&MeasurementSteps::Step1, steps.S1.Title); }
    void Step2() { runStep(&MeasurementSteps::Step2, steps.S2.Title); }
    void Step3() { runStep(&MeasurementSteps::Step3, steps.S3.Title); }
    void recordTsv();

    // "Get position": `capture` runs the capture dialog, which writes the averaged position
    // into the set-up on OK. An observation not yet output takes the new position.
    void GetPosition(const std::function<void(SetupRecord&)>& capture);

    // Shows the model's state in the window while a handler still runs (a step's values
    // before the verdict's message box). Unset without a window.
    std::function<void()> showState;

    // The file the next step of the "recordings from files" input takes, or nothing to ask
    // the operator with a file chooser.
    std::function<std::optional<std::string>()> chooseRecording;

    // The main window's state, named as the window names its controls.
    SetupRecord setup;
    Options options;
    CommandStates commands;
    SetupControls controls;
    PersistentState state;
    std::string Caption;
    std::string clockText;
    FocusTarget focus = FocusTarget::Unchanged;
    SetupField focusField = SetupField::Tester; // the box meant by FocusTarget::SetupBox
    bool playbackMixerEnabled = true; // the two sound-mixer entries, for older systems only
    bool recordingMixerEnabled = true;
    int DebugFlag = 0;

    // The transfer's duplicate guard and receipt, kept for the whole run.
    TransferHistory transferHistory;

    SetupForm form;
    OptionsMenu optionsMenu;
    AntennaFileMode antenna;
    Profiles profiles;
    MeasurementSteps steps;
    ObservationOutputs outputs;
    WaveformExports waveExports;
    SoundControls soundControls;

    const MainEnvironment& environment() const { return m_environment; }
    ReportSource reportSource() const;

private:
    // SetupEvents
    void recalculate() override { steps.recalculate(); }
    void resetFromStep1() override { steps.resetFromStep1(); }
    void resetFromStep3() override { steps.resetFromStep3(); }
    std::optional<double> AntennaValueAt(double frequencyMHz) override;
    void UnloadAntennaFile() override { antenna.unloadAntennaFile(); }
    void LoadAntennaFile() override { antenna.LoadAntennaFile(); }
    void SetFocus(FocusTarget target) override { focus = target; }
    void ProfileNameChanged(const std::string& profileName) override;

    // AudioInput: the chosen input records each step.
    Recording RecordWave(const RecordingRequest& request) override;

    void runStep(void (MeasurementSteps::*step)(), const std::string& title);
    void afterStep3();

    MainPorts m_ports;
    MainEnvironment m_environment;
    FileAudioInput m_fileInput;
    std::string m_recordingTitle; // the step being recorded, for the file chooser's title
};

} // namespace zav
