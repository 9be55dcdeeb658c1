#include "qt/services/QtUpdater.h"

#include <QSettings>
#include <QStringList>

namespace zav {

std::string QtUpdater::InstalledVersion() {
#ifdef _WIN32
    const QString key =
        QStringLiteral("\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\KwUpdater_is1");
    for (const QString& root :
         {QStringLiteral("HKEY_LOCAL_MACHINE"), QStringLiteral("HKEY_CURRENT_USER")}) {
        const QSettings entry(root + key, QSettings::NativeFormat);
        const QString version = entry.value(QStringLiteral("DisplayVersion")).toString();
        if (!version.isEmpty())
            return version.left(255).toStdString();
    }
#endif
    return {};
}

} // namespace zav
