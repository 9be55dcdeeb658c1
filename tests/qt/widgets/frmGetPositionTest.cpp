// The position dialog on the real serial adapter, against a socat pseudo-terminal pair: the test
// writes NMEA into one end as a receiver would, the dialog reads the other.
#include "qt/widgets/frmGetPosition.h"

#include "app/GetPosition.h"
#include "config/GpsSettings.h"
#include "config/SetupRecord.h"
#include "gps/GetPositionModel.h"
#include "gps/NmeaTestSupport.h"
#include "platform/Beeper.h"
#include "platform/Format.h"
#include "qt/services/QtSerialPort.h"
#include "testsupport/PtyPair.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

using namespace zav;

namespace {

using zav::test::PtyPair;
class CountingBeeper : public Beeper {
public:
    std::vector<std::pair<int, int>> beeps;
    void Beep(int frequencyHz, int durationMs) override {
        beeps.emplace_back(frequencyHz, durationMs);
    }
};

// A fix as "ddmm.mmmm,H,dddmm.mmmm,H" with the given HDOP, quality 1.
std::string fix(const std::string& position, const std::string& hdop) {
    return test::Sentence("GPGGA,095257.809," + position + ",1,08," + hdop + ",4.0,M,42.2,M,,");
}

GpsSettings onDevice(const std::string& device) {
    GpsSettings settings; // Acc 10 m
    settings.Device = device;
    return settings;
}

QString text(const QDialog& dialog, const char* name) {
    if (auto* box = dialog.findChild<QLineEdit*>(QString::fromLatin1(name)))
        return box->text();
    if (auto* label = dialog.findChild<QLabel*>(QString::fromLatin1(name)))
        return label->text();
    ADD_FAILURE() << "no control " << name;
    return {};
}

QColor hdopColour(const QDialog& dialog) {
    return dialog.findChild<QLineEdit*>("HDOP")->palette().color(QPalette::Text);
}

QPushButton* button(const QDialog& dialog, const char* name) {
    return dialog.findChild<QPushButton*>(QString::fromLatin1(name));
}

// The capture dialog while it runs modally.
frmGetPosition* openCapture() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* d = qobject_cast<QDialog*>(w); d && d->objectName() == "frmGetPosition")
            if (d->isVisible())
                return static_cast<frmGetPosition*>(d);
    return nullptr;
}

// Runs `act` on the modal capture dialog once it is up. A dialog still open after `limitMs`
// is cancelled, so that a broken close fails the test instead of hanging it; the limit ends
// with the returned timer.
[[nodiscard]] std::unique_ptr<QTimer> whileModal(std::function<void(frmGetPosition&)> act,
                                                 int limitMs = 10000) {
    QTimer::singleShot(0, [act = std::move(act)] {
        if (QTest::qWaitFor([] { return openCapture() != nullptr; }, 5000))
            act(*openCapture());
    });
    auto limit = std::make_unique<QTimer>();
    limit->setSingleShot(true);
    QObject::connect(limit.get(), &QTimer::timeout, [] {
        if (frmGetPosition* d = openCapture()) {
            ADD_FAILURE() << "the capture dialog did not close";
            d->reject();
        }
    });
    limit->start(limitMs);
    return limit;
}

class GetPositionDialog : public ::testing::Test {
protected:
    void SetUp() override {
        if (!pty.ready())
            GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
    }
    // Writes `bytes` and waits until the dialog shows `name` as `expected`.
    void send(const QDialog& dialog, const std::string& bytes, const char* name,
              const QString& expected) {
        pty.write(bytes);
        EXPECT_TRUE(QTest::qWaitFor([&] { return text(dialog, name) == expected; }, 5000))
            << name << " shows " << text(dialog, name).toStdString() << ", not "
            << expected.toStdString();
    }
    // The pseudo-terminal can be opened again: nothing holds it any more.
    bool released() {
        QtSerialPort probe;
        probe.SetDevice(pty.out());
        return probe.SetPortOpen(true) == 0;
    }

    PtyPair pty;
    CountingBeeper beeper;
};

} // namespace

TEST_F(GetPositionDialog, ShowsLinesHdopColourCountAccuracyAndAverages) {
    QtSerialPort port;
    frmGetPosition dialog(onDevice(pty.out()), port, beeper, true);
    dialog.show();
    EXPECT_TRUE(port.PortOpen());
    EXPECT_EQ(text(dialog, "lblfix"), "Fix lost");
    const QColor normal = dialog.palette().color(QPalette::Text);
    dialog.findChild<QTimer*>("Timer1")->stop(); // held still: what shows is what arrived

    // S 33° 51.1234' is -33.852057; E 151° 12.5000' is 151.208333.
    const std::string first = fix("3351.1234,S,15112.5000,E", "3.0");
    send(dialog, first + "\r\n", "ct", "1");
    EXPECT_EQ(text(dialog, "record").toStdString(), first);
    EXPECT_EQ(text(dialog, "HDOP"), "3.0");
    EXPECT_EQ(hdopColour(dialog), QColor(255, 128, 0)); // between Acc/4 and Acc/3
    EXPECT_EQ(text(dialog, "lblfix"), "Fix obtained");
    EXPECT_EQ(text(dialog, "latl") + " " + text(dialog, "lon"), "-33.852057 151.208333");
    EXPECT_EQ(text(dialog, "acc"), "12.00"); // 4 x HDOP 3.0

    // Above Acc/3: red, and not averaged. Split mid-sentence, as a port delivers it.
    const std::string poor = fix("3300.0000,S,15100.0000,E", "3.4") + "\r\n";
    pty.write(poor.substr(0, 20));
    send(dialog, poor.substr(20), "HDOP", "3.4");
    EXPECT_EQ(hdopColour(dialog), QColor(255, 0, 0));
    EXPECT_EQ(text(dialog, "ct") + " " + text(dialog, "latl"), "1 -33.852057");

    // At Acc/4 the normal colour; the fix is averaged in.
    send(dialog, fix("3351.1240,S,15112.5060,E", "2.5") + "\r\n", "ct", "2");
    EXPECT_EQ(hdopColour(dialog), normal);
    EXPECT_EQ(text(dialog, "latl"), "-33.852067");
    EXPECT_EQ(text(dialog, "lat").toStdString(), dialog.model().lat);

    // Losing the fix empties HDOP; any other sentence is only shown.
    send(dialog, test::Sentence("GPGGA,095300.000,,,,,0,00,,,M,,M,,") + "\r\n", "lblfix",
         "Fix lost");
    EXPECT_EQ(text(dialog, "HDOP"), "");
    const std::string rmc = test::Sentence("GPRMC,095301.000,V,,,,,,,080407,,");
    send(dialog, rmc + "\r\n", "record", QString::fromStdString(rmc));
    EXPECT_EQ(text(dialog, "ct"), "2");

    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_FALSE(port.PortOpen());
    EXPECT_TRUE(released());
    SetupRecord setup;
    dialog.model().ApplyTo(setup);
    EXPECT_EQ(setup.lat, "");
}

// From the main window's button: the old position goes first, the dialog closes by itself
// with a beep once accurate enough, or Cancel leaves the position empty; the focus goes on
// to the furthest step available.
TEST_F(GetPositionDialog, ClosesByItselfWithTheAverageOrCancelLeavesThePositionEmpty) {
    for (const bool cancel : {false, true}) {
        SCOPED_TRACE(cancel);
        CountingBeeper beeps;
        SetupRecord setup;
        setup.lat = "1.000000";
        setup.lon = "2.000000";
        CommandStates commands;
        commands.Step2 = true;
        commands.Step3 = !cancel;
        bool seenOpen = false;
        const auto limit = whileModal([&](frmGetPosition& dialog) {
            seenOpen = true;
            EXPECT_EQ(setup.lat + setup.lon, "");
            pty.write(fix("4807.0380,N,01131.0000,E", "1.0") + "\r\n");
            EXPECT_TRUE(QTest::qWaitFor([&] { return text(dialog, "ct") == "1"; }, 5000));
            EXPECT_EQ(text(dialog, "lat"), "48.117300");
            if (cancel)
                QTest::mouseClick(button(dialog, "CancelButton"), Qt::LeftButton);
            else
                pty.write(fix("4807.0400,N,01131.0060,E", "1.0") + "\r\n");
        });
        const FocusTarget focus = btnGetPos_Click(setup, commands, [&](SetupRecord& s) {
            frmGetPosition::Capture(s, onDevice(pty.out()), beeps, true, '.');
        });
        ASSERT_TRUE(seenOpen);
        EXPECT_TRUE(released());
        if (cancel) {
            EXPECT_EQ(setup.lat + setup.lon, "");
            EXPECT_EQ(focus, FocusTarget::Step2);
            EXPECT_TRUE(beeps.beeps.empty());
        } else {
            // Two fixes at HDOP 1.0: 4.00 m is within 10 m, so the timer pressed OK.
            EXPECT_EQ(setup.lat, Format(48 + (7.038 + 7.04) / 2 / 60, "00.000000"));
            EXPECT_EQ(setup.lon, Format(11 + (31.0 + 31.006) / 2 / 60, "000.000000"));
            EXPECT_EQ(beeps.beeps, (std::vector<std::pair<int, int>>{{2000, 100}}));
            EXPECT_EQ(focus, FocusTarget::Step3);
        }
    }
    SetupRecord setup;
    EXPECT_EQ(btnGetPos_Click(setup, CommandStates{}, [](SetupRecord&) {}), FocusTarget::Step1);
}

TEST_F(GetPositionDialog, SerialErrorsShowInTheRecordBoxAndThePortIsAlwaysReleased) {
    {
        QtSerialPort port;
        auto open = std::make_unique<frmGetPosition>(onDevice(pty.out()), port, beeper, false);
        ASSERT_TRUE(port.PortOpen());
        open.reset(); // destroyed while open
        EXPECT_FALSE(port.PortOpen());
        EXPECT_TRUE(released());
    }
    // A port another program holds: the error shows, the dialog stays, OK copies nothing.
    QtSerialPort holder;
    holder.SetDevice(pty.out());
    ASSERT_EQ(holder.SetPortOpen(true), 0);
    {
        QtSerialPort port;
        frmGetPosition busy(onDevice(pty.out()), port, beeper, false);
        busy.show();
        EXPECT_EQ(text(busy, "record"), "Error: Port In Use");
        QTest::mouseClick(button(busy, "OKButton"), Qt::LeftButton);
        EXPECT_EQ(busy.result(), QDialog::Accepted);
        SetupRecord setup;
        setup.lat = "5.000000";
        busy.model().ApplyTo(setup);
        EXPECT_EQ(setup.lat + setup.lon, "");
    }
    holder.SetPortOpen(false);

    // The line going away mid-capture is shown as it happens, and the fix so far is kept.
    QtSerialPort port;
    frmGetPosition dialog(onDevice(pty.out()), port, beeper, false);
    dialog.show();
    dialog.findChild<QTimer*>("Timer1")->stop(); // the error must show by itself
    send(dialog, fix("3908.8199,N,00023.0832,W", "2.1") + "\r\n", "ct", "1");
    pty.stop();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return text(dialog, "record") == "Error: Operation valid only when the port is open";
        },
        5000))
        << text(dialog, "record").toStdString();
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(text(dialog, "lon"), "-000.384720");
    dialog.close(); // the window's close button: the same as Cancel
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(dialog.model().result(), GetPositionModel::Result::Cancel);
}
