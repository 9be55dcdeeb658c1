#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zav {

// An INI file as Windows' private-profile functions read and write it, so that profiles move
// between platforms unchanged: section and key names compare without regard to case, blanks
// around names and values are dropped, one pair of double quotes around a value is removed,
// the first of duplicate keys wins (a repeated section continues the first), lines starting
// with ";" and lines without "=" are ignored. Lines end in CR LF when written; LF, CR LF or
// a lone CR is read. Text is UTF-8; UTF-16 with a byte-order mark is converted, and a file
// that is not valid UTF-8 is read as Windows-1252.
class IniFile {
public:
    // A profile is a few hundred bytes; anything this large is not one.
    static constexpr std::size_t kMaxFileBytes = 4 * 1024 * 1024;

    // Reads the text of a file.
    static IniFile Parse(std::string_view bytes);

    // Reads `path` in place of the current contents. A missing, unreadable or oversized file,
    // or one that is no regular file (a folder, a device, a pipe), leaves the profile empty,
    // so that every key yields its default; false and `error` (the reason in words) then.
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
    // `ownerOnly` (the file holds a password) makes the file readable by its owner alone.
    bool Save(const std::string& path, std::string* error = nullptr, bool ownerOnly = false) const;

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
    Section* addSection(std::string_view name);

    std::vector<Section> m_sections;
    // Lower-case section name -> position in m_sections: a large file loads in linear time.
    std::unordered_map<std::string, std::size_t> m_index;
};

} // namespace zav
