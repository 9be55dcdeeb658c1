#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zav {

// The serial control's error numbers that serial ports report.
inline constexpr int kSerialInvalidPropertyValue = 380; // a settings text it cannot take
inline constexpr int kSerialPortOpened = 8000;          // not valid while the port is open
inline constexpr int kSerialInvalidPort = 8002;         // no such port or device
inline constexpr int kSerialPortInUse = 8005;           // busy, or no permission
inline constexpr int kSerialPortNotOpen = 8018;         // the port is (no longer) open
inline constexpr int kSerialDeviceControlBlock = 8021;  // the device refuses its settings
inline constexpr int kSerialPermissionDenied = 70;      // the user may not open the device

// A serial device the system reports: the name to open it by and what it is.
struct SerialDevice {
    std::string name;        // "/dev/serial/by-id/usb-u-blox_...", "/dev/ttyACM0", "COM7"
    std::string description; // "u-blox GNSS receiver"; may be empty
};

// Port for the serial line of a GPS receiver, shaped after the serial communications control
// the position dialog drives: set the settings and the port, open it, receive characters.
// Every operation returns 0 on success or the control's error number (8002 invalid port,
// 8005 port in use, 380 invalid property value, ...); nothing throws.
class SerialPort {
public:
    // One chunk of received characters, exactly as they arrived (may split or glue lines).
    using ReceiveHandler = std::function<void(const std::string& chunk)>;
    // A failure while the port is open (the device vanished, a read failed). The port is
    // closed when this is called.
    using ErrorHandler = std::function<void(int errorNumber)>;

    virtual ~SerialPort() = default;

    // "speed,parity,data bits,stop bits", for example "4800,N,8,1".
    virtual int SetSettings(const std::string& settings) = 0;
    // Port number N: COMN on Windows, a serial device of the platform elsewhere.
    virtual int SetCommPort(int number) = 0;
    // A device named directly (/dev/ttyACM0, a pseudo-terminal, COM7); when not empty it
    // wins over the port number.
    virtual int SetDevice(const std::string& name) = 0;
    virtual int SetPortOpen(bool open) = 0;
    virtual bool PortOpen() const = 0;

    virtual void SetReceiveHandler(ReceiveHandler handler) = 0;
    virtual void SetErrorHandler(ErrorHandler handler) = 0;

    // The serial devices the system reports, by the names SetDevice accepts.
    virtual std::vector<std::string> ListPorts() const = 0;
    // The same, each with what it is.
    virtual std::vector<SerialDevice> ListDevices() const {
        std::vector<SerialDevice> devices;
        for (const std::string& name : ListPorts())
            devices.push_back({name, ""});
        return devices;
    }
    // The device the port opens (or last opened), for messages; empty when unknown.
    virtual std::string DeviceName() const { return {}; }
};

} // namespace zav
