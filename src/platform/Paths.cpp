#include "platform/Paths.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zav {
namespace {

// Either separator ends a folder name here: a base name is only shown, and profiles named in
// settings written on Windows must still show their plain name.
bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

} // namespace

std::string WithTrailingSeparator(std::string_view dir) {
    std::string out(dir);
    if (out.empty() || !isSeparator(out.back()))
        out += kDirSeparator;
    return out;
}

bool HasDirectoryPart(std::string_view path) {
#ifdef _WIN32
    return path.find_first_of("\\/") != std::string_view::npos;
#else
    return path.find('/') != std::string_view::npos;
#endif
}

std::string ProfileBaseName(std::string_view path) {
    if (auto colon = path.rfind(':'); colon != std::string_view::npos)
        path.remove_prefix(colon + 1);
    for (std::size_t i = path.size(); i > 0; --i) {
        if (isSeparator(path[i - 1])) {
            path.remove_prefix(i);
            break;
        }
    }
    if (auto ext = path.rfind(".zav"); ext != std::string_view::npos)
        path = path.substr(0, ext);
    return std::string(path);
}

std::string FilterSuffix(std::string_view filter, int filterIndex) {
    std::vector<std::string> patterns; // the first pattern of each entry
    std::size_t at = 0;
    for (int field = 0; at <= filter.size(); ++field) {
        const std::size_t bar = std::min(filter.find('|', at), filter.size());
        if (field % 2 == 1) {
            const std::string_view entry = filter.substr(at, bar - at);
            patterns.emplace_back(entry.substr(0, std::min(entry.find(';'), entry.size())));
        }
        at = bar + 1;
    }
    auto suffixOf = [](const std::string& pattern) -> std::string {
        if (pattern.rfind("*.", 0) != 0 || pattern.find_first_of("*?", 2) != std::string::npos)
            return {};
        return pattern.substr(2);
    };
    if (filterIndex >= 1 && filterIndex <= static_cast<int>(patterns.size()))
        if (std::string chosen = suffixOf(patterns[static_cast<std::size_t>(filterIndex - 1)]);
            !chosen.empty())
            return chosen;
    for (const std::string& p : patterns)
        if (std::string s = suffixOf(p); !s.empty())
            return s;
    return {};
}

std::string FileKind(std::string_view filter) {
    const std::string suffix = FilterSuffix(filter, 0);
    return suffix.empty() ? "any" : suffix;
}

} // namespace zav
