#pragma once

#include "platform/Shell.h"

#include <string>

namespace zav {

// Registers `extension` (".zav") with the desktop so that opening such a file starts
// `exePath` with the file as its argument: a MIME type "application/x-<ext>-profile" for
// "*<ext>" under `dataHome`/mime/packages, a desktop entry under `dataHome`/applications
// whose Exec names the program quoted, then the desktop's caches are refreshed and the entry
// made the type's default through `shell` (a missing tool is not an error).
// False when the trimmed extension does not begin with "." (nothing is written), when there
// is no data folder, or when a file could not be written; each write runs only when the one
// before succeeded.
bool Associate(const std::string& appName, const std::string& extension, const std::string& exePath,
               const std::string& dataHome, Shell& shell);

// The per-user data folder: $XDG_DATA_HOME when it is an absolute path, else
// $HOME/.local/share; empty when neither is known.
std::string XdgDataHome();

// "Associate .zav files": profiles open in this program. Silent whatever happens; the
// result is only for tests.
bool associateFileTypes(const std::string& exePath, Shell& shell);
// The status bar's account of the association: where its desktop entry went, or that it failed.
std::string AssociationStatus(bool done, const std::string& dataHome);

// `path` as one argument of a desktop entry's Exec value: double-quoted, with the characters
// that stay special inside the quotes escaped, "%" doubled, then escaped as a string value.
std::string DesktopExecArgument(const std::string& path);

} // namespace zav
