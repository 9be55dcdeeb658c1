#pragma once

namespace zav {

// Enabled states of the main window's commands that the core decides. Everything that
// results, reports or logs an observation starts disabled until a calculation succeeds.
struct CommandStates {
    bool Step2 = false;
    bool Step3 = false;
    bool calibrateRxEnabled = false;
    bool saveTextEnabled = false;
    bool exportGnuplotEnabled = false;
    bool recordTsvEnabled = false;
    bool sendTextEnabled = false;
    bool transferEnabled = false;
    bool copyTextEnabled = false;
    bool recordTsvButtonEnabled = false; // the "Record TS&V" button

    // The seven commands that use a calculation's results.
    void enableOutputCommands(bool enabled) {
        calibrateRxEnabled = saveTextEnabled = exportGnuplotEnabled = recordTsvEnabled =
            sendTextEnabled = transferEnabled = copyTextEnabled = enabled;
    }
};

} // namespace zav
