#pragma once

#include "platform/SettingsStore.h"

#include <memory>

class QSettings;

namespace zav {

// The per-user settings in QSettings' native format (on Linux ~/.config/ZAV/ZAV.conf),
// organisation and application "ZAV", one group per section.
class QtSettingsStore : public SettingsStore {
public:
    QtSettingsStore();
    ~QtSettingsStore() override;

    std::string GetSetting(const std::string& section, const std::string& key,
                           const std::string& defaultValue) const override;
    void SaveSetting(const std::string& section, const std::string& key,
                     const std::string& value) override;
    void DeleteSetting(const std::string& section) override;
    std::string WriteError() const override { return m_writeError; }

private:
    void sync();

    std::unique_ptr<QSettings> m_settings;
    std::string m_writeError;
};

} // namespace zav
