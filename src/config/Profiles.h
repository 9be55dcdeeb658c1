#pragma once

#include "config/IniFile.h"
#include "config/Options.h"
#include "config/PersistentState.h"
#include "config/SetupControls.h"
#include "config/SetupEvents.h"
#include "config/SetupRecord.h"
#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"

#include <string>

namespace zav {

// Profiles (*.zav: the set-up, the options and the transfer account) and the per-user
// settings (recent list, beep, web site, GPS), with the File menu's profile commands.
class Profiles {
public:
    Profiles(SetupRecord& record, Options& options, SetupControls& controls, PersistentState& state,
             SettingsStore& settings, Dialogs& dialogs, SetupEvents& events,
             char decimalSeparator = '.');

    // Values were read into a 255-character buffer: at most 254 characters come back.
    static constexpr int kMaxValueChars = 254;

    // One value of the current profile; `defaultValue` when the file or the key is missing.
    std::string GetProfileSetting(const std::string& defaultValue, const std::string& key,
                                  const std::string& section) const;
    // Loads the current profile into the window, then starts again from step 1.
    void GetProfileSettings();
    // Writes the whole current profile (its owner's alone when it holds a password), then the
    // "Profile", recent-list and "gps" settings. False (and `error`: the file and the reason)
    // when the profile file could not be written; the recent list then stays as it was.
    bool SaveProfileSettings(std::string* error = nullptr);

    void openProfile();
    void saveProfile();
    void openRecentProfile(int index);

    // Reads the recent list, "Beep", "BaseUrl" and the GPS settings as the window opens.
    void LoadWindowSettings();
    // Saves everything as the window closes. False (and `error`) when the profile file could
    // not be written.
    bool SaveWindowSettings(std::string* error = nullptr);

    char decimalSeparator;

private:
    std::string read(const IniFile& ini, const std::string& defaultValue, const char* key,
                     const char* section) const;
    bool readBoolean(const IniFile& ini, const char* defaultValue, const char* key,
                     const char* section) const;
    // Reads a numeric key as the window shows it; a missing key gives `defaultValue`, a
    // text that is not a number is reported and kept as it stands. An `optional` key may
    // also be empty.
    std::string readNumber(const IniFile& ini, const char* defaultValue, const char* key,
                           const char* section = "conditions", bool optional = false) const;
    IniFile profileContents() const;
    void pushRecent();
    void saveRecentList();
    void reportFailedSave(const std::string& error);
    void saveGpsSettings();
    FileDialogRequest profileDialog(const std::string& fileName) const;

    SetupRecord& m_record;
    Options& m_options;
    SetupControls& m_controls;
    PersistentState& m_state;
    SettingsStore& m_settings;
    Dialogs& m_dialogs;
    SetupEvents& m_events;
};

} // namespace zav
