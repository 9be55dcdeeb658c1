#pragma once

#include "config/Key.h"
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
    SetupForm(SetupRecord& record, const Options& options, Dialogs& dialogs, SetupEvents& events,
              char decimalSeparator = '.');

    // Entering a box selects its text (for the boxes that do so).
    void fieldFocused(SetupField field);
    // Enter checks the box, is swallowed and selects the text again; any other key passes on.
    KeyOutcome keyPressed(SetupField field, Key key);
    // Leaving the box: tidy, check, and on success recompute or reset what depends on it.
    // A refused value sets `keepFocus`, which keeps the focus in the box.
    void fieldLeft(SetupField field, bool& keepFocus);
    // Checks every box as leaving it would, in the window's order, before a step runs by any
    // way (button, access key, menu, zavcli). Stops at the first refused value, whose message
    // has been shown, and returns it; the results are recomputed once if any box asked.
    std::optional<SetupField> checkAllFields();

    TextSelection Selection(SetupField field) const;
    // Selects `length` characters from `start`, cut to the text as it stands.
    void SelectText(SetupField field, int start = 0, int length = 100);

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
    void validateInterval(bool& keepFocus);
    void recalculate();

    SetupRecord& m_record;
    const Options& m_options;
    Dialogs& m_dialogs;
    SetupEvents& m_events;
    std::array<TextSelection, kSetupFieldCount> m_selection{};
    // Set while checkAllFields runs: the boxes' recalculations wait for its end.
    bool m_deferCalc = false;
    bool m_calcDeferred = false;
};

} // namespace zav
