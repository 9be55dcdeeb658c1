#include "qt/services/QtSettingsStore.h"

#include <QSettings>

namespace zav {
namespace {

QString groupKey(const std::string& section, const std::string& key) {
    return QString::fromStdString(section) + '/' + QString::fromStdString(key);
}

std::unique_ptr<QSettings> openSettings() {
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("ZAV"), QStringLiteral("ZAV"));
}

} // namespace

QtSettingsStore::QtSettingsStore() : m_settings(openSettings()) {}

QtSettingsStore::~QtSettingsStore() = default;

std::string QtSettingsStore::GetSetting(const std::string& section, const std::string& key,
                                        const std::string& defaultValue) const {
    const QVariant value = m_settings->value(groupKey(section, key));
    if (!value.isValid())
        return defaultValue;
    // A hand-edited value with a comma in it reads as a list; it was meant as one text.
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(',').toStdString();
    return value.toString().toStdString();
}

void QtSettingsStore::SaveSetting(const std::string& section, const std::string& key,
                                  const std::string& value) {
    m_settings->setValue(groupKey(section, key), QString::fromStdString(value));
    sync();
}

void QtSettingsStore::DeleteSetting(const std::string& section) {
    m_settings->remove(QString::fromStdString(section));
    sync();
}

void QtSettingsStore::sync() {
    m_settings->sync();
    // Only the status tells that the file could not be written (a full disk, a read-only
    // folder); QSettings keeps it from then on, and so does this store.
    if (m_settings->status() == QSettings::AccessError)
        m_writeError = "cannot write " + m_settings->fileName().toStdString();
}

} // namespace zav
