#include "gps/GpsSetupModel.h"

#include "gps/NumberConversion.h"
#include "gps/RuntimeError.h"
#include "platform/Dialogs.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Version.h"

namespace zav {

GpsSetupModel::GpsSetupModel(GpsSettings& settings, Dialogs& dialogs,
                             std::vector<std::string> detectedPorts)
    : m_settings(settings), m_dialogs(dialogs), m_detectedPorts(std::move(detectedPorts)) {}

void GpsSetupModel::Form_Load() {
    portList.clear();
    for (int i = 1; i <= 99; ++i)
        portList.push_back(std::to_string(i));
    speedList = {"1200", "2400", "4800", "9600", "19200", "38400"};
    parityList = {"N", "E", "O", "M", "S"};
    dbitsList = {"5", "6", "7", "8"};
    sbitsList = {"1", "2"};
    DeviceList = {""}; // empty: use the port number
    DeviceList.insert(DeviceList.end(), m_detectedPorts.begin(), m_detectedPorts.end());

    port = std::to_string(m_settings.Port);
    speed = std::to_string(m_settings.Speed);
    parity = m_settings.Parity;
    dbits = std::to_string(m_settings.Dbits);
    sbits = std::to_string(m_settings.Sbits);
    acc = std::to_string(m_settings.Acc);
    Device = m_settings.Device;
    m_visible = true;
    m_stored = false;
}

void GpsSetupModel::acc_GotFocus() {
    accSelected = true;
}

void GpsSetupModel::acc_KeyPress(char key) {
    if (key != '\r')
        return;
    acc_Validate();
    accSelected = true;
}

void GpsSetupModel::acc_Validate() {
    if (Number(acc) < 0)
        acc = "0";
    acc = Format(Number(acc), "0");
}

void GpsSetupModel::OKButton_Click() {
    GpsSettings next = m_settings;
    std::string current; // the setting being converted, for the message
    auto int16 = [&](const char* name, const std::string& text) {
        current = std::string(name) + " \"" + text + "\"";
        return ToInt16(text);
    };
    try {
        next.Port = int16("Port", port);
        next.Speed = int16("Speed", speed);
        next.Dbits = int16("Dbits", dbits);
        next.Sbits = int16("Sbits", sbits);
        current = "Acc \"" + acc + "\"";
        next.Acc = RoundToInt16(Number(acc));
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

void GpsSetupModel::CancelButton_Click() {
    m_visible = false;
}

} // namespace zav
