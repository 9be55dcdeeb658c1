#include "qt/services/QtSerialPort.h"

#include <QDir>
#include <QFileInfo>
#include <QSerialPortInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <unistd.h>
#endif

#include <charconv>

namespace zav {
namespace {

std::vector<std::string> splitCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        parts.push_back(text.substr(start, comma - start));
        if (comma == std::string::npos)
            return parts;
        start = comma + 1;
    }
}

std::string trimmed(const std::string& s) {
    const std::size_t first = s.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

} // namespace

QtSerialPort::QtSerialPort() : m_port(std::make_unique<QSerialPort>()) {
    QObject::connect(m_port.get(), &QSerialPort::readyRead, m_port.get(), [this] {
        const QByteArray data = m_port->readAll();
        if (!data.isEmpty() && m_receive)
            m_receive(std::string(data.constData(), static_cast<std::size_t>(data.size())));
    });
    QObject::connect(m_port.get(), &QSerialPort::errorOccurred, m_port.get(),
                     [this](QSerialPort::SerialPortError error) { onError(error); });
}

QtSerialPort::~QtSerialPort() {
    m_receive = nullptr;
    m_error = nullptr;
    if (m_port->isOpen())
        m_port->close();
}

std::optional<QtSerialPort::LineSettings> QtSerialPort::ParseSettings(const std::string& settings) {
    const std::vector<std::string> parts = splitCommas(settings);
    if (parts.size() != 4)
        return std::nullopt;
    LineSettings line;

    const std::string speed = trimmed(parts[0]);
    auto [end, ec] = std::from_chars(speed.data(), speed.data() + speed.size(), line.baudRate);
    if (ec != std::errc() || end != speed.data() + speed.size() || line.baudRate <= 0)
        return std::nullopt;

    const std::string parity = trimmed(parts[1]);
    if (parity.size() != 1)
        return std::nullopt;
    switch (parity[0]) {
    case 'N':
    case 'n':
        line.parity = QSerialPort::NoParity;
        break;
    case 'E':
    case 'e':
        line.parity = QSerialPort::EvenParity;
        break;
    case 'O':
    case 'o':
        line.parity = QSerialPort::OddParity;
        break;
    case 'M':
    case 'm':
        line.parity = QSerialPort::MarkParity;
        break;
    case 'S':
    case 's':
        line.parity = QSerialPort::SpaceParity;
        break;
    default:
        return std::nullopt;
    }

    const std::string data = trimmed(parts[2]);
    if (data == "5")
        line.dataBits = QSerialPort::Data5;
    else if (data == "6")
        line.dataBits = QSerialPort::Data6;
    else if (data == "7")
        line.dataBits = QSerialPort::Data7;
    else if (data == "8")
        line.dataBits = QSerialPort::Data8;
    else
        return std::nullopt;

    const std::string stop = trimmed(parts[3]);
    if (stop == "1")
        line.stopBits = QSerialPort::OneStop;
    else if (stop == "1.5")
        line.stopBits = QSerialPort::OneAndHalfStop;
    else if (stop == "2")
        line.stopBits = QSerialPort::TwoStop;
    else
        return std::nullopt;
    return line;
}

std::string QtSerialPort::DeviceForPortNumber(int number) {
#ifdef Q_OS_WIN
    return "COM" + std::to_string(number);
#else
    return "/dev/ttyS" + std::to_string(number - 1);
#endif
}

int QtSerialPort::ErrorNumber(QSerialPort::SerialPortError error, bool opening) {
    if (!opening)
        return kSerialPortNotOpen; // whatever broke, the port is gone
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return kSerialInvalidPort;
    case QSerialPort::PermissionError:
    case QSerialPort::OpenError:
        return kSerialPortInUse;
    default:
        return kSerialDeviceControlBlock; // the device would not take a serial set-up
    }
}

std::string QtSerialPort::DeviceName() const {
    return m_device.empty() ? DeviceForPortNumber(m_commPort) : m_device;
}

bool QtSerialPort::apply(const LineSettings& settings) {
    return m_port->setBaudRate(settings.baudRate) && m_port->setParity(settings.parity) &&
           m_port->setDataBits(settings.dataBits) && m_port->setStopBits(settings.stopBits) &&
           m_port->setFlowControl(QSerialPort::NoFlowControl);
}

int QtSerialPort::SetSettings(const std::string& settings) {
    const std::optional<LineSettings> line = ParseSettings(settings);
    if (!line)
        return kSerialInvalidPropertyValue;
    m_settings = *line;
    if (m_port->isOpen() && !apply(m_settings))
        return kSerialDeviceControlBlock;
    return 0;
}

int QtSerialPort::SetCommPort(int number) {
    if (m_port->isOpen())
        return kSerialPortOpened;
    if (number < 1 || number > 255)
        return kSerialInvalidPort;
    m_commPort = number;
    return 0;
}

int QtSerialPort::SetDevice(const std::string& name) {
    if (m_port->isOpen())
        return kSerialPortOpened;
    m_device = name;
    return 0;
}

int QtSerialPort::SetPortOpen(bool open) {
    if (!open) {
        if (m_port->isOpen())
            m_port->close();
        return 0;
    }
    if (m_port->isOpen())
        return kSerialPortInUse;
    m_port->setPortName(QString::fromStdString(DeviceName()));
    m_opening = true;
    const bool opened = m_port->open(QIODevice::ReadWrite);
    m_opening = false;
    if (!opened) {
        const QSerialPort::SerialPortError error = m_port->error();
#ifdef Q_OS_UNIX
        // Qt reports a busy device and one the user may not open alike; only the second is
        // mended by joining the device's group.
        if (error == QSerialPort::PermissionError &&
            ::access(DeviceName().c_str(), R_OK | W_OK) != 0 && errno == EACCES)
            return kSerialPermissionDenied;
#endif
        return ErrorNumber(error, true);
    }
    if (!apply(m_settings)) {
        m_port->close();
        return kSerialDeviceControlBlock;
    }
    m_port->clear(); // nothing stale from before the open
    return 0;
}

bool QtSerialPort::PortOpen() const {
    return m_port->isOpen();
}

void QtSerialPort::SetReceiveHandler(ReceiveHandler handler) {
    m_receive = std::move(handler);
}

void QtSerialPort::SetErrorHandler(ErrorHandler handler) {
    m_error = std::move(handler);
}

std::vector<std::string> QtSerialPort::ListPorts() const {
    std::vector<std::string> names;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
#ifdef Q_OS_WIN
        names.push_back(info.portName().toStdString());
#else
        names.push_back(info.systemLocation().toStdString());
#endif
    }
    return names;
}

std::string QtSerialPort::StableName(const std::string& device, const std::string& byIdFolder) {
    const QString target = QFileInfo(QString::fromStdString(device)).canonicalFilePath();
    const QDir byId(QString::fromStdString(byIdFolder));
    for (const QFileInfo& link : byId.entryInfoList(QDir::System | QDir::Files, QDir::Name))
        if (!target.isEmpty() && link.canonicalFilePath() == target)
            return link.absoluteFilePath().toStdString();
    return device;
}

std::vector<SerialDevice> QtSerialPort::ListDevices() const {
    std::vector<SerialDevice> devices;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
#ifdef Q_OS_WIN
        const std::string name = info.portName().toStdString();
#else
        const std::string name = StableName(info.systemLocation().toStdString());
#endif
        QString description = info.description();
        if (description.isEmpty())
            description = info.manufacturer();
        devices.push_back({name, description.toStdString()});
    }
    return devices;
}

void QtSerialPort::onError(QSerialPort::SerialPortError error) {
    // Errors while opening are answered by SetPortOpen; only a port that was working and
    // broke (device unplugged, reads failing) is reported here, once, after closing it.
    if (m_opening || error == QSerialPort::NoError || !m_port->isOpen())
        return;
    if (error != QSerialPort::ResourceError && error != QSerialPort::ReadError)
        return;
    m_port->clearError();
    m_port->close();
    if (m_error)
        m_error(ErrorNumber(error, false));
}

} // namespace zav
