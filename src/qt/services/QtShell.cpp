#include "qt/services/QtShell.h"

#include "platform/CommandLine.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include <cctype>

namespace zav {

bool IsAddress(const std::string& target) {
    const auto colon = target.find(':');
    // A one-letter scheme is a drive ("C:\..."); a scheme is a letter then letters, digits,
    // "+", "-" or ".".
    if (colon == std::string::npos || colon < 2 ||
        !std::isalpha(static_cast<unsigned char>(target[0])))
        return false;
    for (std::size_t i = 1; i < colon; ++i) {
        const auto c = static_cast<unsigned char>(target[i]);
        if (!std::isalnum(c) && c != '+' && c != '-' && c != '.')
            return false;
    }
    return true;
}

bool XdgOpen(const QUrl& url) {
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (tool.isEmpty())
        return false;
    auto* process = new QProcess;
    process->start(tool,
                   {url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded)});
    if (!process->waitForStarted(5000)) {
        delete process;
        return false;
    }
    if (!process->waitForFinished(2000)) {
        // Still at work: it has handed the target to something that is opening it.
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
        return true;
    }
    const bool opened = process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0;
    delete process;
    return opened;
}

QtShell::QtShell(Opener opener) : m_opener(std::move(opener)) {
    if (m_opener)
        return;
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb") || platform == QLatin1String("wayland")) {
        m_opener = XdgOpen;
        return;
    }
#endif
    m_opener = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
}

int QtShell::Open(const std::string& target) {
    QUrl url;
    if (IsAddress(target)) {
        url = QUrl(QString::fromStdString(target), QUrl::TolerantMode);
    } else {
        const QFileInfo file(QString::fromStdString(target));
        if (target.empty() || !file.exists())
            return kFileNotFound;
        url = QUrl::fromLocalFile(file.absoluteFilePath());
    }
    if (!url.isValid())
        return kFileNotFound;
    return m_opener(url) ? kOpened : kNoAssociation;
}

bool QtShell::Run(const std::string& program, const std::string& arguments) {
    const std::vector<std::string> split = SplitCommandLine(arguments, 64);
    QStringList args;
    for (int i = 1; i <= std::stoi(split[0]); ++i)
        args << QString::fromStdString(split[static_cast<std::size_t>(i)]);
    return QProcess::startDetached(QString::fromStdString(program), args);
}

} // namespace zav
