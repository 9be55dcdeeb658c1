#include "gps/GpsSetupModel.h"

#include "gps/NumberConversion.h"
#include "gps/RuntimeError.h"
#include "platform/Dialogs.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Version.h"

namespace zav {

GpsSetupModel::GpsSetupModel(GpsSettings& settings, Dialogs& dialogs,
                             std::vector<SerialDevice> detected, char decimalSeparator)
    : m_settings(settings), m_dialogs(dialogs), m_detected(std::move(detected)),
      m_separator(decimalSeparator) {}

std::string GpsSetupModel::DeviceEntry(const SerialDevice& device) {
    return device.description.empty() ? device.name
                                      : device.name + " \xE2\x80\x94 " + device.description;
}

void GpsSetupModel::open() {
    // The receivers actually plugged in come first; the numbers stay for old profiles.
    portList.clear();
    for (const SerialDevice& device : m_detected)
        portList.push_back(DeviceEntry(device));
    for (int i = 1; i <= 99; ++i)
        portList.push_back(std::to_string(i));
    speedList = {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"};
    parityList = {"N", "E", "O", "M", "S"};
    dataBitsList = {"5", "6", "7", "8"};
    stopBitsList = {"1", "2"};

    port = std::to_string(m_settings.Port);
    speed = std::to_string(m_settings.Speed);
    parity = m_settings.Parity;
    dataBits = std::to_string(m_settings.Dbits);
    stopBits = std::to_string(m_settings.Sbits);
    acc = std::to_string(m_settings.Acc);
    Device = m_settings.Device;
    m_visible = true;
    m_stored = false;
}

void GpsSetupModel::portChanged(const std::string& text) {
    for (const SerialDevice& device : m_detected) {
        if (text == DeviceEntry(device) || text == device.name) {
            Device = device.name;
            return;
        }
    }
    if (text.empty() || IsNumber(text)) {
        port = text;
        Device.clear();
    } else {
        Device = text;
    }
}

std::string GpsSetupModel::PortShown() const {
    if (Device.empty())
        return port;
    for (const SerialDevice& device : m_detected)
        if (device.name == Device)
            return DeviceEntry(device);
    return Device;
}

void GpsSetupModel::accuracyFocused() {
    accSelected = true;
}

void GpsSetupModel::accuracyKeyPressed(Key key) {
    if (key != Key::Enter)
        return;
    accuracyLeft();
    accSelected = true;
}

void GpsSetupModel::accuracyLeft() {
    if (Number(acc, m_separator) < 0)
        acc = "0";
    acc = Format(Number(acc, m_separator), "0", m_separator);
}

void GpsSetupModel::okPressed() {
    GpsSettings next = m_settings;
    std::string current; // the setting being converted, for the message
    auto int16 = [&](const char* name, const std::string& text) {
        current = std::string(name) + " \"" + text + "\"";
        return ToInt16(text);
    };
    try {
        next.Port = int16("Port", port);
        current = "Speed \"" + speed + "\"";
        next.Speed = ToBaudRate(speed);
        next.Dbits = int16("Dbits", dataBits);
        next.Sbits = int16("Sbits", stopBits);
        current = "Acc \"" + acc + "\"";
        next.Acc = RoundToInt16(Number(acc, m_separator));
    } catch (const RuntimeError& e) {
        m_dialogs.ShowMessage("Error: " + std::string(e.what()) + " (" + current + ")", kAppTitle,
                              MessageIcon::Critical);
        return;
    }
    next.Parity = parity;
    next.Device = Device;
    m_settings = next;
    m_stored = true;
    m_visible = false;
}

void GpsSetupModel::cancelPressed() {
    m_visible = false;
}

} // namespace zav
