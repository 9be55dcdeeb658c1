#include "app/MainModel.h"

#include "app/Caption.h"
#include "app/GetPosition.h"
#include "platform/CompareVersions.h"
#include "platform/TempFolder.h"
#include "platform/TextHelpers.h"

#include <cstdio>
#include <filesystem>

namespace zav {

MainModel::MainModel(const StartupState& startup, MainPorts ports, MainEnvironment environment)
    : form(setup, options, ports.dialogs, *this, environment.decimalSeparator),
      optionsMenu(options, setup, controls, commands, *this, environment.decimalSeparator),
      antenna(setup, options, controls, optionsMenu, ports.dialogs, *this),
      profiles(setup, options, controls, state, ports.settings, ports.dialogs, *this,
               environment.decimalSeparator),
      steps(setup, options, commands, {ports.dialogs, *this, ports.beeper}),
      outputs([this] { return reportSource(); }, commands,
              {ports.dialogs, ports.clipboard, ports.mailer}),
      waveExports(
          [this] {
              return WaveformSource{steps.TempWave + ".wav", steps.observation.ObsTime,
                                    steps.shownTitle, state.CurrentDir};
          },
          commands, {ports.dialogs, ports.clipboard, ports.audioOutput}),
      soundControls(ports.shell), m_ports(ports), m_environment(std::move(environment)),
      m_fileInput(ports.dialogs, [this]() -> std::optional<std::string> {
          if (chooseRecording)
              return chooseRecording();
          FileDialogRequest request;
          // The step about to be recorded, not the one shown last.
          request.title = m_recordingTitle;
          request.initialDir = state.CurrentDir;
          request.filter = "WAVE files (*.wav)|*.wav|All Files (*.*)|*.*";
          return m_ports.dialogs.OpenFileName(request);
      }) {
    const char sep = m_environment.decimalSeparator;
    antenna.decimalSeparator = sep;
    steps.decimalSeparator = sep;
    waveExports.decimalSeparator = sep;
    steps.afterStep3 = [this] { afterStep3(); };
    steps.valuesShown = [this] {
        if (showState)
            showState();
    };
    outputs.observationOutput = [this] { steps.observation.positionFrozen = true; };
    state.CurrentDir = startup.currentDir;
    state.ProfilePath = startup.profilePath;
    state.ProfileName = startup.profileName;
    outputs.TsvFileName = startup.tsvFileName;
    outputs.CurrentDir = startup.currentDir;
    DebugFlag = startup.debugFlag;
    // "-d" asks the server for its debugging answer, as a user name starting with "*" does.
    if (DebugFlag != 0)
        transferHistory.serverDebug = 1;
    Caption = WindowCaption(state.ProfileName);
}

void MainModel::open() {
    // The sound-mixer entries belong to systems older than version 6.0.
    if (CompareVersions(m_environment.osVersion, "6.0", 2) >= 0)
        playbackMixerEnabled = recordingMixerEnabled = false;
    const std::string id = "0000000" + m_environment.processId;
    steps.TempWave = m_environment.tempDir + "~" + id.substr(id.size() - 8);
    // A run that was killed left its recordings behind; one ended by a signal removes its own.
    RemoveStaleRecordings(m_environment.tempDir);
    RemoveOnTermination({steps.TempWave + ".wav", steps.TempWave + ".tmp"});
    profiles.LoadWindowSettings();
    profiles.GetProfileSettings();
}

bool MainModel::close(std::string* error) {
    const bool saved = profiles.SaveWindowSettings(error);
    std::error_code ignored;
    std::filesystem::remove(steps.TempWave + ".wav", ignored);
    std::filesystem::remove(steps.TempWave + ".tmp", ignored);
    return saved;
}

bool MainModel::onClockTick(std::time_t now) {
    const std::tm local = LocalTime(now);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    if (clockText == text)
        return false;
    clockText = text;
    return true;
}

void MainModel::recordTsv() {
    outputs.focus = FocusTarget::Unchanged;
    outputs.recordTsv();
    if (outputs.focus != FocusTarget::Unchanged)
        focus = outputs.focus;
}

ReportSource MainModel::reportSource() const {
    return ReportSource{setup,
                        steps.observation,
                        steps.gridMeas,
                        steps.gridCalc,
                        steps.NumAntGain,
                        steps.NumAntFact,
                        m_environment.decimalSeparator};
}

std::optional<double> MainModel::AntennaValueAt(double frequencyMHz) {
    return antenna.ValueAt(frequencyMHz);
}

void MainModel::ProfileNameChanged(const std::string& profileName) {
    Caption = WindowCaption(profileName);
}

Recording MainModel::RecordWave(const RecordingRequest& request) {
    const Recording rec = state.InputDevice == kFileInputName
                              ? m_fileInput.RecordWave(request)
                              : m_ports.deviceInput.RecordWave(request);
    // A new recording can be kept, plotted and played.
    if (rec.status == RecordingStatus::Recorded)
        waveExports.enableWaveCommands();
    return rec;
}

void MainModel::GetPosition(const std::function<void(SetupRecord&)>& capture) {
    focus = capturePosition(setup, commands, capture);
    Observation& o = steps.observation;
    // Taken after the steps but before anything was output, the position belongs to the
    // observation just measured; once output, the observation stays as it went out.
    if (!o.ObsTime.empty() && !o.positionFrozen && !setup.lat.empty() && !setup.lon.empty()) {
        o.ObsLat = FormatObsCoordinate(setup.lat, m_environment.decimalSeparator);
        o.ObsLon = FormatObsCoordinate(setup.lon, m_environment.decimalSeparator);
    }
}

void MainModel::runStep(void (MeasurementSteps::*step)(), const std::string& title) {
    // Every way to start a step checks the boxes as a click on its button does.
    if (const auto refused = form.checkAllFields()) {
        focus = FocusTarget::SetupBox;
        focusField = *refused;
        return;
    }
    m_recordingTitle = title;
    steps.focus = FocusTarget::Unchanged;
    (steps.*step)();
    if (steps.focus != FocusTarget::Unchanged)
        focus = steps.focus;
}

void MainModel::afterStep3() {
    if (options.AutoTsv && commands.recordTsvEnabled)
        recordTsv();
    else if (!options.AutoTsv && commands.recordTsvEnabled && commands.recordTsvButtonEnabled)
        focus = FocusTarget::recordTsvButtonEnabled;
}

} // namespace zav
