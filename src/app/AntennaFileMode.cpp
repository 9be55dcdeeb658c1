#include "app/AntennaFileMode.h"

#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

void AntennaFileMode::importAntennaFile(const std::string& startDir) {
    FileDialogRequest request;
    request.initialDir = startDir;
    request.filter = "Text files (*.tab)|*.tab";
    const auto path = m_dialogs.OpenFileName(request);
    if (!path)
        return;
    m_record.AntFileName = *path;
    LoadAntennaFile();
}

void AntennaFileMode::LoadAntennaFile() {
    AntennaFile file = ReadAntennaFile(m_record.AntFileName, m_dialogs, decimalSeparator);
    if (file.Antenna)
        m_record.Antenna = *file.Antenna;
    if (!file.Ok) {
        m_record.AntFileName.clear();
        m_table.clear();
        m_controls.AntGainEnabled = true;
        m_controls.antennaFactorEnabled = true;
        unloadAntennaEnabled = false;
        m_events.recalculate();
        return;
    }
    m_table = std::move(file.IntTable);
    // The file holds antenna factors: the box turns into one before it takes the file's.
    m_options.AntFact = false;
    m_optionsMenu.toggleAntennaFactor();
    m_controls.antennaFactorEnabled = false;
    m_controls.AntGainEnabled = false;
    unloadAntennaEnabled = true;
    m_record.AntGain =
        Format(*ValueAt(Number(m_record.Frequency, decimalSeparator)), "0.00", decimalSeparator);
    m_events.recalculate();
}

void AntennaFileMode::unloadAntennaFile() {
    m_controls.antennaFactorEnabled = true;
    m_controls.AntGainEnabled = true;
    unloadAntennaEnabled = false;
    m_record.AntFileName.clear();
    m_table.clear();
    m_events.recalculate();
}

std::optional<double> AntennaFileMode::ValueAt(double frequencyMHz) const {
    if (m_table.empty())
        return std::nullopt;
    return csinterpolate(m_table, frequencyMHz);
}

} // namespace zav
