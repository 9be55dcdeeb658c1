// The position dialog on the real serial adapter, against a socat pseudo-terminal pair: the test
// writes NMEA into one end as a receiver would, the dialog reads the other. The averaging, the
// colours and the messages are the model's tests; here they must reach the controls.
#include "qt/widgets/GetPositionDialog.h"

#include "app/GetPosition.h"
#include "config/GpsSettings.h"
#include "config/SetupRecord.h"
#include "gps/GetPositionModel.h"
#include "gps/NmeaTestSupport.h"
#include "platform/Beeper.h"
#include "qt/services/QtSerialPort.h"
#include "testsupport/PtyPair.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace zav;

namespace {

struct CountingBeeper : Beeper {
    int beeps = 0;
    void Beep(int, int) override { ++beeps; }
};

// A fix as "ddmm.mmmm,H,dddmm.mmmm,H" with the given HDOP, quality 1.
std::string fix(const std::string& position, const std::string& hdop) {
    return test::Sentence("GPGGA,095257.809," + position + ",1,08," + hdop + ",4.0,M,42.2,M,,") +
           "\r\n";
}

QString text(const QWidget& dialog, const char* name) {
    if (auto* box = dialog.findChild<QLineEdit*>(QString::fromLatin1(name)))
        return box->text();
    return dialog.findChild<QLabel*>(QString::fromLatin1(name))->text();
}

class GetPositionDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!pty.ready())
            GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
        settings.Device = pty.out(); // Acc 10 m
    }
    bool shows(const QWidget& dialog, const char* name, const QString& expected) {
        return QTest::qWaitFor([&] { return text(dialog, name) == expected; }, 5000);
    }
    // Nothing holds the pseudo-terminal any more.
    bool released() {
        QtSerialPort probe;
        probe.SetDevice(pty.out());
        return probe.SetPortOpen(true) == 0;
    }

    test::PtyPair pty;
    GpsSettings settings;
    CountingBeeper beeper;
};

} // namespace

TEST_F(GetPositionDialogTest, ShowsWhatArrivesInItsControlsAndReleasesThePortOnEveryExit) {
    QtSerialPort port;
    GetPositionDialog dialog(settings, port, beeper, true);
    dialog.show();
    EXPECT_TRUE(port.PortOpen());
    dialog.findChild<QTimer*>("clockTimer")->stop(); // held still: what shows is what arrived
    const QColor normal = dialog.palette().color(QPalette::Text);
    auto* hdop = dialog.findChild<QLineEdit*>("HDOP");
    // Split mid-sentence, as a port delivers it. S 33° 51.1234' is -33.852057.
    const std::string first = fix("3351.1234,S,15112.5000,E", "3.0");
    pty.write(first.substr(0, 20));
    pty.write(first.substr(20));
    ASSERT_TRUE(shows(dialog, "ct", "1"));
    EXPECT_EQ(text(dialog, "record").toStdString() + "\r\n", first);
    QString shown;
    for (const char* name : {"HDOP", "fixText", "latl", "lon", "acc"})
        shown += text(dialog, name) + " ";
    EXPECT_EQ(shown, "3.0 Fix obtained -33.852057 151.208333 12.00 ");
    EXPECT_EQ(hdop->palette().color(QPalette::Text), QColor(255, 128, 0));
    pty.write(fix("3351.1240,S,15112.5060,E", "2.5"));
    ASSERT_TRUE(shows(dialog, "ct", "2"));
    EXPECT_EQ(hdop->palette().color(QPalette::Text), normal);
    EXPECT_EQ(text(dialog, "lat").toStdString(), dialog.model().lat);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_FALSE(port.PortOpen());
    EXPECT_TRUE(released());

    // The line going away mid-capture shows by itself; the window's close is Cancel.
    QtSerialPort lost;
    GetPositionDialog gone(settings, lost, beeper, false);
    gone.show();
    gone.findChild<QTimer*>("clockTimer")->stop();
    pty.write(fix("3908.8199,N,00023.0832,W", "2.1"));
    ASSERT_TRUE(shows(gone, "ct", "1"));
    pty.stop();
    EXPECT_TRUE(shows(gone, "record", "Error: Operation valid only when the port is open"));
    EXPECT_FALSE(lost.PortOpen());
    gone.close();
    EXPECT_EQ(gone.model().result(), GetPositionModel::Result::Cancel);
}

// From the main window's button: the old position goes first, the dialog closes by itself with
// a beep once accurate enough, or Cancel leaves the position empty; the focus goes on to the
// furthest step available.
TEST_F(GetPositionDialogTest, TheButtonCapturesModallyOrCancelsAndMovesTheFocusOn) {
    for (const bool cancel : {false, true}) {
        SCOPED_TRACE(cancel);
        SetupRecord setup;
        setup.lat = "1.000000";
        CommandStates commands;
        commands.Step2 = true, commands.Step3 = !cancel;
        bool seenOpen = false;
        QTimer guard; // a dialog that never closes fails the test instead of hanging it
        QObject::connect(&guard, &QTimer::timeout, [] {
            ADD_FAILURE() << "the capture dialog did not close";
            if (QWidget* open = QApplication::activeModalWidget())
                static_cast<QDialog*>(open)->reject();
        });
        guard.start(15000);
        QTimer::singleShot(0, [&] {
            QWidget* open = nullptr;
            ASSERT_TRUE(
                QTest::qWaitFor([&] { return (open = QApplication::activeModalWidget()); }, 5000));
            seenOpen = true;
            EXPECT_EQ(setup.lat, "");
            pty.write(fix("4807.0380,N,01131.0000,E", "1.0"));
            EXPECT_TRUE(shows(*open, "ct", "1"));
            if (cancel)
                QTest::mouseClick(open->findChild<QPushButton*>("CancelButton"), Qt::LeftButton);
            else
                pty.write(fix("4807.0400,N,01131.0060,E", "1.0"));
        });
        CountingBeeper beeps;
        const FocusTarget focus = capturePosition(setup, commands, [&](SetupRecord& s) {
            GetPositionDialog::Capture(s, settings, beeps, true, '.');
        });
        ASSERT_TRUE(seenOpen);
        EXPECT_TRUE(released());
        // Two fixes at HDOP 1.0: 4.00 m is within 10 m, so the timer pressed OK.
        EXPECT_EQ(setup.lat + " " + setup.lon, cancel ? " " : "48.117317 011.516717");
        EXPECT_EQ(beeps.beeps, cancel ? 0 : 1);
        EXPECT_EQ(focus, cancel ? FocusTarget::Step2 : FocusTarget::Step3);
    }
    SetupRecord setup;
    EXPECT_EQ(capturePosition(setup, CommandStates{}, [](SetupRecord&) {}), FocusTarget::Step1);
}
