#include "config/IniFile.h"

#include "config/TextEncoding.h"
#include "platform/AtomicFile.h"
#include "platform/FileAccess.h"

#include <algorithm>

namespace zav {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

bool sameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        return lower(x) == lower(y);
    });
}

std::string_view unquote(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    return value;
}

std::string encodeValue(const std::string& value) {
    const bool quote = !value.empty() && (isBlank(value.front()) || isBlank(value.back()) ||
                                          unquote(value).size() != value.size());
    return quote ? '"' + value + '"' : value;
}

// Section names compare without regard to ASCII case: the index key is the lower-case name.
std::string foldedName(std::string_view name) {
    std::string folded(name);
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 32);
    return folded;
}

} // namespace

IniFile IniFile::Parse(std::string_view bytes) {
    const std::string text = DecodeText(bytes);
    IniFile ini;
    Section* current = nullptr;
    std::string_view rest = text;
    while (!rest.empty()) {
        // LF, CR LF and a lone CR (old Mac editors) all end a line; the empty line between
        // CR and LF is skipped like any other.
        const std::size_t end = rest.find_first_of("\r\n");
        std::string_view line = trim(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);

        if (line.empty() || line.front() == ';')
            continue;
        if (line.front() == '[') {
            const std::size_t close = line.find(']');
            if (close == std::string_view::npos)
                continue;
            const std::string_view name = trim(line.substr(1, close - 1));
            current = ini.findSection(name);
            if (!current)
                current = ini.addSection(name);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || !current)
            continue;
        const std::string_view key = trim(line.substr(0, equals));
        if (key.empty())
            continue;
        const std::string_view value = unquote(trim(line.substr(equals + 1)));
        current->entries.push_back({std::string(key), std::string(value)});
    }
    return ini;
}

bool IniFile::Load(const std::string& path, std::string* error) {
    *this = IniFile();
    std::string bytes;
    if (!ReadRegularFile(path, kMaxFileBytes, bytes, error))
        return false;
    *this = Parse(bytes);
    return true;
}

IniFile::Section* IniFile::findSection(std::string_view name) {
    const auto found = m_index.find(foldedName(name));
    return found == m_index.end() ? nullptr : &m_sections[found->second];
}

IniFile::Section* IniFile::addSection(std::string_view name) {
    m_index.emplace(foldedName(name), m_sections.size());
    m_sections.push_back({std::string(name), {}});
    return &m_sections.back();
}

const IniFile::Section* IniFile::findSection(std::string_view name) const {
    return const_cast<IniFile*>(this)->findSection(name);
}

std::optional<std::string> IniFile::Value(std::string_view section, std::string_view key) const {
    const Section* s = findSection(section);
    if (!s)
        return std::nullopt;
    for (const Entry& e : s->entries)
        if (sameName(e.key, key))
            return e.value;
    return std::nullopt;
}

std::string IniFile::Get(std::string_view section, std::string_view key,
                         const std::string& defaultValue) const {
    return Value(section, key).value_or(defaultValue);
}

void IniFile::Set(std::string_view section, std::string_view key, std::string_view value) {
    std::string clean(value);
    std::replace_if(
        clean.begin(), clean.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    Section* s = findSection(section);
    if (!s)
        s = addSection(section);
    for (Entry& e : s->entries) {
        if (sameName(e.key, key)) {
            e.value = std::move(clean);
            return;
        }
    }
    s->entries.push_back({std::string(key), std::move(clean)});
}

std::string IniFile::Text() const {
    std::string out;
    for (const Section& s : m_sections) {
        if (!out.empty())
            out += "\r\n";
        out += "[" + s.name + "]\r\n";
        for (const Entry& e : s.entries)
            out += e.key + "=" + encodeValue(e.value) + "\r\n";
    }
    return out;
}

bool IniFile::Save(const std::string& path, std::string* error, bool ownerOnly) const {
    return WriteFileAtomically(path, Text(), error,
                               ownerOnly ? FileAccessMode::OwnerOnly : FileAccessMode::Usual);
}

} // namespace zav
