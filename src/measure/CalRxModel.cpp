#include "measure/CalRxModel.h"

#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

CalRxModel::CalRxModel(SetupRecord& setup, double yfact, Dialogs& dialogs,
                       std::function<void()> calcCalc, char decimalSeparator)
    : m_setup(setup), m_yfact(yfact), m_dialogs(dialogs), m_calcCalc(std::move(calcCalc)),
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

void CalRxModel::Source_Click(CalSource source) {
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
    lblYFactor = shown(result.yFactorDb);
    lblStatus.clear();
    if (result.status == CalStatus::TooWeak) {
        // The source's level does not matter: say so even before one is typed.
        lblStatus = kTooWeak;
    } else if (levelOk && result.status == CalStatus::NotPhysical) {
        lblStatus = kNotPhysical;
    }
    if (!levelOk) {
        result.systemNfDb.reset();
        result.receiverNfDb.reset();
        result.noiseFloorDbm.reset();
    }
    lblSystemNF = shown(result.systemNfDb);
    lblReceiverNF = shown(result.receiverNfDb);
    lblNoiseFloor = shown(result.noiseFloorDbm);
    ApplyEnabled = levelOk && result.status == CalStatus::Done;
}

void CalRxModel::CalLevel_Validate(bool& Cancel) {
    if (IsNumber(CalLevel, m_separator))
        return;
    m_dialogs.ShowMessage("Level must be a number", "Value error:", MessageIcon::None,
                          MessageButtons::Ok);
    Cancel = true;
    CalLevelFocus = true;
}

void CalRxModel::Apply_Click() {
    bool cancel = false;
    CalLevel_Validate(cancel);
    if (cancel)
        return;
    update();
    if (!ApplyEnabled)
        return;
    m_setup.RxNF = Format(*result.receiverNfDb, "0.00", m_separator);
    if (m_calcCalc)
        m_calcCalc();
    CloseRequested = true;
}

} // namespace zav
