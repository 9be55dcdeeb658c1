#include "config/Profiles.h"

#include "config/BooleanText.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Paths.h"
#include "platform/Version.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>

namespace zav {
namespace {

constexpr const char* kConditions = "conditions";
constexpr const char* kOptions = "options";
constexpr const char* kTransfer = "transfer";

std::string cutToBuffer(std::string value) {
    int characters = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if ((static_cast<unsigned char>(value[i]) & 0xC0) == 0x80)
            continue; // inside a character
        if (characters == Profiles::kMaxValueChars) {
            value.resize(i);
            break;
        }
        ++characters;
    }
    return value;
}

bool isFile(const std::string& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(
        std::filesystem::path(std::u8string(path.begin(), path.end())), ec);
}

bool pathExists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::exists(std::filesystem::path(std::u8string(path.begin(), path.end())),
                                   ec);
}

// A stored 16-bit setting, rounded to the nearest integer (halves to even); a text that is
// not a number, or a number that does not fit, gives the default.
std::int16_t toInt16(const std::string& text, std::int16_t defaultValue) {
    const auto stored = StoredNumber(text);
    if (!stored)
        return defaultValue;
    const double value = std::nearbyint(*stored);
    if (value < std::numeric_limits<std::int16_t>::min() ||
        value > std::numeric_limits<std::int16_t>::max())
        return defaultValue;
    return static_cast<std::int16_t>(value);
}

std::int32_t toSpeed(const std::string& text, std::int32_t defaultValue) {
    const auto stored = StoredNumber(text);
    if (!stored)
        return defaultValue;
    const double value = std::nearbyint(*stored);
    return value >= 1 && value <= 4000000 ? static_cast<std::int32_t>(value) : defaultValue;
}

} // namespace

Profiles::Profiles(SetupRecord& record, Options& options, SetupControls& controls,
                   PersistentState& state, SettingsStore& settings, Dialogs& dialogs,
                   SetupEvents& events, char decimalSeparator)
    : decimalSeparator(decimalSeparator), m_record(record), m_options(options),
      m_controls(controls), m_state(state), m_settings(settings), m_dialogs(dialogs),
      m_events(events) {}

std::string Profiles::read(const IniFile& ini, const std::string& defaultValue, const char* key,
                           const char* section) const {
    const auto value = ini.Value(section, key);
    return value ? cutToBuffer(*value) : defaultValue;
}

bool Profiles::readBoolean(const IniFile& ini, const char* defaultValue, const char* key,
                           const char* section) const {
    const auto value = TextToBoolean(read(ini, defaultValue, key, section), decimalSeparator);
    return value.value_or(*TextToBoolean(defaultValue));
}

std::string Profiles::readNumber(const IniFile& ini, const char* defaultValue, const char* key,
                                 const char* section, bool optional) const {
    const auto value = ini.Value(section, key);
    const std::string text = value ? cutToBuffer(*value) : "";
    if (text.empty())
        return optional ? text : defaultValue; // nothing there to keep
    if (auto shown = ShownNumber(text, decimalSeparator))
        return *shown;
    // Shown as it stands, so that saving the profile gives the operator's text back rather
    // than a default over it; the check on the box refuses it before any step runs.
    m_dialogs.ShowMessage("Error: profile " + m_state.ProfilePath + ": " + key + "=" + text +
                              " is not a number.",
                          kAppTitle, MessageIcon::Exclamation);
    return text;
}

std::string Profiles::GetProfileSetting(const std::string& defaultValue, const std::string& key,
                                        const std::string& section) const {
    IniFile ini;
    ini.Load(m_state.ProfilePath);
    return read(ini, defaultValue, key.c_str(), section.c_str());
}

void Profiles::GetProfileSettings() {
    IniFile ini;
    std::string error;
    // A missing profile is no error: every key its default. One that is there but cannot be
    // read (a folder, a device, a pulled-out stick) is said, so its defaults are not mistaken
    // for its content.
    if (!ini.Load(m_state.ProfilePath, &error) && !m_state.ProfilePath.empty() &&
        pathExists(m_state.ProfilePath))
        m_dialogs.ShowMessage("Error: profile " + m_state.ProfilePath + " cannot be read: " +
                                  error + ". Every setting shows its default.",
                              kAppTitle, MessageIcon::Critical);
    SetupRecord& r = m_record;
    const char sep = decimalSeparator;

    m_events.UnloadAntennaFile();
    r.Receiver = read(ini, "", "Receiver", kConditions);
    r.Antenna = read(ini, "", "Antenna", kConditions);
    r.Feedline = read(ini, "", "Feedline", kConditions);
    r.Tester = read(ini, "", "Tester", kConditions);
    r.Location = read(ini, "", "Location", kConditions);
    r.lat = readNumber(ini, "", "Lat", kConditions, true);
    r.lon = readNumber(ini, "", "Lon", kConditions, true);
    r.RxNF = readNumber(ini, "6", "RxNF");
    r.Bandwidth = readNumber(ini, "2700", "Bandwidth"); // its range is checked when validated

    // Earlier profiles held the receiver's noise floor in dBm over the bandwidth; the noise
    // figure is that floor above the thermal floor: NF = floor + 174 - 10·log10(B).
    const auto noiseFloor = StoredNumber(read(ini, "", "RxNoiseFloor", kConditions));
    const double bandwidthHz = Number(r.Bandwidth, sep);
    if (noiseFloor && bandwidthHz > 0)
        r.RxNF = Format(*noiseFloor + 174 - 10 * std::log(bandwidthHz) / LogTen, "0.00", sep);

    r.Frequency = readNumber(ini, "7", "Frequency");
    r.AntGain = readNumber(ini, "0", "AntGain");
    r.Attenuator = readNumber(ini, "20", "Attenuator");
    r.AGC = readNumber(ini, "20", "AGC");
    r.Loss = readNumber(ini, "0", "Loss");

    const std::string environment = read(ini, "Residential", "Environment", kConditions);
    for (const char* entry : kEnvironments)
        if (environment == entry)
            r.Environment = environment;

    m_options.Verbose = readBoolean(ini, "True", "Verbose", kOptions);
    m_options.Samples = readBoolean(ini, "True", "Samples", kOptions);
    r.Interval = r.IntervalTag = readNumber(ini, "8", "Interval", kOptions);
    m_options.AntFact = readBoolean(ini, "False", "AntFact", kOptions);
    m_options.AutoTsv = readBoolean(ini, "False", "AutoTsv", kOptions);

    // Loaded after the options: an antenna file holds factors whatever "AntFact" says, and
    // the option it sets must not be read over again.
    r.AntFileName = read(ini, "", "AntFilename", kConditions);
    if (!r.AntFileName.empty())
        m_events.LoadAntennaFile();

    TransferSettings& t = m_state.transfer;
    t.username = read(ini, "", "username", kTransfer);
    t.password = read(ini, "", "password", kTransfer);
    t.Email = read(ini, "", "email", kTransfer);
    t.URL = read(ini, "", "url", kTransfer);
    t.AtfEmail = read(ini, "", "AtfEmail", kTransfer);
    t.online = readBoolean(ini, "1", "online", kTransfer);

    // The stored value is in the unit its "AntFact" key names: no conversion, only the label.
    // Both labels follow the options read, so that a box never shows its number under the
    // unit of the profile opened before.
    m_controls.antGainLabel = SetupControls::AntGainCaption(m_options.AntFact);
    m_controls.intervalLabel = SetupControls::IntervalCaption(m_options.Samples);
    r.AGCTag = r.AGC;
    m_events.ProfileNameChanged(m_state.ProfileName);
    m_events.resetFromStep1();
    m_events.SetFocus(FocusTarget::Step1);
}

IniFile Profiles::profileContents() const {
    const SetupRecord& r = m_record;
    IniFile ini;
    ini.Set(kConditions, "Receiver", r.Receiver);
    ini.Set(kConditions, "Antenna", r.Antenna);
    ini.Set(kConditions, "Feedline", r.Feedline);
    ini.Set(kConditions, "Tester", r.Tester);
    ini.Set(kConditions, "Location", r.Location);
    const auto number = [this](const std::string& shown) {
        return LocaleFreeNumber(shown, decimalSeparator);
    };
    ini.Set(kConditions, "Lat", number(r.lat));
    ini.Set(kConditions, "Lon", number(r.lon));
    ini.Set(kConditions, "RxNF", number(r.RxNF));
    ini.Set(kConditions, "Bandwidth", number(r.Bandwidth));
    ini.Set(kConditions, "Frequency", number(r.Frequency));
    ini.Set(kConditions, "AntGain", number(r.AntGain));
    ini.Set(kConditions, "Attenuator", number(r.Attenuator));
    ini.Set(kConditions, "AGC", number(r.AGC));
    ini.Set(kConditions, "Loss", number(r.Loss));
    ini.Set(kConditions, "Environment", r.Environment);
    ini.Set(kConditions, "AntFilename", r.AntFileName);

    ini.Set(kOptions, "Verbose", BooleanText(m_options.Verbose));
    ini.Set(kOptions, "Samples", BooleanText(m_options.Samples));
    ini.Set(kOptions, "Interval", number(r.Interval));
    ini.Set(kOptions, "AntFact", BooleanText(m_options.AntFact));
    ini.Set(kOptions, "AutoTsv", BooleanText(m_options.AutoTsv));

    const TransferSettings& t = m_state.transfer;
    ini.Set(kTransfer, "username", t.username);
    ini.Set(kTransfer, "password", t.password);
    ini.Set(kTransfer, "email", t.Email);
    ini.Set(kTransfer, "url", t.URL);
    ini.Set(kTransfer, "AtfEmail", t.AtfEmail);
    ini.Set(kTransfer, "online", BooleanText(t.online));
    return ini;
}

bool Profiles::SaveProfileSettings(std::string* error) {
    // Written whole and renamed into place: the file holds exactly what is written now. A
    // password in it makes it the owner's alone.
    const bool saved =
        profileContents().Save(m_state.ProfilePath, error, !m_state.transfer.password.empty());

    m_settings.DeleteSetting("default");
    m_settings.SaveSetting("default", "Profile", m_state.ProfilePath);
    if (!m_state.InputDevice.empty())
        m_settings.SaveSetting("default", "InputDevice", m_state.InputDevice);
    // Only a profile that is on the disk goes to the top of the recent list.
    if (saved)
        pushRecent();
    saveRecentList();
    saveGpsSettings();
    return saved;
}

void Profiles::reportFailedSave(const std::string& error) {
    m_dialogs.ShowMessage("Error: the profile could not be saved: " + error, kAppTitle,
                          MessageIcon::Critical);
}

void Profiles::pushRecent() {
    // The saved path lands in entry 1 and pushes every entry that differs from its
    // predecessor down one place. A path already further down stays there too, and saving
    // the profile in entry 1 again copies it into entry 2: the list has always worked so.
    RecentFiles& list = m_state.recent;
    std::string carry = m_state.ProfilePath;
    for (int i = 1; i <= MaxMru; ++i) {
        if (list.Caption[i] != carry) {
            std::swap(list.Caption[i], carry);
            list.Visible[i] = !list.Caption[i].empty();
        }
    }
}

void Profiles::saveRecentList() {
    for (int i = 1; i <= MaxMru; ++i)
        m_settings.SaveSetting("default", "MRUF" + std::to_string(i), m_state.recent.Caption[i]);
}

void Profiles::saveGpsSettings() {
    const GpsSettings& g = m_state.gps;
    m_settings.DeleteSetting("gps");
    m_settings.SaveSetting("gps", "Port", std::to_string(g.Port));
    m_settings.SaveSetting("gps", "Speed", std::to_string(g.Speed));
    m_settings.SaveSetting("gps", "Parity", g.Parity);
    m_settings.SaveSetting("gps", "Dbits", std::to_string(g.Dbits));
    m_settings.SaveSetting("gps", "Sbits", std::to_string(g.Sbits));
    m_settings.SaveSetting("gps", "Acc", std::to_string(g.Acc));
    if (!g.Device.empty())
        m_settings.SaveSetting("gps", "Device", g.Device);
}

FileDialogRequest Profiles::profileDialog(const std::string& fileName) const {
    FileDialogRequest request;
    request.initialDir = m_state.CurrentDir;
    request.filter = "ZAV files (*.zav)|*.zav";
    request.fileName = fileName;
    return request;
}

void Profiles::openProfile() {
    const FileDialogRequest request = profileDialog("");
    std::string error;
    if (!SaveProfileSettings(&error)) // the outgoing profile is always written first
        reportFailedSave(error);
    const auto chosen = m_dialogs.OpenFileName(request);
    if (!chosen)
        return;
    m_state.ProfilePath = *chosen;
    m_state.ProfileName = ProfileBaseName(m_state.ProfilePath);
    GetProfileSettings();
}

void Profiles::saveProfile() {
    const auto chosen = m_dialogs.SaveFileName(profileDialog(m_state.ProfilePath));
    if (!chosen)
        return;
    const std::string previousPath = m_state.ProfilePath;
    m_state.ProfilePath = *chosen;
    std::string error;
    if (!SaveProfileSettings(&error)) {
        // Nothing was saved under the new name: the window goes on with the profile it had.
        m_state.ProfilePath = previousPath;
        m_settings.SaveSetting("default", "Profile", previousPath);
        reportFailedSave(error);
        return;
    }
    m_state.ProfileName = ProfileBaseName(m_state.ProfilePath);
    m_events.ProfileNameChanged(m_state.ProfileName);
}

void Profiles::openRecentProfile(int index) {
    if (index < 1 || index > MaxMru)
        return;
    // Saving the outgoing profile reorders the list: open the path that was clicked.
    const std::string path = m_state.recent.Caption[index];
    if (!isFile(path)) {
        m_dialogs.ShowMessage("Error: file " + path + " does not exist.", kAppTitle,
                              MessageIcon::Critical);
        return;
    }
    std::string error;
    if (!SaveProfileSettings(&error))
        reportFailedSave(error);
    m_state.ProfilePath = path;
    m_state.ProfileName = ProfileBaseName(path);
    GetProfileSettings();
}

void Profiles::LoadWindowSettings() {
    for (int i = 1; i <= MaxMru; ++i) {
        m_state.recent.Caption[i] =
            m_settings.GetSetting("default", "MRUF" + std::to_string(i), "");
        m_state.recent.Visible[i] = !m_state.recent.Caption[i].empty();
    }
    m_options.Beep = TextToBoolean(m_settings.GetSetting("default", "Beep", "1"), decimalSeparator)
                         .value_or(true);
    m_state.BaseUrl = m_settings.GetSetting("default", "BaseUrl", kDefaultBaseUrl);
    if (m_state.BaseUrl == kFormerBaseUrl)
        m_state.BaseUrl = kDefaultBaseUrl;
    m_state.InputDevice = m_settings.GetSetting("default", "InputDevice", "");

    GpsSettings& g = m_state.gps;
    const GpsSettings defaults;
    g.Port = toInt16(m_settings.GetSetting("gps", "Port", "1"), defaults.Port);
    g.Speed = toSpeed(m_settings.GetSetting("gps", "Speed", "4800"), defaults.Speed);
    g.Parity = m_settings.GetSetting("gps", "Parity", "N");
    g.Dbits = toInt16(m_settings.GetSetting("gps", "Dbits", "8"), defaults.Dbits);
    g.Sbits = toInt16(m_settings.GetSetting("gps", "Sbits", "1"), defaults.Sbits);
    g.Acc = toInt16(m_settings.GetSetting("gps", "Acc", "10"), defaults.Acc);
    g.Device = m_settings.GetSetting("gps", "Device", "");
}

bool Profiles::SaveWindowSettings(std::string* error) {
    m_settings.DeleteSetting("default");
    const bool saved = SaveProfileSettings(error);
    m_settings.SaveSetting("default", "Beep", BooleanText(m_options.Beep));
    m_settings.SaveSetting("default", "Profile", m_state.ProfilePath);
    m_settings.SaveSetting("default", "BaseUrl", m_state.BaseUrl);
    return saved;
}

} // namespace zav
