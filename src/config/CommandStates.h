#pragma once

namespace zav {

// Enabled states of the main window's commands that the core decides. Everything that
// results, reports or logs an observation starts disabled until a calculation succeeds.
struct CommandStates {
    bool Step2 = false;
    bool Step3 = false;
    bool MenuCalRx = false;
    bool MenuSaveText = false;
    bool MenuExportGnuplot = false;
    bool MenuSaveTsv = false;
    bool MenuSendText = false;
    bool MenuTransfer = false;
    bool MenuCopyTextClip = false;
    bool RTSVB = false; // the "Record TS&V" button

    // The seven commands that use a calculation's results.
    void SetOutputCommands(bool enabled) {
        MenuCalRx = MenuSaveText = MenuExportGnuplot = MenuSaveTsv = MenuSendText = MenuTransfer =
            MenuCopyTextClip = enabled;
    }
};

} // namespace zav
