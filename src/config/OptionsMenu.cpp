#include "config/OptionsMenu.h"

#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

OptionsMenu::OptionsMenu(Options& options, SetupRecord& record, SetupControls& controls,
                         CommandStates& commands, SetupEvents& events, char decimalSeparator)
    : decimalSeparator(decimalSeparator), m_options(options), m_record(record),
      m_controls(controls), m_commands(commands), m_events(events) {}

void OptionsMenu::toggleBeep() {
    m_options.Beep = !m_options.Beep;
}

void OptionsMenu::toggleVerbose() {
    m_options.Verbose = !m_options.Verbose;
}

void OptionsMenu::toggleAutoTsv() {
    m_options.AutoTsv = !m_options.AutoTsv;
}

void OptionsMenu::toggleAntennaFactor() {
    m_options.AntFact = !m_options.AntFact;
    // The conversion is its own inverse, so both directions use it.
    const double converted = GainToFactor(Number(m_record.AntGain, decimalSeparator),
                                          Number(m_record.Frequency, decimalSeparator));
    m_record.AntGain = Format(converted, "0.00", decimalSeparator);
    m_controls.antGainLabel = SetupControls::AntGainCaption(m_options.AntFact);
}

void OptionsMenu::toggleSamples() {
    m_options.Samples = !m_options.Samples;
    m_controls.intervalLabel = SetupControls::IntervalCaption(m_options.Samples);
    m_record.Interval = m_record.IntervalTag = m_options.Samples ? "8" : "500";
    m_events.resetFromStep1();
    m_events.SetFocus(FocusTarget::Step1);
}

void OptionsMenu::toggleLimits() {
    m_options.Limits = !m_options.Limits;
    if (m_options.Limits) {
        m_events.resetFromStep1();
        m_events.SetFocus(FocusTarget::Step1);
        return;
    }
    m_events.recalculate();
    // Results without the limits may be looked at, never recorded, reported or calibrated
    // with.
    m_commands.recordTsvButtonEnabled = false;
    m_commands.calibrateRxEnabled = false;
    m_commands.saveTextEnabled = false;
    m_commands.recordTsvEnabled = false;
    m_commands.sendTextEnabled = false;
    m_commands.transferEnabled = false;
    m_commands.copyTextEnabled = false;
    if (m_commands.Step3)
        m_events.SetFocus(FocusTarget::Step3);
}

void OptionsMenu::antGainLabelDoubleClicked() {
    if (m_controls.AntGainEnabled)
        toggleAntennaFactor();
}

void OptionsMenu::intervalLabelDoubleClicked() {
    toggleSamples();
}

} // namespace zav
