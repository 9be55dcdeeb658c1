#pragma once

#include "config/GpsSettings.h"

#include <string>
#include <vector>

namespace zav {

class Dialogs;

// The "GPS setup" dialog without its window: the serial settings of the receiver and the wanted
// accuracy, shown as editable texts and stored on OK.
class GpsSetupModel {
public:
    // `detectedPorts` are the serial devices the system reports, offered for `Device`.
    GpsSetupModel(GpsSettings& settings, Dialogs& dialogs,
                  std::vector<std::string> detectedPorts = {});

    // Fills the lists and shows the current settings.
    void Form_Load();
    void acc_GotFocus();
    // Enter in `acc` validates and selects the whole text again.
    void acc_KeyPress(char key);
    // Below 0 becomes 0; the text is shown in whole metres.
    void acc_Validate();
    // Stores the settings and hides the dialog; a text that does not fit its setting (the
    // speed 38400 among them, a 16-bit value) is reported and nothing is stored.
    void OKButton_Click();
    void CancelButton_Click();

    bool Visible() const { return m_visible; }
    bool Stored() const { return m_stored; }

    std::string port, speed, parity, dbits, sbits, acc, Device;
    std::vector<std::string> portList, speedList, parityList, dbitsList, sbitsList, DeviceList;
    bool accSelected = false; // the whole text of `acc` is selected

private:
    GpsSettings& m_settings;
    Dialogs& m_dialogs;
    std::vector<std::string> m_detectedPorts;
    bool m_visible = true;
    bool m_stored = false;
};

} // namespace zav
