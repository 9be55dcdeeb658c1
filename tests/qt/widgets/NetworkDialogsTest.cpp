// The transfer, update and about dialogs bind their models; the busy window follows a wait.
#include "../TestHttpServer.h"
#include "report/ReportFixture.h"

#include "qt/services/QtHttpClient.h"
#include "qt/widgets/AboutDialog.h"
#include "qt/widgets/BusyIndicator.h"
#include "qt/widgets/TransferDialog.h"
#include "qt/widgets/UpdateDialog.h"
#include "report/TransferModel.h"
#include "support/AboutModel.h"
#include "support/UpdateModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;
using namespace std::chrono_literals;

namespace {

template <typename T> T* child(QWidget& parent, const char* name) {
    T* found = parent.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

struct TransferDesk {
    ReportFixture fixture;
    TransferSettings settings;
    TransferHistory history;
    FakeHttp http;
    FakeXml xml;
    FakeMailer mailer;
    FakeClipboard clipboard;
    FakeDialogs dialogs;
    TransferModel model{
        fixture.source(), settings, history, {http, xml, mailer, clipboard, dialogs}};

    TransferDesk() {
        settings.username = "alice";
        settings.URL = "collect.example.org/p";
        settings.AtfEmail = "obs@example.org";
        http.reply = {200, "<r/>"};
        xml.elements = {{"cc", "0"}, {"receipt", "R-9"}};
    }
};

} // namespace

TEST(NetworkDialogs, TransferUpdateAndAboutCarryTypingAndClicksToTheirModels) {
    TransferDesk desk;
    TransferDialog dialog(desk.model);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* url = child<QLineEdit>(dialog, "URL");
    auto* ok = child<QPushButton>(dialog, "OKButton");
    auto* message = child<QPlainTextEdit>(dialog, "Message");
    EXPECT_EQ(url->text(), "collect.example.org/p");
    // Emptying the address and leaving the box hides OK; the e-mail option shows it again.
    url->setFocus();
    url->selectAll();
    QTest::keyClick(url, Qt::Key_Delete);
    child<QLineEdit>(dialog, "Email")->setFocus();
    QApplication::processEvents();
    EXPECT_FALSE(ok->isVisible());
    child<QRadioButton>(dialog, "sendByEmail")->click();
    EXPECT_TRUE(ok->isVisible());
    child<QRadioButton>(dialog, "sendOnline")->click();
    url->setFocus();
    QTest::keyClicks(url, "server.example/p"); // a click straight from the box finds it there
    // A second click while the server is awaited (a double-click) finds OK disabled.
    desk.http.whileWaiting = [ok] { QTest::mouseClick(ok, Qt::LeftButton); };
    QTest::mouseClick(ok, Qt::LeftButton);
    ASSERT_EQ(desk.http.requests.size(), 1u);
    EXPECT_EQ(desk.http.requests[0].url, "http://server.example/p");
    EXPECT_EQ(message->toPlainText() + " " + ok->text(), "Receipt: R-9 Done");
    EXPECT_FALSE(child<QPushButton>(dialog, "CancelButton")->isVisible());
    QTest::mouseDClick(message->viewport(), Qt::LeftButton);
    EXPECT_EQ(desk.clipboard.texts, std::vector<std::string>{"Receipt: R-9"});
    QTest::keyClicks(child<QLineEdit>(dialog, "username"), "2");
    dialog.reject(); // the fields are written back however it closes
    EXPECT_EQ(desk.settings.URL + " " + desk.settings.username, "server.example/p alice2");

    FakeHttp http;
    FakeXml xml;
    FakeUpdater updater;
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    http.reply = {200, "<u/>"};
    xml.elements = {{"url", "http://www.zav-noise.org/zav/"}, {"version", "99.0.0"}};
    updater.version = "1.0.0";
    UpdateModel model("http://site.example/", "/opt/zav", {http, xml, updater, shell, dialogs});
    UpdateDialog update(model);
    update.show();
    EXPECT_EQ(child<QLabel>(update, "Message")->text().toStdString(), model.Message);
    EXPECT_TRUE(child<QPushButton>(update, "updaterButton")->isEnabled());
    QTest::mouseClick(child<QPushButton>(update, "supportButton"), Qt::LeftButton);
    EXPECT_EQ(shell.opened, std::vector<std::string>{"http://site.example/support.htm#download"});
    EXPECT_FALSE(update.isVisible());

    AboutModel about("/opt/zav", {shell, dialogs, info});
    AboutDialog aboutDialog(about);
    aboutDialog.show();
    EXPECT_EQ(child<QLabel>(aboutDialog, "lblVersion")->text().toStdString(), about.versionText);
    QTest::mouseClick(child<QPushButton>(aboutDialog, "Licence"), Qt::LeftButton);
    EXPECT_EQ(shell.opened.back(), "/opt/zav/licence.txt");
    QTest::mouseClick(child<QPushButton>(aboutDialog, "okButton"), Qt::LeftButton);
    EXPECT_FALSE(aboutDialog.isVisible());
}

TEST(BusyIndicator, ModalWindowWhileWaitingWhoseCancelEndsTheRequest) {
    TestHttpServer server;
    server.neverAnswer();
    QWidget window;
    window.show();
    QtHttpClient http(60s);
    ShowBusyWhileWaiting(http, &window, "Waiting for the server");
    QString shownText;
    bool wasModal = false;
    QTimer::singleShot(700, [&] {
        auto* busy = window.findChild<QProgressDialog*>();
        ASSERT_NE(busy, nullptr);
        shownText = busy->labelText();
        wasModal = busy->isVisible() && QApplication::activeModalWidget() == busy;
        auto* cancel = busy->findChild<QPushButton*>();
        ASSERT_NE(cancel, nullptr);
        QTest::mouseClick(cancel, Qt::LeftButton);
    });
    EXPECT_EQ(http.Get(server.url("/Update.xml")).status, 0);
    EXPECT_EQ(shownText, "Waiting for the server");
    EXPECT_TRUE(wasModal);
    QApplication::processEvents();
    EXPECT_EQ(window.findChild<QProgressDialog*>(), nullptr);

    // A wait begun inside another: each takes down its own window, none is left behind.
    http.waitStarted();
    http.waitStarted();
    http.waitFinished();
    http.waitFinished();
    QApplication::processEvents();
    EXPECT_EQ(window.findChild<QProgressDialog*>(), nullptr);
}
