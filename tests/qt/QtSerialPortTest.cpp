// The serial adapter against pseudo-terminals made by socat: busy, missing and refusing ports
// and the line settings (reading a receiver through it: the position dialog and zavcli gps).
#include "qt/services/QtSerialPort.h"
#include "testsupport/PtyPair.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace zav;

TEST(QtSerialPort, BusyMissingAndBadlySetPortsOnAPty) {
    test::PtyPair pty;
    if (!pty.ready())
        GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
    QtSerialPort first, second;
    ASSERT_EQ(first.SetDevice(pty.out()) + first.SetSettings("4800,N,8,1"), 0);
    ASSERT_EQ(first.SetPortOpen(true), 0);
    EXPECT_EQ(first.SetPortOpen(true), kSerialPortInUse);
    EXPECT_EQ(first.SetDevice("/dev/ttyS0"), kSerialPortOpened);
    EXPECT_EQ(first.SetSettings("9600,N,8,1"), 0); // taken while open
    // A pseudo-terminal keeps its line bits: a device refusing a set-up.
    EXPECT_EQ(first.SetSettings("4800,E,7,1"), kSerialDeviceControlBlock);
    second.SetDevice(pty.out()); // busy until the other one lets go
    EXPECT_EQ(second.SetPortOpen(true), kSerialPortInUse);
    EXPECT_FALSE(second.PortOpen());
    first.SetPortOpen(false);
    EXPECT_EQ(second.SetPortOpen(true), 0);
    second.SetPortOpen(false);

    const std::tuple<std::string, std::string, int> refused[] = {
        {QDir::tempPath().toStdString() + "/no-such-tty", "", kSerialInvalidPort},
        {pty.out(), "4800,O,7,1", kSerialDeviceControlBlock}};
    for (const auto& [device, settings, error] : refused) {
        QtSerialPort port;
        port.SetDevice(device);
        port.SetSettings(settings.empty() ? "4800,N,8,1" : settings);
        EXPECT_EQ(port.SetPortOpen(true), error) << device;
        EXPECT_FALSE(port.PortOpen());
    }
    QtSerialPort port;
    EXPECT_EQ(port.SetCommPort(0), kSerialInvalidPort);
    for (const char* bad : {"4800,Q,8,1", "4800,N,9,1", "4800,N,8,3", "fast,N,8,1", "4800,N,8", ""})
        EXPECT_EQ(port.SetSettings(bad), kSerialInvalidPropertyValue) << bad;
    const auto parsed = QtSerialPort::ParseSettings("19200,o,7,1.5");
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(std::pair(parsed->parity, parsed->stopBits),
              std::pair(QSerialPort::OddParity, QSerialPort::OneAndHalfStop));
    ASSERT_EQ(port.SetCommPort(3), 0);
    EXPECT_EQ(port.DeviceName(), "/dev/ttyS2");
    ASSERT_EQ(port.SetDevice(pty.out()), 0);
    EXPECT_EQ(port.DeviceName(), pty.out()); // a named device wins over the number

    // Named by its stable link where there is one (a folder standing in for /dev/serial/by-id).
    QTemporaryDir byId;
    const QString link = byId.filePath("usb-u-blox_AG_GNSS_receiver-if00");
    ASSERT_TRUE(QFile::link(QString::fromStdString(pty.out()), link));
    const std::string dev = QFileInfo(link).canonicalFilePath().toStdString();
    EXPECT_EQ(QtSerialPort::StableName(dev, byId.path().toStdString()), link.toStdString());
    EXPECT_EQ(QtSerialPort::StableName("/dev/null", byId.path().toStdString()), "/dev/null");
}
