#include "report/WaveformExports.h"

#include "platform/AtomicFile.h"
#include "platform/Version.h"
#include "report/WaveSampleReader.h"
#include "report/WaveformText.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace zav {
namespace {

// Copies `from` to `to` through a temporary file, so a failed copy leaves `to` as it was.
bool copyFile(const std::string& from, const std::string& to) {
    std::ifstream in(std::filesystem::path(std::u8string(from.begin(), from.end())),
                     std::ios::binary);
    if (!in)
        return false;
    AtomicFileWriter writer(to);
    char buffer[65536];
    while (in && writer.Stream()) {
        in.read(buffer, sizeof buffer);
        writer.Stream().write(buffer, in.gcount());
    }
    if (in.bad())
        return false;
    return writer.Commit();
}

} // namespace

std::optional<std::string> WaveformExports::askSaveName(const WaveformSource& source,
                                                        const char* filter) {
    FileDialogRequest request;
    request.initialDir = source.currentDir;
    request.filter = filter;
    request.filterIndex = 2;
    request.fileName = source.obsTime;
    return m_ports.dialogs.SaveFileName(request);
}

void WaveformExports::MenuSaveWave_Click() {
    const WaveformSource source = m_source();
    const auto path = askSaveName(source, "All Files (*.*)|*.*|Wave files (*.wav)|*.wav");
    status.clear();
    if (!path)
        return;
    // A failed copy ends the command without a message box.
    status = copyFile(source.wavePath, *path)
                 ? "Recording saved to " + *path
                 : "Recording not saved: " + *path + " could not be written";
}

void WaveformExports::MenuExportGnuplot_Click() {
    const WaveformSource source = m_source();
    WaveSampleReader samples;
    if (samples.Open(source.wavePath, m_ports.dialogs) != WaveSampleReader::Status::Ok)
        return;
    const auto path = askSaveName(source, "All Files (*.*)|*.*|Plot files (*.plt)|*.plt");
    status.clear();
    if (!path)
        return;
    AtomicFileWriter writer(*path);
    const bool written =
        WriteGnuplotScript(samples, source.stepTitle, source.obsTime, writer.Stream()) &&
        writer.Commit();
    status = written ? "Gnuplot file exported to " + *path
                     : "Gnuplot file not exported: " + *path + " could not be written";
}

void WaveformExports::MenuCopyWaveClip_Click() {
    const WaveformSource source = m_source();
    WaveSampleReader samples;
    if (samples.Open(source.wavePath, m_ports.dialogs) != WaveSampleReader::Status::Ok)
        return;
    std::ostringstream table;
    WriteSampleTable(samples, table, decimalSeparator);
    m_ports.clipboard.SetText(table.str());
    status = "Wave samples copied to the clipboard";
}

void WaveformExports::MenuPlotWave_Click() {
    const WaveformSource source = m_source();
    auto plot = LoadWavePlot(source.wavePath, source.stepTitle, source.obsTime, m_ports.dialogs);
    if (plot && showPlot)
        showPlot(std::move(*plot));
}

void WaveformExports::MenuPlayWave_Click() {
    const auto error = m_ports.output.PlayWave(m_source().wavePath);
    if (error)
        m_ports.dialogs.ShowMessage("Error: playing wave file: " + error->text + "(" +
                                        std::to_string(error->number) + ").",
                                    kAppTitle, MessageIcon::Critical);
}

void WaveformExports::EnableWaveCommands() {
    MenuSaveWave = MenuCopyWaveClip = MenuPlotWave = MenuPlayWave = true;
    m_commands.MenuExportGnuplot = true;
}

} // namespace zav
