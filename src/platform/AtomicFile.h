#pragma once

#include <string>
#include <string_view>

namespace zav {

// Writes `bytes` as the whole new content of `path`: first to a temporary file beside it,
// then renamed into place, so that a crash or a full disk never leaves half a file and the
// old content stays until the new one is complete. A link is written through; an existing
// file keeps its permissions. False (and `error`) on failure, with the old file untouched.
bool WriteFileAtomically(const std::string& path, std::string_view bytes,
                         std::string* error = nullptr);

} // namespace zav
