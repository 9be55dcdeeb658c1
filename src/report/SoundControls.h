#pragma once

#include "platform/Shell.h"

#include <string>
#include <vector>

namespace zav {

// Which view of the system's sound settings to open.
enum class SoundPanel {
    Playback,  // the playback mixer
    Recording, // the recording mixer
    Devices,   // the sound settings, on the recording devices
};

struct ProgramLaunch {
    std::string program;
    std::string arguments;
};

// The programs that can show `panel` on this platform, the preferred one first: the
// PulseAudio mixer where installed, else the desktop's own sound settings.
std::vector<ProgramLaunch> SoundPanelLaunchers(SoundPanel panel);

// The Utility menu's entries that open the system's sound mixer and settings. Whether they
// open is not examined beyond trying the next program when one does not start; none of them
// shows a message.
class SoundControls {
public:
    explicit SoundControls(Shell& shell) : m_shell(shell) {}

    void openPlaybackMixer() { open(SoundPanel::Playback); }
    void openRecordingMixer() { open(SoundPanel::Recording); }
    void openSoundDevices() { open(SoundPanel::Devices); }

private:
    void open(SoundPanel panel);

    Shell& m_shell;
};

} // namespace zav
