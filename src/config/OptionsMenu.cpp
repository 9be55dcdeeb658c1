#include "config/OptionsMenu.h"

#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

OptionsMenu::OptionsMenu(Options& options, SetupRecord& record, SetupControls& controls,
                         CommandStates& commands, SetupEvents& events, char decimalSeparator)
    : decimalSeparator(decimalSeparator), m_options(options), m_record(record),
      m_controls(controls), m_commands(commands), m_events(events) {}

void OptionsMenu::MenuOptionsBeep_Click() {
    m_options.Beep = !m_options.Beep;
}

void OptionsMenu::MenuOptionsVerbose_Click() {
    m_options.Verbose = !m_options.Verbose;
}

void OptionsMenu::MenuOptionsAutoTsv_Click() {
    m_options.AutoTsv = !m_options.AutoTsv;
}

void OptionsMenu::MenuOptionsAntFact_Click() {
    m_options.AntFact = !m_options.AntFact;
    // The conversion is its own inverse, so both directions use it.
    const double converted = GainToFactor(Number(m_record.AntGain, decimalSeparator),
                                          Number(m_record.Frequency, decimalSeparator));
    m_record.AntGain = Format(converted, "0.00", decimalSeparator);
    m_controls.lblAntGain = SetupControls::AntGainCaption(m_options.AntFact);
}

void OptionsMenu::MenuOptionsSamples_Click() {
    m_options.Samples = !m_options.Samples;
    m_controls.lblInterval = SetupControls::IntervalCaption(m_options.Samples);
    m_record.Interval = m_record.IntervalTag = m_options.Samples ? "8" : "500";
    m_events.Reset1();
    m_events.SetFocus(FocusTarget::Step1);
}

void OptionsMenu::MenuOptionsLimits_Click() {
    m_options.Limits = !m_options.Limits;
    if (m_options.Limits) {
        m_events.Reset1();
        m_events.SetFocus(FocusTarget::Step1);
        return;
    }
    m_events.CalcCalc();
    // Results without the limits may be looked at, never recorded, reported or calibrated
    // with.
    m_commands.RTSVB = false;
    m_commands.MenuCalRx = false;
    m_commands.MenuSaveText = false;
    m_commands.MenuSaveTsv = false;
    m_commands.MenuSendText = false;
    m_commands.MenuTransfer = false;
    m_commands.MenuCopyTextClip = false;
    if (m_commands.Step3)
        m_events.SetFocus(FocusTarget::Step3);
}

void OptionsMenu::lblAntGain_DblClick() {
    if (m_controls.AntGainEnabled)
        MenuOptionsAntFact_Click();
}

void OptionsMenu::lblInterval_DblClick() {
    MenuOptionsSamples_Click();
}

} // namespace zav
