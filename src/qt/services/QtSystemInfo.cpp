#include "qt/services/QtSystemInfo.h"

#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

namespace zav {

QtSystemInfo::QtSystemInfo() : QtSystemInfo({"hardinfo", "hardinfo2", "kinfocenter"}, {}) {}

QtSystemInfo::QtSystemInfo(std::vector<std::string> candidates,
                           std::vector<std::string> searchPaths)
    : m_candidates(std::move(candidates)), m_searchPaths(std::move(searchPaths)) {}

std::string QtSystemInfo::ToolPath() {
#ifdef _WIN32
    const QSettings msinfo(
        QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Shared Tools\\MSINFO"),
        QSettings::NativeFormat);
    QString path = msinfo.value(QStringLiteral("PATH")).toString();
    if (path.isEmpty()) {
        const QSettings location(
            QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Shared Tools Location"),
            QSettings::NativeFormat);
        const QString folder = location.value(QStringLiteral("MSINFO")).toString();
        if (!folder.isEmpty())
            path = folder + QStringLiteral("\\MSINFO32.EXE");
    }
    if (!path.isEmpty())
        return path.toStdString();
#endif
    QStringList paths;
    for (const std::string& p : m_searchPaths)
        paths << QString::fromStdString(p);
    for (const std::string& name : m_candidates) {
        const QString found = QStandardPaths::findExecutable(QString::fromStdString(name), paths);
        if (!found.isEmpty())
            return found.toStdString();
    }
    return {};
}

} // namespace zav
