#include "report/ObservationOutputs.h"

#include "platform/AtomicFile.h"
#include "platform/Version.h"
#include "report/DataLog.h"
#include "report/TextReport.h"

#include <fstream>

namespace zav {
namespace {

// The log's rows after its heading line.
std::size_t dataRows(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::size_t lines = 0;
    for (std::string line; std::getline(in, line);)
        ++lines;
    return lines > 0 ? lines - 1 : 0;
}

} // namespace

void ObservationOutputs::recordTsv() {
    const ReportSource source = m_source();
    if (!HasResults(source))
        return;
    std::string error;
    if (!AppendDataLog(TsvFileName, source, &error)) {
        status = "No row appended: " + error;
        m_ports.dialogs.ShowMessage("Error: the data log could not be written: " + error, kAppTitle,
                                    MessageIcon::Critical);
        return;
    }
    status = "Row " + std::to_string(dataRows(TsvFileName)) + " appended to " + TsvFileName;
    m_commands.recordTsvEnabled = false;
    m_commands.recordTsvButtonEnabled = false;
    focus = FocusTarget::Step3;
    outputTaken();
}

void ObservationOutputs::saveText() {
    const ReportSource source = m_source();
    if (!HasResults(source))
        return;
    FileDialogRequest request;
    request.initialDir = CurrentDir;
    request.filter = "All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab";
    request.filterIndex = 2;
    request.fileName = source.observation.ObsTime;
    const auto path = m_ports.dialogs.SaveFileName(request);
    status.clear();
    if (!path)
        return;
    // The old file stays whole if the write fails.
    std::string error;
    if (!WriteFileAtomically(*path, SavedTextResults(source), &error)) {
        status = "Text results not saved: " + error;
        m_ports.dialogs.ShowMessage("Error: the report could not be saved: " + error, kAppTitle,
                                    MessageIcon::Critical);
        return;
    }
    status = "Text results saved to " + *path;
    outputTaken();
}

void ObservationOutputs::copyText() {
    const ReportSource source = m_source();
    if (!HasResults(source))
        return;
    m_ports.clipboard.SetText(TextResults(source));
    status = "Text results copied to the clipboard";
    outputTaken();
}

void ObservationOutputs::sendText() {
    const ReportSource source = m_source();
    if (!HasResults(source))
        return;
    const MailMessage message{"", EmailSubject(source.observation), EmailTextResults(source)};
    if (!m_ports.mailer.Send(message)) {
        m_ports.dialogs.ShowMessage("Error: unable to perform MAPI login.", kAppTitle,
                                    MessageIcon::Critical);
        return;
    }
    outputTaken();
}

void ObservationOutputs::copyNotes() {
    m_ports.clipboard.SetText(m_source().setup.Notes);
}

} // namespace zav
