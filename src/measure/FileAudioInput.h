#pragma once

#include "platform/AudioInput.h"
#include "platform/Dialogs.h"

#include <functional>
#include <optional>
#include <string>

namespace zav {

// The "recordings from files" input: a step takes a WAVE file recorded elsewhere (a field
// recorder, an earlier session) through exactly the analysis a live recording gets. The file
// is copied whole to the step's recording path; its modification time stamps the
// observation.
class FileAudioInput : public AudioInput {
public:
    // `chooseFile` names the file for the next step, or nothing when the operator cancels.
    FileAudioInput(Dialogs& dialogs, std::function<std::optional<std::string>()> chooseFile)
        : m_dialogs(dialogs), m_chooseFile(std::move(chooseFile)) {}

    Recording RecordWave(const RecordingRequest& request) override;

private:
    Dialogs& m_dialogs;
    std::function<std::optional<std::string>()> m_chooseFile;
};

} // namespace zav
