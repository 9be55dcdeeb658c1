#pragma once

#include "config/CommandStates.h"
#include "config/FocusTarget.h"
#include "platform/Clipboard.h"
#include "platform/Dialogs.h"
#include "platform/Mailer.h"
#include "report/ReportSource.h"

#include <functional>
#include <string>

namespace zav {

// The commands that take a finished observation out of the program: the data log row, the
// text report to a file, the clipboard or an e-mail, and the notes to the clipboard.
class ObservationOutputs {
public:
    struct Ports {
        Dialogs& dialogs;
        Clipboard& clipboard;
        Mailer& mailer;
    };

    ObservationOutputs(std::function<ReportSource()> source, CommandStates& commands, Ports ports)
        : m_source(std::move(source)), m_commands(commands), m_ports(ports) {}

    // Appends the row to `TsvFileName`; on success "&Record TSV" and its button are disabled
    // until the next calculation, so one observation is never logged twice. A failure is
    // shown with its reason and leaves both enabled for another try.
    void recordTsv();
    void saveText();
    void copyText();
    void sendText();
    void copyNotes();

    std::string TsvFileName = "ZavData.tab";
    std::string CurrentDir; // where the save dialog starts
    FocusTarget focus = FocusTarget::Unchanged;
    // Runs when an observation's results went out (logged, saved, copied or sent).
    std::function<void()> observationOutput;
    // What the last command did and where, for the status bar; empty when it was cancelled.
    std::string status;

private:
    void outputTaken() {
        if (observationOutput)
            observationOutput();
    }

    std::function<ReportSource()> m_source;
    CommandStates& m_commands;
    Ports m_ports;
};

} // namespace zav
