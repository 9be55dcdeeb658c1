#include "platform/Paths.h"

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

} // namespace zav
