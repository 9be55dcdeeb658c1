#include "report/WaveformExports.h"

#include "platform/AtomicFile.h"
#include "platform/FileAccess.h"
#include "platform/Version.h"
#include "report/WaveSampleReader.h"
#include "report/WaveformText.h"

#include <cstdio>
#include <sstream>

namespace zav {
namespace {

// Copies `from` to `to` through a temporary file, so a failed copy leaves `to` as it was.
bool copyFile(const std::string& from, const std::string& to, std::string& error) {
    std::FILE* in = OpenRegularFile(from, &error);
    if (!in) {
        error = from + ": " + error;
        return false;
    }
    AtomicFileWriter writer(to);
    char buffer[65536];
    std::size_t got;
    while (writer.Stream() && (got = std::fread(buffer, 1, sizeof buffer, in)) > 0)
        writer.Stream().write(buffer, static_cast<std::streamsize>(got));
    const bool readFailed = std::ferror(in) != 0;
    std::fclose(in);
    if (readFailed) {
        error = "cannot read " + from;
        return false;
    }
    return writer.Commit(&error);
}

} // namespace

void WaveformExports::showFailedSave(const std::string& error) {
    m_ports.dialogs.ShowMessage("Error: the file could not be saved: " + error, kAppTitle,
                                MessageIcon::Critical);
}

std::optional<std::string> WaveformExports::askSaveName(const WaveformSource& source,
                                                        const char* filter) {
    FileDialogRequest request;
    request.initialDir = source.currentDir;
    request.filter = filter;
    request.filterIndex = 2;
    request.fileName = source.obsTime;
    return m_ports.dialogs.SaveFileName(request);
}

void WaveformExports::saveWave() {
    const WaveformSource source = m_source();
    const auto path = askSaveName(source, "All Files (*.*)|*.*|Wave files (*.wav)|*.wav");
    status.clear();
    if (!path)
        return;
    std::string error;
    if (!copyFile(source.wavePath, *path, error)) {
        status = "Recording not saved: " + error;
        showFailedSave(error);
        return;
    }
    status = "Recording saved to " + *path;
}

void WaveformExports::exportGnuplot() {
    const WaveformSource source = m_source();
    WaveSampleReader samples;
    if (samples.Open(source.wavePath, m_ports.dialogs) != WaveSampleReader::Status::Ok)
        return;
    const auto path = askSaveName(source, "All Files (*.*)|*.*|Plot files (*.plt)|*.plt");
    status.clear();
    if (!path)
        return;
    AtomicFileWriter writer(*path);
    std::string error;
    const bool written =
        WriteGnuplotScript(samples, source.stepTitle, source.obsTime, writer.Stream());
    // The script is written only through its stream: when that failed, the commit refuses
    // and says why, and the old file stays.
    if (!writer.Commit(&error) || !written) {
        if (error.empty())
            error = "cannot write " + *path;
        status = "Gnuplot file not exported: " + error;
        showFailedSave(error);
        return;
    }
    status = "Gnuplot file exported to " + *path;
}

void WaveformExports::copyWaveSamples() {
    const WaveformSource source = m_source();
    WaveSampleReader samples;
    if (samples.Open(source.wavePath, m_ports.dialogs) != WaveSampleReader::Status::Ok)
        return;
    std::ostringstream table;
    WriteSampleTable(samples, table, decimalSeparator);
    m_ports.clipboard.SetText(table.str());
    status = "Wave samples copied to the clipboard";
}

void WaveformExports::plotWave() {
    const WaveformSource source = m_source();
    auto plot = LoadWavePlot(source.wavePath, source.stepTitle, source.obsTime, m_ports.dialogs);
    if (plot && showPlot)
        showPlot(std::move(*plot));
}

void WaveformExports::playWave() {
    const auto error = m_ports.output.PlayWave(m_source().wavePath);
    if (error)
        m_ports.dialogs.ShowMessage("Error: playing wave file: " + error->text + "(" +
                                        std::to_string(error->number) + ").",
                                    kAppTitle, MessageIcon::Critical);
}

void WaveformExports::enableWaveCommands() {
    saveWaveEnabled = copyWaveEnabled = plotWaveEnabled = playWaveEnabled = true;
    m_commands.exportGnuplotEnabled = true;
}

} // namespace zav
