#pragma once

#include <string>
#include <string_view>

namespace zav {

// The folder separator this platform writes; both "\" and "/" are read on Windows.
#ifdef _WIN32
inline constexpr char kDirSeparator = '\\';
#else
inline constexpr char kDirSeparator = '/';
#endif

// `dir` with one separator appended unless it already ends in one.
std::string WithTrailingSeparator(std::string_view dir);

// True when `path` names a folder as well as a file (it holds a separator).
bool HasDirectoryPart(std::string_view path);

// The profile's name without folder and extension: the text after the last ":", then after
// the last separator, cut at the last ".zav". C:\data\home.zav gives home.
std::string ProfileBaseName(std::string_view path);

// The suffix, without its dot, of the file type a chooser's filter ("Name|*.txt;*.tab|...")
// is for: the first pattern of the chosen entry (1-based), or of the first entry that names
// one when "*.*" is chosen; empty when none does.
std::string FilterSuffix(std::string_view filter, int filterIndex);

// A name for remembering the folder of one kind of file: the filter's suffix, or "any".
std::string FileKind(std::string_view filter);

} // namespace zav
