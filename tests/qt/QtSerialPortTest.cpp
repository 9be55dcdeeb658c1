// The serial adapter and the position capture against pseudo-terminals made by socat: the test
// writes NMEA into one end as a receiver would and the program reads the other.
#include "qt/services/QtSerialPort.h"

#include "config/GpsSettings.h"
#include "gps/GetPositionModel.h"
#include "platform/Beeper.h"
#include "platform/Format.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include "testsupport/PtyPair.h"
#include "testsupport/QtWait.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

using zav::GetPositionModel;
using zav::QtSerialPort;

namespace {

using zav::test::PtyPair;

// The Qt test main has made the application object.
QCoreApplication& app() {
    return *QCoreApplication::instance();
}

// The real adapter, counting the bytes it hands on, so the test can wait for each write.
class TappedPort : public QtSerialPort {
public:
    void SetReceiveHandler(ReceiveHandler handler) override {
        QtSerialPort::SetReceiveHandler([this, handler](const std::string& chunk) {
            received += chunk.size();
            if (handler)
                handler(chunk);
        });
    }
    std::size_t received = 0;
};

class CountingBeeper : public zav::Beeper {
public:
    int beeps = 0;
    void Beep(int, int) override { ++beeps; }
};

std::string sentence(const std::string& body) {
    unsigned char sum = 0;
    for (unsigned char c : body)
        sum ^= c;
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X", sum);
    return "$" + body + "*" + hex + "\r\n";
}

zav::GpsSettings onDevice(const std::string& device) {
    zav::GpsSettings settings;
    settings.Device = device;
    return settings;
}

class SerialCapture : public ::testing::Test {
protected:
    void SetUp() override {
        app();
        if (!pty.ready())
            GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
    }
    PtyPair pty;
};

} // namespace

TEST_F(SerialCapture, AveragesUnevenChunksAndClosesByItself) {
    TappedPort port;
    CountingBeeper beeper;
    GetPositionModel model(onDevice(pty.out()), port, beeper, true);
    model.Form_Load();
    ASSERT_EQ(model.record, "");
    ASSERT_TRUE(port.PortOpen());

    const std::string a =
        sentence("GPGGA,095257.809,2712.6404,S,15303.1201,E,1,08,1.0,4.0,M,42.2,M,,");
    const std::string b =
        sentence("GPGGA,095258.809,2712.7004,S,15303.2401,E,1,08,1.0,4.0,M,42.2,M,,");
    const std::string other =
        sentence("GPRMC,095258.809,A,2712.7004,S,15303.2401,E,0.0,0.0,080407,,");
    // Pieces split mid-sentence, each written once the one before has been read.
    std::size_t sent = 0;
    for (const std::string& piece : {a.substr(0, 5), a.substr(5, 18), a.substr(23), other,
                                     b.substr(0, 1), b.substr(1, 40), b.substr(41)}) {
        pty.write(piece);
        sent += piece.size();
        ASSERT_TRUE(zav::test::WaitFor([&] { return port.received >= sent; }))
            << "read " << port.received;
    }
    EXPECT_EQ(port.received, sent);
    EXPECT_EQ(model.Count, 2);
    EXPECT_EQ(model.acc, "4.00");
    EXPECT_EQ(model.record, b.substr(0, b.size() - 2)); // the RMC between was only shown

    // Latitudes -(27 + 12.6404/60) and -(27 + 12.7004/60), longitudes likewise.
    const double lat = -(27 + (12.6404 + 12.7004) / 2 / 60);
    const double lon = 153 + (3.1201 + 3.2401) / 2 / 60;
    EXPECT_EQ(model.lat, zav::Format(lat, "00.000000"));
    EXPECT_EQ(model.lon, zav::Format(lon, "000.000000"));

    // The once-a-second timer ends the capture: beep, OK, port closed.
    QTimer timer1;
    QObject::connect(&timer1, &QTimer::timeout, [&] { model.Timer1_Timer(); });
    timer1.start(1000);
    ASSERT_TRUE(
        zav::test::WaitFor([&] { return model.result() != GetPositionModel::Result::Open; }, 3000));
    EXPECT_EQ(model.result(), GetPositionModel::Result::Ok);
    EXPECT_EQ(beeper.beeps, 1);
    EXPECT_FALSE(port.PortOpen());
    QtSerialPort again; // closed means free for the next one
    ASSERT_EQ(again.SetDevice(pty.out()), 0);
    EXPECT_EQ(again.SetPortOpen(true), 0);
}

TEST_F(SerialCapture, BusyMissingAndBadlySetPorts) {
    QtSerialPort first;
    ASSERT_EQ(first.SetDevice(pty.out()), 0);
    ASSERT_EQ(first.SetSettings("4800,N,8,1"), 0);
    ASSERT_EQ(first.SetPortOpen(true), 0);
    EXPECT_EQ(first.SetPortOpen(true), zav::kSerialPortInUse);
    EXPECT_EQ(first.SetDevice("/dev/ttyS0"), zav::kSerialPortOpened);
    EXPECT_EQ(first.SetSettings("9600,N,8,1"), 0); // taken while open
    // A pseudo-terminal keeps its line bits: a device refusing a set-up is 8021.
    EXPECT_EQ(first.SetSettings("4800,E,7,1"), zav::kSerialDeviceControlBlock);

    // The dialog on a busy port shows the error and stays open.
    QtSerialPort second;
    CountingBeeper beeper;
    GetPositionModel model(onDevice(pty.out()), second, beeper, false);
    model.Form_Load();
    EXPECT_EQ(model.record, "Error: Port In Use");
    EXPECT_FALSE(second.PortOpen());
    EXPECT_EQ(model.result(), GetPositionModel::Result::Open);
    first.SetPortOpen(false);
    EXPECT_EQ(second.SetPortOpen(true), 0);
    second.SetPortOpen(false);

    QtSerialPort missing;
    GetPositionModel nowhere(onDevice(QDir::tempPath().toStdString() + "/no-such-tty"), missing,
                             beeper, false);
    nowhere.Form_Load();
    EXPECT_EQ(nowhere.record, "Error: Invalid port number");

    QtSerialPort refusing;
    refusing.SetDevice(pty.out());
    refusing.SetSettings("4800,O,7,1");
    EXPECT_EQ(refusing.SetPortOpen(true), zav::kSerialDeviceControlBlock);
    EXPECT_FALSE(refusing.PortOpen());

    QtSerialPort notSerial;
    notSerial.SetDevice("/dev/null");
    EXPECT_NE(notSerial.SetPortOpen(true), 0);
    EXPECT_FALSE(notSerial.PortOpen());

    QtSerialPort settings;
    EXPECT_EQ(settings.SetCommPort(0), zav::kSerialInvalidPort);
    for (const char* bad :
         {"4800,Q,8,1", "4800,N,9,1", "4800,N,8,3", "fast,N,8,1", "4800,N,8", "-4800,N,8,1", ""})
        EXPECT_EQ(settings.SetSettings(bad), zav::kSerialInvalidPropertyValue) << bad;
    auto parsed = QtSerialPort::ParseSettings("19200,o,7,1.5");
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->baudRate, 19200);
    EXPECT_EQ(parsed->parity, QSerialPort::OddParity);
    EXPECT_EQ(parsed->dataBits, QSerialPort::Data7);
    EXPECT_EQ(parsed->stopBits, QSerialPort::OneAndHalfStop);
    EXPECT_EQ(QtSerialPort::DeviceForPortNumber(1), "/dev/ttyS0");
    ASSERT_EQ(settings.SetCommPort(3), 0);
    EXPECT_EQ(settings.DeviceName(), "/dev/ttyS2");
    ASSERT_EQ(settings.SetDevice(pty.out()), 0);
    EXPECT_EQ(settings.DeviceName(), pty.out()); // a named device wins over the number
}

TEST_F(SerialCapture, PortVanishingMidCaptureIsAnErrorNotACrash) {
    TappedPort port;
    CountingBeeper beeper;
    GetPositionModel model(onDevice(pty.out()), port, beeper, false);
    model.Form_Load();
    ASSERT_TRUE(port.PortOpen());
    const std::string fix =
        sentence("GPGGA,120824.76,3908.8199,N,00023.0832,W,1,06,2.1,00176,M,,,,");
    pty.write(fix);
    ASSERT_TRUE(zav::test::WaitFor([&] { return port.received >= fix.size(); }));
    EXPECT_EQ(model.Count, 1);

    pty.stop();
    ASSERT_TRUE(zav::test::WaitFor([&] { return model.ErrorsShown() > 0; }));
    EXPECT_EQ(model.record, "Error: Operation valid only when the port is open");
    EXPECT_FALSE(port.PortOpen());
    // Still a working dialog: OK keeps the one fix.
    model.OKButton_Click();
    EXPECT_EQ(model.lat, "39.146998");
    EXPECT_EQ(model.lon, "-000.384720");
}
