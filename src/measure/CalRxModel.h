#pragma once

#include "config/SetupRecord.h"
#include "measure/RxCalibration.h"
#include "platform/Dialogs.h"

#include <functional>
#include <string>

namespace zav {

// The "ZAV - Calibrate receiver" dialog without its window. Step 3 was measured with a source
// of known level in place of the antenna; the dialog turns the resulting Y factor into the
// receiver's noise figure, shows it with every edit, and "Apply" puts it into the set-up.
class CalRxModel {
public:
    static constexpr const char* kCaption = "ZAV - Calibrate receiver";
    static constexpr const char* kTooWeak = "Source too weak: no rise over the receiver noise.";
    static constexpr const char* kNotPhysical = "Result not physical, check attenuator and loss.";

    // `yfact` is the last calculation's Y factor; `recalculate` recomputes the main window's
    // results after "Apply" has changed the noise figure.
    CalRxModel(SetupRecord& setup, double yfact, Dialogs& dialogs,
               std::function<void()> recalculate, char decimalSeparator = '.');

    void open() { update(); }
    void chooseSource(CalSource source);
    // The level box's text changed (it is already in `CalLevel`).
    void calibrationLevelChanged() { update(); }
    // Leaving the level box: a text that is not a number is refused and keeps the focus.
    void calibrationLevelLeft(bool& keepFocus);
    void applyCalibration();
    void cancelPressed() { CloseRequested = true; }

    // The caption of the option button for each source, and the unit of its level.
    static const char* SourceCaption(CalSource source);

    CalSource Source = CalSource::Carrier;
    std::string CalLevel;
    // Figures as shown, "0.00"; empty where they cannot be worked out.
    std::string yFactorText;
    std::string systemNfText;
    std::string receiverNfText;
    std::string noiseFloorText;
    std::string statusText; // why "Apply" is disabled, or empty
    bool ApplyEnabled = false;
    bool CalLevelFocus = false;  // the view puts the focus back into the level box
    bool CloseRequested = false; // the view closes the dialog

    RxCalibration result; // the figures behind the labels

private:
    void update();
    std::string shown(const std::optional<double>& value) const;

    SetupRecord& m_setup;
    double m_yfact;
    Dialogs& m_dialogs;
    std::function<void()> m_recalculate;
    char m_separator;
};

} // namespace zav
