// The transfer, update and about dialogs bind their models; the busy window follows a real wait.
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

template <typename T = QPushButton> T* child(QWidget& parent, const char* name) {
    T* found = parent.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

} // namespace

TEST(NetworkDialogs, TransferUpdateAndAboutCarryTypingAndClicksToTheirModels) {
    ReportFixture fixture;
    TransferSettings settings;
    settings.username = "alice", settings.URL = "collect.example.org/p";
    settings.AtfEmail = "obs@example.org";
    TransferHistory history;
    FakeHttp http;
    FakeXml xml;
    FakeMailer mailer;
    FakeClipboard clipboard;
    FakeDialogs dialogs;
    http.reply = {200, "<r/>"};
    xml.elements = {{"cc", "0"}, {"receipt", "R-9"}};
    TransferModel model{
        fixture.source(), settings, history, {http, xml, mailer, clipboard, dialogs}};
    TransferDialog dialog(model);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* url = child<QLineEdit>(dialog, "URL");
    auto* ok = child(dialog, "OKButton");
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
    http.whileWaiting = [ok] { QTest::mouseClick(ok, Qt::LeftButton); };
    QTest::mouseClick(ok, Qt::LeftButton);
    ASSERT_EQ(http.requests.size(), 1u);
    EXPECT_EQ(http.requests[0].url, "http://server.example/p");
    EXPECT_EQ(message->toPlainText() + " " + ok->text(), "Receipt: R-9 Done");
    EXPECT_TRUE(ok->hasFocus());
    EXPECT_FALSE(child(dialog, "CancelButton")->isVisible());
    QTest::mouseDClick(message->viewport(), Qt::LeftButton);
    EXPECT_EQ(clipboard.texts, std::vector<std::string>{"Receipt: R-9"});
    QTest::keyClicks(child<QLineEdit>(dialog, "username"), "2");
    dialog.reject(); // the fields are written back however it closes
    EXPECT_EQ(settings.URL + " " + settings.username, "server.example/p alice2");

    FakeUpdater updater;
    FakeShell shell;
    FakeSystemInfo info;
    http.reply = {200, "<u/>"};
    xml.elements = {{"url", "http://www.zav-noise.org/zav/"}, {"version", "99.0.0"}};
    updater.version = "1.0.0";
    UpdateModel updateModel("http://site.example/", "/opt/zav",
                            {http, xml, updater, shell, dialogs});
    UpdateDialog update(updateModel);
    update.show();
    EXPECT_EQ(child<QLabel>(update, "Message")->text().toStdString(), updateModel.Message);
    EXPECT_TRUE(child(update, "updaterButton")->isEnabled());
    QTest::mouseClick(child(update, "supportButton"), Qt::LeftButton);
    EXPECT_EQ(shell.opened, std::vector<std::string>{"http://site.example/support.htm#download"});
    EXPECT_FALSE(update.isVisible());

    AboutModel about("/opt/zav", {shell, dialogs, info});
    AboutDialog aboutDialog(about);
    aboutDialog.show();
    EXPECT_EQ(child<QLabel>(aboutDialog, "lblVersion")->text().toStdString(), about.versionText);
    QTest::mouseClick(child(aboutDialog, "Licence"), Qt::LeftButton);
    EXPECT_EQ(shell.opened.back(), "/opt/zav/licence.txt");
    QTest::mouseClick(child(aboutDialog, "okButton"), Qt::LeftButton);
    EXPECT_FALSE(aboutDialog.isVisible());
}

TEST(BusyIndicator, ModalWindowWhileWaitingWhoseCancelEndsTheRequest) {
    TestHttpServer server;
    server.neverAnswer();
    QWidget window;
    window.show();
    QtHttpClient http(60s);
    ShowBusyWhileWaiting(http, &window, "Waiting for the server");
    QString shown;
    QTimer::singleShot(700, [&] {
        auto* busy = window.findChild<QProgressDialog*>();
        ASSERT_NE(busy, nullptr);
        if (busy->isVisible() && QApplication::activeModalWidget() == busy)
            shown = busy->labelText();
        QTest::mouseClick(busy->findChild<QPushButton*>(), Qt::LeftButton);
    });
    EXPECT_EQ(http.Get(server.url("/Update.xml")).status, 0);
    EXPECT_EQ(shown, "Waiting for the server");
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
