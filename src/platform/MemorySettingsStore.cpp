#include "platform/MemorySettingsStore.h"

namespace zav {

std::string MemorySettingsStore::GetSetting(const std::string& section, const std::string& key,
                                            const std::string& defaultValue) const {
    auto it = m_values.find({section, key});
    return it == m_values.end() ? defaultValue : it->second;
}

void MemorySettingsStore::SaveSetting(const std::string& section, const std::string& key,
                                      const std::string& value) {
    m_values[{section, key}] = value;
}

void MemorySettingsStore::DeleteSetting(const std::string& section) {
    std::erase_if(m_values, [&](const auto& entry) { return entry.first.first == section; });
}

} // namespace zav
