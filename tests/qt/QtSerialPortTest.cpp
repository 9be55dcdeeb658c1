// (Reading a receiver through it: the position dialog's and zavcli gps's tests.)
#include "qt/services/QtSerialPort.h"
#include "testsupport/PtyPair.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace zav;

TEST(QtSerialPort, BusyMissingAndBadlySetPortsOnAPty) {
    test::PtyPair pty;
    ASSERT_TRUE(pty.ready()) << "socat could not make a pseudo-terminal pair";
    QtSerialPort first, second, port, numbered;
    ASSERT_EQ(first.SetDevice(pty.out()) + first.SetSettings("4800,N,8,1"), 0);
    ASSERT_EQ(first.SetPortOpen(true), 0);
    EXPECT_EQ(first.SetPortOpen(true), kSerialPortInUse);
    EXPECT_EQ(first.SetDevice("/dev/ttyS0"), kSerialPortOpened);
    EXPECT_EQ(first.SetSettings("9600,N,8,1"), 0); // taken while open
    // A pseudo-terminal keeps its line bits: a device refusing a set-up.
    EXPECT_EQ(first.SetSettings("4800,E,7,1"), kSerialDeviceControlBlock);
    second.SetDevice(pty.out()); // busy until the other one lets go
    EXPECT_EQ(second.SetPortOpen(true), kSerialPortInUse);
    first.SetPortOpen(false);
    EXPECT_EQ(second.SetPortOpen(true), 0);
    EXPECT_EQ(port.SetDevice("/tmp/no-such-tty") + port.SetPortOpen(true), kSerialInvalidPort);
    for (const char* bad : {"4800,Q,8,1", "4800,N,9,1", "4800,N,8,3", "fast,N,8,1", "4800,N,8"})
        EXPECT_EQ(port.SetSettings(bad), kSerialInvalidPropertyValue) << bad;
    EXPECT_EQ(numbered.SetCommPort(0) + numbered.SetCommPort(3), kSerialInvalidPort);
    EXPECT_EQ(numbered.DeviceName(), "/dev/ttyS2");
    // Named by its stable link where there is one (a folder standing in for /dev/serial/by-id).
    QTemporaryDir byId;
    const QString link = byId.filePath("usb-u-blox_AG_GNSS_receiver-if00");
    ASSERT_TRUE(QFile::link(QString::fromStdString(pty.out()), link));
    EXPECT_EQ(QtSerialPort::StableName(QFileInfo(link).canonicalFilePath().toStdString(),
                                       byId.path().toStdString()),
              link.toStdString());
}
