#include "cli/HeadlessModel.h"

#include "platform/Paths.h"
#include "platform/TempFolder.h"

#include <QCoreApplication>

#include <filesystem>

namespace zav {

// The devices a headless run has: none that records, sounds, mails or opens documents.
struct HeadlessModel::Devices : AudioInput, AudioOutput, Beeper, Clipboard, Mailer, Shell {
    explicit Devices(HeadlessModel& owner) : m_owner(owner) {}
    Recording RecordWave(const RecordingRequest&) override { return {}; }
    void Beep(int, int) override {}
    void SetText(const std::string& text) override { m_owner.clipboard = text; }
    bool Send(const MailMessage&) override { return false; }
    std::optional<DeviceError> PlayWave(const std::string&) override { return std::nullopt; }
    int Open(const std::string&) override { return 31; } // nothing opens documents here
    bool Run(const std::string&, const std::string&) override { return false; }

private:
    HeadlessModel& m_owner;
};

HeadlessModel::HeadlessModel(const std::string& profilePath, std::ostream& err)
    : m_dialogs(err), m_devices(std::make_unique<Devices>(*this)) {
    m_dialogs.showPrompts = false;
    StartupState startup;
    startup.currentDir = WithTrailingSeparator(std::filesystem::current_path().string());
    startup.profilePath = profilePath;
    startup.profileName = ProfileBaseName(profilePath);
    MainEnvironment environment;
    std::string folderError;
    environment.tempDir = PrivateTempFolder(&folderError);
    if (environment.tempDir.empty())
        err << "zavcli: " << folderError << "\n";
    environment.processId =
        QString::number(QCoreApplication::applicationPid(), 16).toUpper().toStdString();
    m_model = std::make_unique<MainModel>(startup,
                                          MainPorts{m_dialogs, m_settings, *m_devices, *m_devices,
                                                    *m_devices, *m_devices, *m_devices, *m_devices},
                                          environment);
    m_model->chooseRecording = [this]() -> std::optional<std::string> {
        if (recordings.empty())
            return std::nullopt;
        std::string next = recordings.front();
        recordings.pop_front();
        return next;
    };
    m_model->open();
    m_model->state.InputDevice = kFileInputName;
}

HeadlessModel::~HeadlessModel() {
    // The step recordings are this run's own; the profile and settings are left alone.
    std::error_code ignored;
    std::filesystem::remove(m_model->steps.TempWave + ".wav", ignored);
    std::filesystem::remove(m_model->steps.TempWave + ".tmp", ignored);
}

} // namespace zav
