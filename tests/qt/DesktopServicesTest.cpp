// Offscreen there is no desktop to take documents: the real "nothing is associated" case.
#include "platform/CommandLine.h"
#include "qt/services/QtClipboard.h"
#include "qt/services/QtMailer.h"
#include "qt/services/QtShell.h"
#include "qt/services/QtSystemInfo.h"
#include "testsupport/QtWait.h"
#include "testsupport/ScratchDir.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QUrlQuery>

#include <gtest/gtest.h>

using namespace zav;

TEST(DesktopServices, OpenRunMailCopyAndFindToolsThroughTheDesktopOrSayWhyNot) {
    QTemporaryDir dir;
    const auto file = [&dir](const QString& name, const QByteArray& text) {
        QFile f(dir.filePath(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly) && f.write(text) == text.size());
        f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return f.fileName().toStdString();
    };
    const std::string doc = file("ZAV.pdf", ""), web = "https://www.zav-noise.org/s.htm#dl";
    std::vector<QUrl> handed;
    QtShell shell([&](const QUrl& url) { return handed.push_back(url), url.isLocalFile(); });
    EXPECT_EQ(
        (std::vector{shell.Open(doc + "x"), shell.Open(doc), shell.Open(web), shell.Open("")}),
        (std::vector{2, 42, 31, 2})); // braces: in this order
    EXPECT_EQ(handed,
              (std::vector{QUrl::fromLocalFile(QString::fromStdString(doc)), QUrl(web.c_str())}));
    EXPECT_EQ(QtShell().Open(doc), 31); // offscreen nothing takes a document
    // Arguments with spaces arrive whole, in a program started detached.
    const std::string out = dir.filePath("args out").toStdString(),
                      script = file("a b", "echo \"$1|$2\" > \"$3.p\"; mv \"$3.p\" \"$3\"");
    ASSERT_TRUE(shell.Run("sh", JoinCommandLine({script, "1", "2 3", out})));
    test::WaitFor([&] { return QFile::exists(QString::fromStdString(out)); });
    EXPECT_EQ(test::ReadFile(out), "1|2 3\n");
    EXPECT_FALSE(shell.Run(dir.filePath("no-such-program").toStdString(), ""));
    // A stand-in xdg-open first on the search path: it opens `web` only, else exits with 3.
    qputenv("PATH", dir.path().toLocal8Bit() + ":" + qgetenv("PATH"));
    file("xdg-open", QByteArray("#!/bin/sh\n[ \"$1\" = '") + web.c_str() + "' ] || exit 3");
    EXPECT_EQ(std::pair(XdgOpen(QUrl(web.c_str())), XdgOpen(QUrl("https://x.org/"))),
              std::pair(true, false));

    const MailMessage mail{"obs@example.org", "### ZAV report ### ",
                           "alice & bob\r\n100% = sure?#\r\n--\r\n"};
    const QUrlQuery query(MailtoUrl(mail));
    EXPECT_EQ(MailtoUrl(mail).path() + "|" + query.queryItemValue("subject", QUrl::FullyDecoded) +
                  "|" + query.queryItemValue("body", QUrl::FullyDecoded),
              QString::fromStdString("obs@example.org|" + mail.subject + "|" + mail.body));
    EXPECT_TRUE(QtMailer([&](const QUrl& u) { return handed.push_back(u), true; }).Send(mail));
    EXPECT_EQ(handed.back(), MailtoUrl(mail));
    EXPECT_FALSE(QtMailer().Send(mail)); // offscreen: no mail program takes it
    QtClipboard().SetText("Receipt: ZAV-1\r\nsecond line");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Receipt: ZAV-1\r\nsecond line");
    file("sysinfo-b", "#!/bin/sh\n");
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, {dir.path().toStdString()}).ToolPath(),
              dir.filePath("sysinfo-b").toStdString());
}
