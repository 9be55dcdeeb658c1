#pragma once

#include "platform/AudioInput.h"
#include "platform/AudioOutput.h"
#include "platform/Beeper.h"
#include "platform/Clipboard.h"
#include "platform/Dialogs.h"
#include "platform/Mailer.h"
#include "platform/SettingsStore.h"
#include "platform/Shell.h"

#include <string>

namespace zav {

// The outside world as the main window's model sees it.
struct MainPorts {
    Dialogs& dialogs;
    SettingsStore& settings;
    AudioInput& deviceInput; // the sound card; the file input is the model's own
    AudioOutput& audioOutput;
    Beeper& beeper;
    Clipboard& clipboard;
    Mailer& mailer;
    Shell& shell;
};

// Facts about the machine the model is told once.
struct MainEnvironment {
    char decimalSeparator = '.';
    std::string tempDir;   // where the step recordings live, private to the user (see
                           // PrivateTempFolder), with a trailing separator
    std::string processId; // makes the recordings' names this run's own
    std::string osVersion; // decides the two sound-mixer entries
};

} // namespace zav
