#pragma once

#include "config/FocusTarget.h"

#include <optional>
#include <string>

namespace zav {

// What the set-up form, the options and the profile commands ask of the rest of the main
// window: the measurement steps, the antenna file and the window itself. The main window's
// model implements it; tests record the calls.
class SetupEvents {
public:
    virtual ~SetupEvents() = default;

    // Recompute the results grid from the steps and the set-up.
    virtual void recalculate() = 0;
    // Discard steps 1 to 3 (and the results).
    virtual void resetFromStep1() = 0;
    // Discard step 3 (and the results).
    virtual void resetFromStep3() = 0;

    // The loaded antenna file's factor at `frequencyMHz`, dB/m; nothing while no file is
    // loaded.
    virtual std::optional<double> AntennaValueAt(double frequencyMHz) = 0;
    // "&Unload antenna file".
    virtual void UnloadAntennaFile() = 0;
    // Loads the file that SetupRecord::AntFileName names (clearing the name if it fails).
    virtual void LoadAntennaFile() = 0;

    virtual void SetFocus(FocusTarget target) = 0;
    // A profile was opened or saved under another name: the window caption names it.
    virtual void ProfileNameChanged(const std::string& profileName) = 0;
};

} // namespace zav
