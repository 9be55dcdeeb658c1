#include "report/ObservationOutputs.h"

#include "platform/AtomicFile.h"
#include "platform/Version.h"
#include "report/DataLog.h"
#include "report/TextReport.h"

namespace zav {

void ObservationOutputs::MenuSaveTsv_Click() {
    std::string error;
    if (!AppendDataLog(TsvFileName, m_source(), &error)) {
        m_ports.dialogs.ShowMessage("Error: the data log could not be written: " + error, kAppTitle,
                                    MessageIcon::Critical);
        return;
    }
    m_commands.MenuSaveTsv = false;
    m_commands.RTSVB = false;
    focus = FocusTarget::Step3;
}

void ObservationOutputs::MenuSaveText_Click() {
    const ReportSource source = m_source();
    FileDialogRequest request;
    request.initialDir = CurrentDir;
    request.filter = "All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab";
    request.filterIndex = 2;
    request.fileName = source.observation.ObsTime;
    const auto path = m_ports.dialogs.SaveFileName(request);
    if (!path)
        return;
    // The old file stays whole if the write fails.
    std::string error;
    if (!WriteFileAtomically(*path, SavedTextResults(source), &error))
        m_ports.dialogs.ShowMessage("Error: the report could not be saved: " + error, kAppTitle,
                                    MessageIcon::Critical);
}

void ObservationOutputs::MenuCopyTextClip_Click() {
    m_ports.clipboard.SetText(TextResults(m_source()));
}

void ObservationOutputs::MenuSendText_Click() {
    const ReportSource source = m_source();
    const MailMessage message{"", EmailSubject(source.observation), EmailTextResults(source)};
    if (!m_ports.mailer.Send(message))
        m_ports.dialogs.ShowMessage("Error: unable to perform MAPI login.", kAppTitle,
                                    MessageIcon::Critical);
}

void ObservationOutputs::Notes_DblClick() {
    m_ports.clipboard.SetText(m_source().setup.Notes);
}

} // namespace zav
