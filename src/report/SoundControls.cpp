#include "report/SoundControls.h"

namespace zav {

std::vector<ProgramLaunch> SoundPanelLaunchers(SoundPanel panel) {
#if defined(_WIN32)
    switch (panel) {
    case SoundPanel::Playback:
        return {{"sndvol32.exe", ""}, {"sndvol.exe", ""}};
    case SoundPanel::Recording:
        return {{"sndvol32.exe", "-R"}, {"control.exe", "mmsys.cpl,,1"}};
    case SoundPanel::Devices:
        break;
    }
    return {{"control.exe", "mmsys.cpl,,1"}};
#elif defined(__APPLE__)
    (void)panel;
    return {{"open", "-b com.apple.preference.sound"}};
#else
    // pavucontrol's tabs: 1 playback streams, 2 recording streams, 4 input devices.
    const char* tab = panel == SoundPanel::Playback    ? "--tab=1"
                      : panel == SoundPanel::Recording ? "--tab=2"
                                                       : "--tab=4";
    return {{"pavucontrol", tab},
            {"gnome-control-center", "sound"},
            {"systemsettings", "kcm_pulseaudio"},
            {"pavucontrol-qt", tab},
            {"mate-volume-control", ""}};
#endif
}

void SoundControls::open(SoundPanel panel) {
    for (const ProgramLaunch& launch : SoundPanelLaunchers(panel))
        if (m_shell.Run(launch.program, launch.arguments))
            return;
}

} // namespace zav
