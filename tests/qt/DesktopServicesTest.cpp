// The shell, mail, clipboard and system-information adapters. The offscreen platform has no
// desktop to hand documents to, which is itself the real "nothing is associated" case.
#include "platform/CommandLine.h"
#include "qt/services/QtClipboard.h"
#include "qt/services/QtMailer.h"
#include "qt/services/QtShell.h"
#include "qt/services/QtSystemInfo.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QThread>
#include <QUrlQuery>

#include <gtest/gtest.h>

#include <tuple>

using namespace zav;

namespace {

QByteArray write(const QString& path, const QByteArray& text) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path.toLocal8Bit();
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "(none)";
}

} // namespace

TEST(QtShell, OpensDocumentsAndAddressesRunsProgramsAndTellsWhatFailed) {
    QTemporaryDir dir;
    const QString doc = dir.filePath("ZAV.pdf");
    write(doc, "");
    std::vector<QUrl> handed;
    bool accept = true;
    QtShell shell([&](const QUrl& url) { return handed.push_back(url), accept; });
    const std::string web = "https://www.zav-noise.org/s.htm#download";
    EXPECT_EQ((std::vector{shell.Open(dir.filePath("no.pdf").toStdString()), shell.Open(""),
                           shell.Open(doc.toStdString()), shell.Open(web)}),
              (std::vector{2, 2, 42, 42})); // braces: in this order
    accept = false;
    EXPECT_EQ(shell.Open(doc.toStdString()), 31);
    EXPECT_EQ(handed,
              (std::vector<QUrl>{QUrl::fromLocalFile(doc), QUrl(QString::fromStdString(web)),
                                 QUrl::fromLocalFile(doc)}));
    EXPECT_EQ(QtShell().Open(doc.toStdString()), 31); // offscreen nothing takes a document
    for (const char* address : {"mailto:a@b", "svn+ssh://h"})
        EXPECT_TRUE(IsAddress(address)) << address;
    for (const char* path : {"C:\\ZAV\\ZAV.pdf", "/usr/share/zav/ZAV.pdf", "docs/a:b.pdf"})
        EXPECT_FALSE(IsAddress(path)) << path;

    // Arguments with spaces arrive whole, in a program started detached.
    const QString out = dir.filePath("args out.txt");
    const QByteArray script =
        write(dir.filePath("echo args.sh"), "printf '%s|' \"$1\" \"$2\" > "
                                            "\"$3.part\"; mv \"$3.part\" \"$3\"");
    ASSERT_TRUE(shell.Run(
        "sh", JoinCommandLine({script.toStdString(), "first", "second arg", out.toStdString()})));
    for (int i = 0; i < 250 && !QFile::exists(out); ++i)
        QThread::msleep(20);
    EXPECT_EQ(read(out), "first|second arg|");
    EXPECT_FALSE(shell.Run(dir.filePath("no-such-program").toStdString(), ""));

    // A stand-in xdg-open first on the search path, answering as the real one does: 0 opened,
    // 3 no tool for it; one still running has started a viewer.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", dir.path().toLocal8Bit() + ":" + path);
    const QUrl url("https://www.zav-noise.org/zav/faq.htm");
    for (const auto& [body, opened] :
         {std::pair{"exit 0", true}, {"exit 3", false}, {"exec sleep 5", true}}) {
        write(dir.filePath("xdg-open"),
              "#!/bin/sh\necho \"$1\" > " + write(dir.filePath("asked"), "") + "\n" + body);
        EXPECT_EQ(XdgOpen(url), opened) << body;
        EXPECT_EQ(read(dir.filePath("asked")), url.toEncoded() + "\n");
    }
    QFile::remove(dir.filePath("xdg-open"));
    EXPECT_FALSE(XdgOpen(url)) << "no xdg-open at all";
    qputenv("PATH", path);
}

TEST(QtMailerClipboardAndSystemInfo, HandOnTheWholeTextAndFindTheFirstTool) {
    const MailMessage message{"obs@example.org", "### ZAV report ### ",
                              "username\talice & bob\r\nNotes:\r\n100% = sure?#\r\n--\r\n"};
    const QUrl url = MailtoUrl(message);
    const QUrlQuery query(url);
    EXPECT_EQ((url.scheme() + ":" + url.path() + "|" +
               query.queryItemValue("subject", QUrl::FullyDecoded) + "|" +
               query.queryItemValue("body", QUrl::FullyDecoded))
                  .toStdString(),
              "mailto:obs@example.org|" + message.subject + "|" + message.body);
    std::vector<QUrl> handed;
    EXPECT_TRUE(QtMailer([&](const QUrl& u) { return handed.push_back(u), true; }).Send(message));
    EXPECT_EQ(handed, std::vector<QUrl>{url});
    EXPECT_FALSE(QtMailer().Send(message)); // offscreen: no mail program takes it
    QtClipboard().SetText("Receipt: ZAV-1\r\nsecond line");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Receipt: ZAV-1\r\nsecond line");

    QTemporaryDir dir;
    const std::vector<std::string> paths{dir.path().toStdString()};
    QFile(dir.filePath("sysinfo-b")).open(QIODevice::WriteOnly);
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(), ""); // not executable
    write(dir.filePath("sysinfo-b"), "#!/bin/sh\n");
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(),
              dir.filePath("sysinfo-b").toStdString());
}
