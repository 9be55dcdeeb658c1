#include "config/SetupForm.h"

#include "platform/Format.h"
#include "platform/Number.h"

#include <algorithm>

namespace zav {
namespace {

// Characters, not bytes: the view counts selections in characters.
int characterCount(const std::string& text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::string trimSpaces(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Entering selects the text of the tester's box and of every numeric box but the noise
// figure.
bool selectsOnEntry(SetupField field) {
    return field == SetupField::Tester || (IsNumericField(field) && field != SetupField::RxNF);
}

// Enter checks every numeric box; the interval box has its own copy of the checks.
bool checksOnEnter(SetupField field) {
    return IsNumericField(field) && field != SetupField::Interval;
}

} // namespace

SetupForm::SetupForm(SetupRecord& record, const Options& options, Dialogs& dialogs,
                     SetupEvents& events, char decimalSeparator)
    : decimalSeparator(decimalSeparator), m_record(record), m_options(options), m_dialogs(dialogs),
      m_events(events) {}

TextSelection SetupForm::Selection(SetupField field) const {
    return m_selection[static_cast<std::size_t>(field)];
}

void SetupForm::SelectText(SetupField field, int start, int length) {
    const int size = characterCount(FieldText(m_record, field));
    TextSelection& s = m_selection[static_cast<std::size_t>(field)];
    s.SelStart = std::clamp(start, 0, size);
    s.SelLength = std::clamp(length, 0, size - s.SelStart);
}

void SetupForm::fieldFocused(SetupField field) {
    if (selectsOnEntry(field))
        SelectText(field);
}

KeyOutcome SetupForm::keyPressed(SetupField field, Key key) {
    if (key != Key::Enter)
        return KeyOutcome::PassedOn;
    if (field == SetupField::Interval) {
        // Enter only tells the operator what is wrong; the steps are reset, and the box is
        // held, only when the box is left.
        intervalAccepted(true);
    } else if (checksOnEnter(field)) {
        bool cancel = false;
        fieldLeft(field, cancel);
    } else {
        return KeyOutcome::PassedOn;
    }
    SelectText(field);
    return KeyOutcome::Swallowed;
}

void SetupForm::valueError(const char* message) {
    m_dialogs.ShowMessage(message, "Value error:", MessageIcon::None, MessageButtons::Ok);
}

void SetupForm::tidyNumber(std::string& text, const char* fallback, const char* pattern) {
    if (!IsNumber(text, decimalSeparator))
        text = fallback;
    text = Format(Number(text, decimalSeparator), pattern, decimalSeparator);
}

bool SetupForm::checkRange(std::string& text, const char* pattern, double low, double high,
                           bool lowInclusive) {
    if (!IsNumber(text, decimalSeparator))
        return false;
    text = Format(Number(text, decimalSeparator), pattern, decimalSeparator);
    const double value = Number(text, decimalSeparator);
    return (lowInclusive ? value >= low : value > low) && value <= high;
}

bool SetupForm::intervalAccepted(bool enterKey) {
    std::string& text = m_record.Interval;
    if (m_options.Samples) {
        text = trimSpaces(text);
        const std::string allowed = " 8 16 32 64 128 256 ";
        if (allowed.find(" " + text + " ") != std::string::npos && IsNumber(text, decimalSeparator))
            return true;
        valueError(enterKey ? "Samples must be 8, 16, 32, 64, 128 or 256"
                            : "Samples must be 8, 16, 32, 64, 128, or 256");
        return false;
    }
    const double value = Number(text, decimalSeparator);
    if (IsNumber(text, decimalSeparator) && value >= 500 && value <= 10000)
        return true;
    valueError(enterKey ? "Interval must be >= 500 and <= 10000"
                        : "Interval must be >= 500 and <= 10,0000");
    return false;
}

void SetupForm::validateInterval(bool& keepFocus) {
    if (!intervalAccepted(false)) {
        keepFocus = true;
        return;
    }
    if (m_record.Interval != m_record.IntervalTag) {
        m_events.resetFromStep1(); // a new recording length invalidates every step
        m_record.IntervalTag = m_record.Interval;
    }
}

void SetupForm::recalculate() {
    if (m_deferCalc)
        m_calcDeferred = true;
    else
        m_events.recalculate();
}

std::optional<SetupField> SetupForm::checkAllFields() {
    m_deferCalc = true;
    m_calcDeferred = false;
    std::optional<SetupField> refused;
    for (int i = 0; i < kSetupFieldCount && !refused; ++i) {
        const auto field = static_cast<SetupField>(i);
        if (!IsNumericField(field))
            continue;
        bool cancel = false;
        fieldLeft(field, cancel);
        if (cancel)
            refused = field;
    }
    m_deferCalc = false;
    if (m_calcDeferred)
        m_events.recalculate();
    return refused;
}

void SetupForm::fieldLeft(SetupField field, bool& keepFocus) {
    std::string& text = FieldText(m_record, field);
    const char sep = decimalSeparator;
    switch (field) {
    case SetupField::RxNF:
        if (!IsNumber(text, sep) || Number(text, sep) < 0)
            text = "0";
        text = Format(Number(text, sep), "0.00", sep);
        recalculate();
        break;
    case SetupField::Bandwidth:
        if (!checkRange(text, "0", 0, 200000, false)) {
            valueError("Bandwidth must be > 0 and  <= 200000");
            keepFocus = true;
            break;
        }
        recalculate();
        break;
    case SetupField::Frequency:
        if (!checkRange(text, "0.000", 0.1, 10000, true)) {
            valueError("Frequency must be >= 0.1 and <= 10000");
            keepFocus = true;
            break;
        }
        // While an antenna file is loaded, the frequency decides the antenna factor.
        if (auto factor = m_events.AntennaValueAt(Number(text, sep)))
            m_record.AntGain = Format(*factor, "0.00", sep);
        recalculate();
        break;
    case SetupField::Attenuator:
    case SetupField::Loss:
        tidyNumber(text, "0", "0.0");
        recalculate();
        break;
    case SetupField::AntGain:
        tidyNumber(text, "0", "0.00");
        recalculate();
        break;
    case SetupField::lat:
    case SetupField::lon:
        // A position is optional: anything but a number leaves the box empty.
        if (!IsNumber(text, sep))
            text.clear();
        else
            text = Format(Number(text, sep), "0.000000", sep);
        break;
    case SetupField::AGC:
        if (IsNumber(text, sep))
            text = Format(Number(text, sep), "0", sep);
        if (!IsNumber(text, sep) || Number(text, sep) < 10) {
            valueError("AGC threshold must be >= 10");
            keepFocus = true;
            break;
        }
        if (text != m_record.AGCTag) {
            m_events.resetFromStep3(); // only the external reading depends on the AGC threshold
            m_record.AGCTag = text;
        }
        break;
    case SetupField::Interval:
        validateInterval(keepFocus);
        break;
    default:
        break;
    }
}

} // namespace zav
