#pragma once

#include <string>

namespace zav {

// Port for the per-user settings of application "ZAV": string values by section and key.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    virtual std::string GetSetting(const std::string& section, const std::string& key,
                                   const std::string& defaultValue) const = 0;
    virtual void SaveSetting(const std::string& section, const std::string& key,
                             const std::string& value) = 0;
    // Removes a whole section; a missing section is not an error.
    virtual void DeleteSetting(const std::string& section) = 0;
    // Why a change could not be written to the disk; "" while every change was (or when the
    // store keeps nothing on a disk).
    virtual std::string WriteError() const { return ""; }
};

} // namespace zav
