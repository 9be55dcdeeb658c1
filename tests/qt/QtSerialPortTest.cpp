// The serial adapter's answers against pseudo-terminals made by socat: busy, missing and
// refusing ports and the line settings. Reading a receiver through it is tested with the
// position dialog (tests/qt/widgets) and with zavcli gps --device.
#include "qt/services/QtSerialPort.h"

#include "testsupport/PtyPair.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using zav::QtSerialPort;

namespace {

class SerialPortOnPty : public ::testing::Test {
protected:
    void SetUp() override {
        if (!pty.ready())
            GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
    }
    zav::test::PtyPair pty;
};

} // namespace

TEST_F(SerialPortOnPty, BusyMissingAndBadlySetPorts) {
    QtSerialPort first;
    ASSERT_EQ(first.SetDevice(pty.out()), 0);
    ASSERT_EQ(first.SetSettings("4800,N,8,1"), 0);
    ASSERT_EQ(first.SetPortOpen(true), 0);
    EXPECT_EQ(first.SetPortOpen(true), zav::kSerialPortInUse);
    EXPECT_EQ(first.SetDevice("/dev/ttyS0"), zav::kSerialPortOpened);
    EXPECT_EQ(first.SetSettings("9600,N,8,1"), 0); // taken while open
    // A pseudo-terminal keeps its line bits: a device refusing a set-up is 8021.
    EXPECT_EQ(first.SetSettings("4800,E,7,1"), zav::kSerialDeviceControlBlock);

    // Another program's port is busy until it lets go.
    QtSerialPort second;
    second.SetDevice(pty.out());
    EXPECT_EQ(second.SetPortOpen(true), zav::kSerialPortInUse);
    EXPECT_FALSE(second.PortOpen());
    first.SetPortOpen(false);
    EXPECT_EQ(second.SetPortOpen(true), 0);
    second.SetPortOpen(false);

    const struct {
        std::string device, settings;
        int error;
    } refused[] = {{QDir::tempPath().toStdString() + "/no-such-tty", "", zav::kSerialInvalidPort},
                   {pty.out(), "4800,O,7,1", zav::kSerialDeviceControlBlock},
                   {"/dev/null", "", -1}}; // -1: any error
    for (const auto& c : refused) {
        QtSerialPort port;
        port.SetDevice(c.device);
        if (!c.settings.empty())
            port.SetSettings(c.settings);
        const int error = port.SetPortOpen(true);
        EXPECT_EQ(c.error == -1 ? error != 0 : error == c.error, true) << c.device << error;
        EXPECT_FALSE(port.PortOpen());
    }

    QtSerialPort settings;
    EXPECT_EQ(settings.SetCommPort(0), zav::kSerialInvalidPort);
    for (const char* bad :
         {"4800,Q,8,1", "4800,N,9,1", "4800,N,8,3", "fast,N,8,1", "4800,N,8", "-4800,N,8,1", ""})
        EXPECT_EQ(settings.SetSettings(bad), zav::kSerialInvalidPropertyValue) << bad;
    const auto parsed = QtSerialPort::ParseSettings("19200,o,7,1.5");
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->parity, QSerialPort::OddParity);
    EXPECT_EQ(parsed->stopBits, QSerialPort::OneAndHalfStop);
    ASSERT_EQ(settings.SetCommPort(3), 0);
    EXPECT_EQ(settings.DeviceName(), "/dev/ttyS2");
    ASSERT_EQ(settings.SetDevice(pty.out()), 0);
    EXPECT_EQ(settings.DeviceName(), pty.out()); // a named device wins over the number

    // A device is named by its stable link where there is one (a folder standing in for
    // /dev/serial/by-id).
    QTemporaryDir byId;
    const QString link = byId.filePath("usb-u-blox_AG_GNSS_receiver-if00");
    ASSERT_TRUE(QFile::link(QString::fromStdString(pty.out()), link));
    const std::string device =
        QFileInfo(QString::fromStdString(pty.out())).canonicalFilePath().toStdString();
    EXPECT_EQ(QtSerialPort::StableName(device, byId.path().toStdString()), link.toStdString());
    EXPECT_EQ(QtSerialPort::StableName("/dev/null", byId.path().toStdString()), "/dev/null");
    EXPECT_EQ(QtSerialPort::StableName(device, "/no/such/folder"), device);
}
