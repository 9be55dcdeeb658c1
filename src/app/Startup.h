#pragma once

#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"

#include <string>
#include <string_view>

namespace zav {

// What the command line settles before the main window opens.
struct StartupState {
    std::string currentDir;  // with a trailing separator
    std::string profilePath; // full path of the profile to open
    std::string profileName; // its base name, for the caption
    std::string tsvFileName = "ZavData.tab";
    int debugFlag = 0;
};

struct StartupDecision {
    bool showWindow = false; // false: the usage box or an option error was shown; end
    StartupState state;
};

// Main's decisions: reads the options "dhlt:" from `commandLine` (at most five arguments),
// shows the usage box or an option error through `dialogs`, and otherwise names the profile,
// the data log and the debug flag. Shared by the desktop program and the tests.
StartupDecision DecideStartup(std::string_view commandLine, std::string_view currentDirectory,
                              const SettingsStore& settings, Dialogs& dialogs);

// The usage box's text: five lines, each ended by a carriage return alone.
std::string UsageText();

} // namespace zav
