#pragma once

#include "config/GpsSettings.h"
#include "config/Key.h"
#include "platform/SerialPort.h"

#include <string>
#include <vector>

namespace zav {

class Dialogs;

// The "GPS setup" dialog without its window: the serial settings of the receiver and the wanted
// accuracy, shown as editable texts and stored on OK.
class GpsSetupModel {
public:
    // `detected` are the serial devices the system reports, offered first in the port list;
    // `decimalSeparator` is the one the operator types the accuracy with.
    GpsSetupModel(GpsSettings& settings, Dialogs& dialogs, std::vector<SerialDevice> detected = {},
                  char decimalSeparator = '.');

    // A detected device's entry in the port list: "/dev/ttyACM0 — u-blox GNSS receiver".
    static std::string DeviceEntry(const SerialDevice& device);

    // Fills the lists and shows the current settings.
    void open();
    // The port box's text, typed or picked: a detected device's entry or any other name
    // selects that device (remembered by its name); a number selects the numbered port, as
    // old profiles have it.
    void portChanged(const std::string& text);
    // What the port box shows.
    std::string PortShown() const;
    void accuracyFocused();
    // Enter in `acc` validates and selects the whole text again.
    void accuracyKeyPressed(Key key);
    // Below 0 becomes 0; the text is shown in whole metres.
    void accuracyLeft();
    // Stores the settings and hides the dialog; a text that does not fit its setting (the
    // speed 38400 among them, a 16-bit value) is reported and nothing is stored.
    void okPressed();
    void cancelPressed();

    bool Visible() const { return m_visible; }
    bool Stored() const { return m_stored; }

    std::string port, speed, parity, dataBits, stopBits, acc, Device;
    std::vector<std::string> portList, speedList, parityList, dataBitsList, stopBitsList;
    bool accSelected = false; // the whole text of `acc` is selected

private:
    GpsSettings& m_settings;
    Dialogs& m_dialogs;
    std::vector<SerialDevice> m_detected;
    char m_separator;
    bool m_visible = true;
    bool m_stored = false;
};

} // namespace zav
