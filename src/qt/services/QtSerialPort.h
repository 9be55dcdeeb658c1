#pragma once

#include "platform/SerialPort.h"

#include <QSerialPort>

#include <memory>
#include <optional>

namespace zav {

// The serial port of a GPS receiver on QSerialPort. Port number N is COMN on Windows and
// /dev/ttyS(N-1) elsewhere; a device named directly wins. Qt's errors come back as the serial
// control's error numbers; a device lost while open closes the port and reports 8018.
class QtSerialPort : public SerialPort {
public:
    QtSerialPort();
    ~QtSerialPort() override;

    int SetSettings(const std::string& settings) override;
    int SetCommPort(int number) override;
    int SetDevice(const std::string& name) override;
    int SetPortOpen(bool open) override;
    bool PortOpen() const override;
    void SetReceiveHandler(ReceiveHandler handler) override;
    void SetErrorHandler(ErrorHandler handler) override;
    std::vector<std::string> ListPorts() const override;
    // Stable names first: a receiver's /dev/serial/by-id/... link where there is one, since
    // ttyACM numbers change from one plugging-in to the next.
    std::vector<SerialDevice> ListDevices() const override;

    struct LineSettings {
        qint32 baudRate = 9600;
        QSerialPort::Parity parity = QSerialPort::NoParity;
        QSerialPort::DataBits dataBits = QSerialPort::Data8;
        QSerialPort::StopBits stopBits = QSerialPort::OneStop;
    };
    // "4800,N,8,1": a positive speed, parity N, E, O, M or S, 5 to 8 data bits, 1, 1.5 or 2
    // stop bits. Anything else is nothing.
    static std::optional<LineSettings> ParseSettings(const std::string& settings);
    // The device that port number `number` names on this platform.
    static std::string DeviceForPortNumber(int number);
    // A link to `device` in `byIdFolder` where there is one, else `device` itself.
    static std::string StableName(const std::string& device,
                                  const std::string& byIdFolder = "/dev/serial/by-id");
    // The error number for a Qt error: while opening, or on a port that was open.
    static int ErrorNumber(QSerialPort::SerialPortError error, bool opening);

    // The device the next open uses.
    std::string DeviceName() const override;

private:
    bool apply(const LineSettings& settings);
    void onError(QSerialPort::SerialPortError error);

    std::unique_ptr<QSerialPort> m_port;
    LineSettings m_settings;
    int m_commPort = 1;
    std::string m_device;
    bool m_opening = false;
    ReceiveHandler m_receive;
    ErrorHandler m_error;
};

} // namespace zav
