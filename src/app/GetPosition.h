#pragma once

#include "config/CommandStates.h"
#include "config/FocusTarget.h"
#include "config/SetupRecord.h"

#include <functional>

namespace zav {

// The step the keyboard goes to after a position capture: the furthest one the operator can
// take next. Step 1 is always available.
inline FocusTarget FirstEnabledStep(const CommandStates& commands) {
    if (commands.Step3)
        return FocusTarget::Step3;
    if (commands.Step2)
        return FocusTarget::Step2;
    return FocusTarget::Step1;
}

// The main window's "Get position" button. The old position goes first, so a cancelled
// capture leaves the fields empty rather than showing a place the operator has left;
// `showGetPosition` runs the capture dialog modally and writes the averaged position into the
// set-up on OK. The result says where the focus goes next.
inline FocusTarget capturePosition(SetupRecord& setup, const CommandStates& commands,
                                   const std::function<void(SetupRecord&)>& showGetPosition) {
    setup.lat.clear();
    setup.lon.clear();
    if (showGetPosition)
        showGetPosition(setup);
    return FirstEnabledStep(commands);
}

} // namespace zav
