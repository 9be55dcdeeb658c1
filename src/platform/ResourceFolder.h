#pragma once

#include <string>

namespace zav {

// The folder, with a trailing separator, that holds the program's file `fileName` (the
// manual, the licence): the program's own folder `programDir` as in a build tree, else the
// installed data folder "../share/zav" (or "../../share/zav" for a helper in libexec/zav);
// `programDir` when none holds the file, so that opening it reports the missing file.
std::string ResourceFolder(const std::string& programDir, const std::string& fileName);

} // namespace zav
