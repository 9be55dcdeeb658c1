#include "measure/CalRxModel.h"

#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

CalRxModel::CalRxModel(SetupRecord& setup, double yfact, Dialogs& dialogs,
                       std::function<void()> recalculate, char decimalSeparator)
    : m_setup(setup), m_yfact(yfact), m_dialogs(dialogs), m_recalculate(std::move(recalculate)),
      m_separator(decimalSeparator) {}

const char* CalRxModel::SourceCaption(CalSource source) {
    switch (source) {
    case CalSource::Carrier:
        return "Carrier (dBm)";
    case CalSource::NoiseDensity:
        return "Noise density (dBm/Hz)";
    case CalSource::ExcessNoiseRatio:
        break;
    }
    return "Excess noise ratio (dB)";
}

void CalRxModel::chooseSource(CalSource source) {
    Source = source;
    update();
}

std::string CalRxModel::shown(const std::optional<double>& value) const {
    return value ? Format(*value, "0.00", m_separator) : std::string();
}

void CalRxModel::update() {
    CalibrationInputs in;
    in.yfact = m_yfact;
    in.bandwidthHz = Number(m_setup.Bandwidth, m_separator);
    in.attenuatorDb = Number(m_setup.Attenuator, m_separator);
    in.lossDb = Number(m_setup.Loss, m_separator);

    const bool levelOk = IsNumber(CalLevel, m_separator);
    result = CalibrateReceiver(Source, Number(CalLevel, m_separator), in);
    yFactorText = shown(result.yFactorDb);
    statusText.clear();
    if (result.status == CalStatus::TooWeak) {
        // The source's level does not matter: say so even before one is typed.
        statusText = kTooWeak;
    } else if (levelOk && result.status == CalStatus::NotPhysical) {
        statusText = kNotPhysical;
    }
    if (!levelOk) {
        result.systemNfDb.reset();
        result.receiverNfDb.reset();
        result.noiseFloorDbm.reset();
    }
    systemNfText = shown(result.systemNfDb);
    receiverNfText = shown(result.receiverNfDb);
    noiseFloorText = shown(result.noiseFloorDbm);
    ApplyEnabled = levelOk && result.status == CalStatus::Done;
}

void CalRxModel::calibrationLevelLeft(bool& keepFocus) {
    if (IsNumber(CalLevel, m_separator))
        return;
    m_dialogs.ShowMessage("Level must be a number", "Value error:", MessageIcon::None,
                          MessageButtons::Ok);
    keepFocus = true;
    CalLevelFocus = true;
}

void CalRxModel::applyCalibration() {
    bool cancel = false;
    calibrationLevelLeft(cancel);
    if (cancel)
        return;
    update();
    if (!ApplyEnabled)
        return;
    m_setup.RxNF = Format(*result.receiverNfDb, "0.00", m_separator);
    if (m_recalculate)
        m_recalculate();
    CloseRequested = true;
}

} // namespace zav
