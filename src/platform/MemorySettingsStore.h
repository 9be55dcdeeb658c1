#pragma once

#include "platform/SettingsStore.h"

#include <map>
#include <utility>

namespace zav {

// Settings held for the run only: zavcli uses it so that a headless run never touches the
// desktop user's settings; tests use it as the store they inspect.
class MemorySettingsStore : public SettingsStore {
public:
    std::string GetSetting(const std::string& section, const std::string& key,
                           const std::string& defaultValue) const override;
    void SaveSetting(const std::string& section, const std::string& key,
                     const std::string& value) override;
    void DeleteSetting(const std::string& section) override;

    const std::map<std::pair<std::string, std::string>, std::string>& values() const {
        return m_values;
    }

private:
    std::map<std::pair<std::string, std::string>, std::string> m_values;
};

} // namespace zav
