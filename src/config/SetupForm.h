#pragma once

#include "config/Options.h"
#include "config/SetupEvents.h"
#include "config/SetupField.h"
#include "config/SetupRecord.h"
#include "platform/Dialogs.h"

#include <array>
#include <optional>

namespace zav {

// A box's selection in characters, as the view should show it.
struct TextSelection {
    int SelStart = 0;
    int SelLength = 0;
};

// The set-up record's boxes and their checks. Numeric boxes tidy what was typed when the
// operator leaves them (or presses Enter); the range-checked ones keep the focus with a
// "Value error:" box until the text is acceptable. Nothing is filtered while typing.
class SetupForm {
public:
    static constexpr int kEnterKey = 13;

    SetupForm(SetupRecord& record, const Options& options, Dialogs& dialogs, SetupEvents& events,
              char decimalSeparator = '.');

    // Entering a box selects its text (for the boxes that do so).
    void GotFocus(SetupField field);
    // Enter checks the box, is swallowed (KeyAscii = 0) and selects the text again; any other
    // key passes unchanged.
    void KeyPress(SetupField field, int& KeyAscii);
    // Leaving the box: tidy, check, and on success recompute or reset what depends on it.
    // A refused value sets Cancel, which keeps the focus in the box.
    void Validate(SetupField field, bool& Cancel);
    // Checks every box as leaving it would, in the window's order, before a step runs by any
    // way (button, access key, menu, zavcli). Stops at the first refused value, whose message
    // has been shown, and returns it; the results are recomputed once if any box asked.
    std::optional<SetupField> ValidateAll();

    TextSelection Selection(SetupField field) const;
    // Selects `length` characters from `start`, cut to the text as it stands.
    void SelectText(SetupField field, int start = 0, int length = 100);

    void Tester_GotFocus() { GotFocus(SetupField::Tester); }
    void lat_GotFocus() { GotFocus(SetupField::lat); }
    void lon_GotFocus() { GotFocus(SetupField::lon); }
    void Frequency_GotFocus() { GotFocus(SetupField::Frequency); }
    void Bandwidth_GotFocus() { GotFocus(SetupField::Bandwidth); }
    void AntGain_GotFocus() { GotFocus(SetupField::AntGain); }
    void Loss_GotFocus() { GotFocus(SetupField::Loss); }
    void Attenuator_GotFocus() { GotFocus(SetupField::Attenuator); }
    void AGC_GotFocus() { GotFocus(SetupField::AGC); }
    void Interval_GotFocus() { GotFocus(SetupField::Interval); }

    void RxNF_KeyPress(int& KeyAscii) { KeyPress(SetupField::RxNF, KeyAscii); }
    void Bandwidth_KeyPress(int& KeyAscii) { KeyPress(SetupField::Bandwidth, KeyAscii); }
    void Frequency_KeyPress(int& KeyAscii) { KeyPress(SetupField::Frequency, KeyAscii); }
    void Attenuator_KeyPress(int& KeyAscii) { KeyPress(SetupField::Attenuator, KeyAscii); }
    void lat_KeyPress(int& KeyAscii) { KeyPress(SetupField::lat, KeyAscii); }
    void lon_KeyPress(int& KeyAscii) { KeyPress(SetupField::lon, KeyAscii); }
    void AGC_KeyPress(int& KeyAscii) { KeyPress(SetupField::AGC, KeyAscii); }
    void Loss_KeyPress(int& KeyAscii) { KeyPress(SetupField::Loss, KeyAscii); }
    void AntGain_KeyPress(int& KeyAscii) { KeyPress(SetupField::AntGain, KeyAscii); }
    void Interval_KeyPress(int& KeyAscii) { KeyPress(SetupField::Interval, KeyAscii); }

    void RxNF_Validate(bool& Cancel) { Validate(SetupField::RxNF, Cancel); }
    void Bandwidth_Validate(bool& Cancel) { Validate(SetupField::Bandwidth, Cancel); }
    void Frequency_Validate(bool& Cancel) { Validate(SetupField::Frequency, Cancel); }
    void Attenuator_Validate(bool& Cancel) { Validate(SetupField::Attenuator, Cancel); }
    void Loss_Validate(bool& Cancel) { Validate(SetupField::Loss, Cancel); }
    void AntGain_Validate(bool& Cancel) { Validate(SetupField::AntGain, Cancel); }
    void lat_Validate(bool& Cancel) { Validate(SetupField::lat, Cancel); }
    void lon_Validate(bool& Cancel) { Validate(SetupField::lon, Cancel); }
    void AGC_Validate(bool& Cancel) { Validate(SetupField::AGC, Cancel); }
    void Interval_Validate(bool& Cancel) { Validate(SetupField::Interval, Cancel); }

    // The user's decimal separator: numbers are read and shown with it.
    char decimalSeparator;

private:
    void valueError(const char* message);
    // Tidies a box that falls back silently: not a number -> `fallback`, then `pattern`.
    void tidyNumber(std::string& text, const char* fallback, const char* pattern);
    bool checkRange(std::string& text, const char* pattern, double low, double high,
                    bool lowInclusive);
    // The Interval checks, with the message set of the Enter key or of leaving the box.
    bool intervalAccepted(bool enterKey);
    void validateInterval(bool& Cancel);
    void recalculate();

    SetupRecord& m_record;
    const Options& m_options;
    Dialogs& m_dialogs;
    SetupEvents& m_events;
    std::array<TextSelection, kSetupFieldCount> m_selection{};
    // Set while ValidateAll runs: the boxes' recalculations wait for its end.
    bool m_deferCalc = false;
    bool m_calcDeferred = false;
};

} // namespace zav
