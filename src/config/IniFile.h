#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zav {

// An INI file as Windows' private-profile functions read and write it, so that profiles move
// between platforms unchanged: section and key names compare without regard to case, blanks
// around names and values are dropped, one pair of double quotes around a value is removed,
// the first of duplicate keys wins (a repeated section continues the first), lines starting
// with ";" and lines without "=" are ignored. Lines end in CR LF when written; LF or CR LF is
// read. Text is UTF-8; a file that is not valid UTF-8 is read as Windows-1252.
class IniFile {
public:
    // A profile is a few hundred bytes; anything this large is not one.
    static constexpr std::size_t kMaxFileBytes = 4 * 1024 * 1024;

    // Reads the text of a file.
    static IniFile Parse(std::string_view bytes);

    // Reads `path` in place of the current contents. A missing, unreadable or oversized file
    // leaves the profile empty, so that every key yields its default; false and `error` then.
    bool Load(const std::string& path, std::string* error = nullptr);

    // The value of a key, or nothing when the section or key is absent.
    std::optional<std::string> Value(std::string_view section, std::string_view key) const;
    std::string Get(std::string_view section, std::string_view key,
                    const std::string& defaultValue) const;

    // Sets a key; a new section or key goes at the end. A line break in `value` cannot be
    // kept in one line and becomes a blank.
    void Set(std::string_view section, std::string_view key, std::string_view value);

    // The file's text, UTF-8, CR LF. A value with blanks at either end, or one that is
    // itself enclosed in double quotes, is written in quotes so that it reads back as it was.
    std::string Text() const;

    // Writes the whole file to a temporary file in the same folder and renames it into place,
    // so that a failure never leaves half a profile. False and `error` when it cannot.
    bool Save(const std::string& path, std::string* error = nullptr) const;

private:
    struct Entry {
        std::string key;
        std::string value;
    };
    struct Section {
        std::string name;
        std::vector<Entry> entries;
    };

    Section* findSection(std::string_view name);
    const Section* findSection(std::string_view name) const;

    std::vector<Section> m_sections;
};

} // namespace zav
