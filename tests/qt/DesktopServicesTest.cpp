// The shell, mail, clipboard and system-information adapters. The offscreen platform has no
// desktop to hand documents to, which is itself the real "nothing is associated" case.
#include "platform/CommandLine.h"
#include "qt/services/QtClipboard.h"
#include "qt/services/QtMailer.h"
#include "qt/services/QtShell.h"
#include "qt/services/QtSystemInfo.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>
#include <QUrlQuery>

#include <gtest/gtest.h>

using namespace zav;

TEST(QtShell, ResultCodesForMissingFilesAssociationsAndSuccess) {
    QTemporaryDir dir;
    const QString doc = dir.filePath("ZAV.pdf");
    QFile file(doc);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();

    std::vector<QUrl> handed;
    bool accept = true;
    QtShell shell([&](const QUrl& url) {
        handed.push_back(url);
        return accept;
    });
    EXPECT_EQ(shell.Open(dir.filePath("missing.pdf").toStdString()), 2);
    EXPECT_EQ(shell.Open(""), 2);
    EXPECT_TRUE(handed.empty());
    EXPECT_EQ(shell.Open(doc.toStdString()), 42);
    EXPECT_EQ(shell.Open("https://www.zav-noise.org/support.htm#download"), 42);
    accept = false;
    EXPECT_EQ(shell.Open(doc.toStdString()), 31);
    ASSERT_EQ(handed.size(), 3u);
    EXPECT_EQ(handed[0], QUrl::fromLocalFile(doc));
    EXPECT_EQ(handed[1].scheme(), "https");
    EXPECT_EQ(handed[1].fragment(), "download");

    // The platform itself: offscreen nothing takes a document.
    QtShell real;
    EXPECT_EQ(real.Open(doc.toStdString()), 31);
}

TEST(QtShell, XdgOpenTellsNothingToOpenWithFromOpened) {
    // A stand-in xdg-open first on the search path, answering as the real one does: 0 opened,
    // 3 no tool for it; one still running has started a viewer.
    QTemporaryDir dir;
    const QString script = dir.filePath("xdg-open");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", dir.path().toLocal8Bit() + ":" + path);
    for (const auto& [body, opened] : {std::pair<const char*, bool>{"exit 0", true},
                                       {"exit 3", false},
                                       {"exec sleep 5", true}}) {
        QFile file(script);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QByteArray("#!/bin/sh\necho \"$1\" > ") + dir.filePath("asked").toLocal8Bit() +
                   "\n" + body + "\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        EXPECT_EQ(XdgOpen(QUrl("https://www.zav-noise.org/zav/faq.htm")), opened) << body;
        QFile asked(dir.filePath("asked"));
        ASSERT_TRUE(asked.open(QIODevice::ReadOnly));
        EXPECT_EQ(asked.readAll(), "https://www.zav-noise.org/zav/faq.htm\n");
    }
    QFile::remove(script);
    EXPECT_FALSE(XdgOpen(QUrl("https://www.zav-noise.org/"))) << "no xdg-open at all";
    qputenv("PATH", path);
}

TEST(QtShell, AddressesAreToldFromPaths) {
    EXPECT_TRUE(IsAddress("https://x/y"));
    EXPECT_TRUE(IsAddress("mailto:a@b"));
    EXPECT_TRUE(IsAddress("svn+ssh://h"));
    EXPECT_FALSE(IsAddress("C:\\Program Files\\ZAV\\ZAV.pdf"));
    EXPECT_FALSE(IsAddress("/usr/share/zav/ZAV.pdf"));
    EXPECT_FALSE(IsAddress("docs/a:b.pdf"));
    EXPECT_FALSE(IsAddress("licence.txt"));
}

TEST(QtShell, RunStartsAProgramWithItsArgumentsOrSaysItCannot) {
    QTemporaryDir dir;
    const QString script = dir.filePath("echo args.sh");
    const QString out = dir.filePath("args out.txt");
    QFile file(script);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("printf '%s|' \"$1\" \"$2\" > \"$3.part\" && mv \"$3.part\" \"$3\"\n");
    file.close();
    QtShell shell;
    ASSERT_TRUE(shell.Run(
        "sh", JoinCommandLine({script.toStdString(), "first", "second arg", out.toStdString()})));
    // Started detached: wait for it, bounded.
    for (int i = 0; i < 250 && !QFile::exists(out); ++i)
        QThread::msleep(20);
    QFile result(out);
    ASSERT_TRUE(result.open(QIODevice::ReadOnly));
    EXPECT_EQ(result.readAll().toStdString(), "first|second arg|");
    EXPECT_FALSE(shell.Run(dir.filePath("no-such-program").toStdString(), ""));
}

TEST(QtMailer, MailtoCarriesRecipientSubjectAndBodyWhole) {
    const MailMessage message{"obs@example.org", "### ZAV report ### ",
                              "username\talice & bob\r\nNotes:\r\n100% = sure?#\r\n--\r\n"};
    const QUrl url = MailtoUrl(message);
    ASSERT_TRUE(url.isValid());
    EXPECT_EQ(url.scheme(), "mailto");
    EXPECT_EQ(url.path().toStdString(), "obs@example.org");
    const QUrlQuery query(url);
    EXPECT_EQ(query.queryItemValue("subject", QUrl::FullyDecoded).toStdString(), message.subject);
    EXPECT_EQ(query.queryItemValue("body", QUrl::FullyDecoded).toStdString(), message.body);
    EXPECT_NE(url.toEncoded().indexOf("%0D%0A"), -1);

    std::vector<QUrl> handed;
    QtMailer mailer([&](const QUrl& u) {
        handed.push_back(u);
        return true;
    });
    EXPECT_TRUE(mailer.Send(message));
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed[0], url);
    EXPECT_FALSE(QtMailer().Send(message)); // offscreen: no mail program takes it
}

TEST(QtClipboard, ReplacesTheTextOnTheSystemClipboard) {
    QtClipboard clipboard;
    clipboard.SetText("Receipt: ZAV-1\r\nsecond line");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Receipt: ZAV-1\r\nsecond line");
    clipboard.SetText("");
    EXPECT_TRUE(QGuiApplication::clipboard()->text().isEmpty());
}

TEST(QtSystemInfo, FirstCandidateFoundOnTheSearchPath) {
    QTemporaryDir dir;
    const QString tool = dir.filePath("sysinfo-b");
    QFile file(tool);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n");
    file.close();
    const std::vector<std::string> paths{dir.path().toStdString()};
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(), "");
    file.setPermissions(file.permissions() | QFile::ExeOwner);
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(), tool.toStdString());
    EXPECT_EQ(QtSystemInfo({"sysinfo-a"}, paths).ToolPath(), "");
}
