#pragma once

#include "config/CommandStates.h"
#include "config/Options.h"
#include "config/SetupControls.h"
#include "config/SetupEvents.h"
#include "config/SetupRecord.h"

namespace zav {

// The Options menu: each entry flips its check mark; some also change the set-up's units,
// labels or the state of the steps.
class OptionsMenu {
public:
    OptionsMenu(Options& options, SetupRecord& record, SetupControls& controls,
                CommandStates& commands, SetupEvents& events, char decimalSeparator = '.');

    void toggleBeep();
    void toggleVerbose();
    void toggleAutoTsv();
    // Gain in dBi <-> antenna factor in dB/m at the frequency in the box, rounded to 0.00.
    void toggleAntennaFactor();
    // Recording length in units of 1024 samples <-> milliseconds; every step is discarded.
    void toggleSamples();
    // On: start again from step 1. Off: results can be looked at but not used.
    void toggleLimits();
    void antGainLabelDoubleClicked();
    void intervalLabelDoubleClicked();

    char decimalSeparator;

private:
    Options& m_options;
    SetupRecord& m_record;
    SetupControls& m_controls;
    CommandStates& m_commands;
    SetupEvents& m_events;
};

} // namespace zav
