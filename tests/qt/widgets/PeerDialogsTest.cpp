// The dialogs that meet the outside world, against real peers: a socat pseudo-terminal pair
// (written to as a receiver would), a local HTTP server and a private PulseAudio server.
#include "../PulseServer.h"
#include "../TestHttpServer.h"
#include "ChildWidgets.h"
#include "report/ReportFixture.h"

#include "app/GetPosition.h"
#include "config/GpsSettings.h"
#include "gps/GetPositionModel.h"
#include "gps/NmeaTestSupport.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtSerialPort.h"
#include "qt/widgets/BusyIndicator.h"
#include "qt/widgets/GetPositionDialog.h"
#include "qt/widgets/InputLevelDialog.h"
#include "qt/widgets/TransferDialog.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/PtyPair.h"
#include "testsupport/QtWait.h"
#include "testsupport/TestWave.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;

namespace {

bool shows(const QWidget& dialog, const char* name, const std::string& expected) {
    return QTest::qWaitFor([&] { return text(dialog, name) == expected; }, 5000);
}

// A fix as "ddmm.mmmm,H,dddmm.mmmm,H" with the given HDOP, quality 1.
std::string fix(const std::string& position, const std::string& hdop) {
    return Sentence("GPGGA,095257.809," + position + ",1,08," + hdop + ",4.0,M,42.2,M,,") + "\r\n";
}

class GetPositionDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!pty.ready())
            GTEST_SKIP() << "socat could not make a pseudo-terminal pair";
        settings.Device = pty.out(); // Acc 10 m
    }
    bool released() { // nothing holds the pseudo-terminal any more
        QtSerialPort probe;
        probe.SetDevice(pty.out());
        return probe.SetPortOpen(true) == 0;
    }
    PtyPair pty;
    GpsSettings settings;
    FakeBeeper beeper;
};

} // namespace

TEST_F(GetPositionDialogTest, ShowsWhatArrivesInItsControlsAndReleasesThePortOnEveryExit) {
    QtSerialPort port;
    GetPositionDialog dialog(settings, port, beeper, true);
    dialog.show();
    dialog.findChild<QTimer*>("clockTimer")->stop(); // held still: what shows is what arrived
    auto* hdop = child<QLineEdit>(dialog, "HDOP");
    // Split mid-sentence, as a port delivers it. S 33° 51.1234' is -33.852057.
    const std::string first = fix("3351.1234,S,15112.5000,E", "3.0");
    pty.write(first.substr(0, 20));
    pty.write(first.substr(20));
    ASSERT_TRUE(shows(dialog, "ct", "1"));
    std::string shown = text(dialog, "record") + "\r\n";
    for (const char* name : {"HDOP", "fixText", "latl", "lon", "acc"})
        shown += text(dialog, name) + " ";
    EXPECT_EQ(shown, first + "3.0 Fix obtained -33.852057 151.208333 12.00 ");
    EXPECT_EQ(hdop->palette().color(QPalette::Text), QColor(255, 128, 0));
    pty.write(fix("3351.1240,S,15112.5060,E", "2.5"));
    ASSERT_TRUE(shows(dialog, "ct", "2"));
    EXPECT_EQ(hdop->palette().color(QPalette::Text), dialog.palette().color(QPalette::Text));
    EXPECT_EQ(text(dialog, "lat"), dialog.model().lat);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(port.PortOpen());
    EXPECT_TRUE(released());

    // The line going away mid-capture shows by itself; the window's close is Cancel.
    QtSerialPort lost;
    GetPositionDialog gone(settings, lost, beeper, false);
    gone.show();
    pty.write(fix("3908.8199,N,00023.0832,W", "2.1"));
    ASSERT_TRUE(shows(gone, "ct", "1"));
    pty.stop();
    EXPECT_TRUE(shows(gone, "record", "Error: Operation valid only when the port is open"));
    EXPECT_FALSE(lost.PortOpen());
    gone.close();
    EXPECT_EQ(gone.model().result(), GetPositionModel::Result::Cancel);
}

// From the main window's button: the old position goes first, and the dialog closes by itself
// with a beep once accurate enough; the focus goes on to the furthest step available.
TEST_F(GetPositionDialogTest, TheButtonCapturesModallyAndMovesTheFocusOn) {
    SetupRecord setup;
    setup.lat = "1.000000";
    CommandStates commands;
    commands.Step2 = commands.Step3 = true;
    bool seenOpen = false; // with the old position gone
    QTimer::singleShot(0, [&] {
        seenOpen =
            QTest::qWaitFor([] { return QApplication::activeModalWidget(); }) && setup.lat.empty();
        pty.write(fix("4807.0380,N,01131.0000,E", "1.0") + fix("4807.0400,N,01131.0060,E", "1.0"));
    });
    EXPECT_EQ(capturePosition(setup, commands,
                              [&](SetupRecord& s) {
                                  GetPositionDialog::Capture(s, settings, beeper, true, '.');
                              }),
              FocusTarget::Step3);
    ASSERT_TRUE(seenOpen);
    EXPECT_TRUE(released());
    // Two fixes at HDOP 1.0: 4.00 m is within 10 m, so the timer pressed OK.
    EXPECT_EQ(setup.lat + " " + setup.lon + " " + std::to_string(beeper.beeps.size()),
              "48.117317 011.516717 1");
    commands.Step3 = false;
    EXPECT_EQ(FirstEnabledStep(commands), FocusTarget::Step2);
    EXPECT_EQ(FirstEnabledStep(CommandStates{}), FocusTarget::Step1);
}

TEST(TransferDialog, CarriesTypingAndClicksToItsModel) {
    TransferRig rig;
    TransferModel model = rig.model();
    TransferDialog dialog(model);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* url = child<QLineEdit>(dialog, "URL");
    auto* ok = child<QPushButton>(dialog, "OKButton");
    auto* message = child<QPlainTextEdit>(dialog, "Message");
    EXPECT_EQ(url->text(), "collect.example.org/post.php");
    url->selectAll();
    QTest::keyClicks(url, "server.example/p"); // a click straight from the box finds it there
    // A second click while the server is awaited (a double-click) finds OK disabled.
    rig.http.whileWaiting = [ok] { QTest::mouseClick(ok, Qt::LeftButton); };
    QTest::mouseClick(ok, Qt::LeftButton);
    ASSERT_EQ(rig.http.requests.size(), 1u);
    EXPECT_EQ(rig.http.requests[0].url, "http://server.example/p");
    EXPECT_EQ(message->toPlainText() + " " + ok->text(), "Receipt: R-17 Done");
    EXPECT_TRUE(ok->hasFocus() && !child(dialog, "CancelButton")->isVisible());
    QTest::mouseDClick(message->viewport(), Qt::LeftButton);
    EXPECT_EQ(rig.clipboard.texts, std::vector<std::string>{"Receipt: R-17"});
    QTest::keyClicks(child<QLineEdit>(dialog, "username"), "2");
    dialog.reject(); // the fields are written back however it closes
    EXPECT_EQ(rig.settings.URL + " " + rig.settings.username, "server.example/p alice2");
}

TEST(BusyIndicator, ModalWindowWhileWaitingWhoseCancelEndsTheRequest) {
    TestHttpServer server;
    server.neverAnswer();
    QWidget window;
    window.show();
    QtHttpClient http(std::chrono::seconds(60));
    ShowBusyWhileWaiting(http, &window, "Waiting for the server");
    QString shown;
    QTimer::singleShot(700, [&] {
        auto* busy = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(busy, nullptr);
        shown = busy->labelText();
        QTest::mouseClick(busy->findChild<QPushButton*>(), Qt::LeftButton);
    });
    EXPECT_EQ(http.Get(server.url("/Update.xml")).status, 0);
    EXPECT_EQ(shown, "Waiting for the server");
    QApplication::processEvents();
    EXPECT_EQ(window.findChild<QProgressDialog*>(), nullptr);
}

// Reads the remapped source "zavmic" while the server plays a sine into its null sink.
TEST(InputLevelDialog, ShowsTheLiveLevelOfAPulseAudioSourceAndAdvisesOnTheGain) {
    PulseServer server;
    ASSERT_TRUE(server.ok()) << server.why();
    ASSERT_TRUE(WaitFor([] { return FindAudioInput("zavmic").has_value(); }));
    QtAudioCapture capture;
    // Runs the meter until `done` holds (or 15 s pass), then closes it.
    auto meterUntil = [](InputLevelDialog& dialog, const std::function<bool()>& done) {
        bool met = false;
        QElapsedTimer clock;
        clock.start();
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if ((met = done()) || clock.elapsed() > 15000)
                dialog.reject();
        });
        poll.start(50);
        dialog.exec();
        return met;
    };
    auto db = [](const QLabel* label) { return label->text().section(' ', 1, 1).toDouble(); };
    for (const auto& [amplitude, advice] :
         {std::pair{0.25, "Level good for measuring"},
          {0.7, "Little headroom: turn the receiver's audio gain down a little"},
          {1.0, "Clipping: turn the receiver's audio gain or the recording level down"}}) {
        ASSERT_TRUE(server.Play(Sine(amplitude * 32767, 1000, 44100, 44100 * 30)));
        InputLevelDialog dialog(capture, "zavmic");
        const double rms = 20 * std::log10(amplitude / std::sqrt(2.0)); // -15.1 dBFS at 0.25
        const auto steady = [&] {
            return dialog.readings() > 5 && std::abs(db(dialog.rmsLabel()) - rms) < 0.6 &&
                   dialog.adviceLabel()->text() == advice;
        };
        EXPECT_TRUE(meterUntil(dialog, steady)) << dialog.adviceLabel()->text().toStdString();
        EXPECT_NEAR(db(dialog.peakLabel()), 20 * std::log10(amplitude), 0.6);
        EXPECT_TRUE(dialog.headroomLabel()->text().contains("clipping limit"));
        EXPECT_NEAR(dialog.meter()->value(), rms, 1.0);
    }
    InputLevelDialog missing(capture, "no such input"); // said in the window, no hang
    EXPECT_TRUE(meterUntil(missing, [&] {
        return missing.adviceLabel()->text().startsWith("The input cannot be read: ");
    }));
}
