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
#include <QUrl>
#include <QUrlQuery>

#include <tuple>

#include <gtest/gtest.h>

using namespace zav;

namespace {

void writeScript(const QString& path, const QByteArray& text) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

TEST(QtShell, OpenAnswersMissingNotAssociatedOrOpenedAndTellsAddressesFromPaths) {
    QTemporaryDir dir;
    const QString doc = dir.filePath("ZAV.pdf");
    writeScript(doc, "");
    std::vector<QUrl> handed;
    bool accept = true;
    QtShell shell([&](const QUrl& url) { return handed.push_back(url), accept; });
    for (const auto& [target, accepted, answer] :
         {std::tuple{dir.filePath("missing.pdf").toStdString(), true, 2},
          {"", true, 2},
          {doc.toStdString(), true, 42},
          {"https://www.zav-noise.org/support.htm#download", true, 42},
          {doc.toStdString(), false, 31}}) {
        accept = accepted;
        EXPECT_EQ(shell.Open(target), answer) << target;
    }
    ASSERT_EQ(handed.size(), 3u);
    EXPECT_EQ(handed[0], QUrl::fromLocalFile(doc));
    EXPECT_EQ(handed[1].fragment(), "download");
    EXPECT_EQ(QtShell().Open(doc.toStdString()), 31); // offscreen nothing takes a document

    for (const auto& [text, address] : {std::pair<const char*, bool>{"https://x/y", true},
                                        {"mailto:a@b", true},
                                        {"svn+ssh://h", true},
                                        {"C:\\Program Files\\ZAV\\ZAV.pdf", false},
                                        {"/usr/share/zav/ZAV.pdf", false},
                                        {"docs/a:b.pdf", false}})
        EXPECT_EQ(IsAddress(text), address) << text;
}

TEST(QtShell, XdgOpenTellsNothingToOpenWithFromOpened) {
    // A stand-in first on the search path, answering as the real one does: 0 opened, 3 no
    // tool for it; one still running has started a viewer.
    QTemporaryDir dir;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", dir.path().toLocal8Bit() + ":" + path);
    const QUrl url("https://www.zav-noise.org/zav/faq.htm");
    for (const auto& [body, opened] : {std::pair<const char*, bool>{"exit 0", true},
                                       {"exit 3", false},
                                       {"exec sleep 5", true}}) {
        writeScript(dir.filePath("xdg-open"), "#!/bin/sh\necho \"$1\" > " +
                                                  dir.filePath("asked").toLocal8Bit() + "\n" +
                                                  body);
        EXPECT_EQ(XdgOpen(url), opened) << body;
        QFile asked(dir.filePath("asked"));
        ASSERT_TRUE(asked.open(QIODevice::ReadOnly));
        EXPECT_EQ(asked.readAll(), url.toEncoded() + "\n");
    }
    QFile::remove(dir.filePath("xdg-open"));
    EXPECT_FALSE(XdgOpen(url)) << "no xdg-open at all";
    qputenv("PATH", path);
}

TEST(QtShell, RunStartsAProgramWithItsArgumentsOrSaysItCannot) {
    QTemporaryDir dir;
    const QString script = dir.filePath("echo args.sh"), out = dir.filePath("args out.txt");
    writeScript(script, "printf '%s|' \"$1\" \"$2\" > \"$3.part\" && mv \"$3.part\" \"$3\"\n");
    QtShell shell;
    ASSERT_TRUE(shell.Run(
        "sh", JoinCommandLine({script.toStdString(), "first", "second arg", out.toStdString()})));
    for (int i = 0; i < 250 && !QFile::exists(out); ++i) // started detached
        QThread::msleep(20);
    QFile result(out);
    ASSERT_TRUE(result.open(QIODevice::ReadOnly));
    EXPECT_EQ(result.readAll().toStdString(), "first|second arg|");
    EXPECT_FALSE(shell.Run(dir.filePath("no-such-program").toStdString(), ""));
}

TEST(QtMailerAndClipboard, MailtoCarriesTheMessageWholeAndTheClipboardTheText) {
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

    QtClipboard clipboard;
    clipboard.SetText("Receipt: ZAV-1\r\nsecond line");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Receipt: ZAV-1\r\nsecond line");
}

TEST(QtSystemInfo, FirstExecutableCandidateFoundOnTheSearchPath) {
    QTemporaryDir dir;
    const QString tool = dir.filePath("sysinfo-b");
    QFile(tool).open(QIODevice::WriteOnly);
    const std::vector<std::string> paths{dir.path().toStdString()};
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(), "");
    writeScript(tool, "#!/bin/sh\n");
    EXPECT_EQ(QtSystemInfo({"sysinfo-a", "sysinfo-b"}, paths).ToolPath(), tool.toStdString());
    EXPECT_EQ(QtSystemInfo({"sysinfo-a"}, paths).ToolPath(), "");
}
