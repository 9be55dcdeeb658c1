#pragma once

#include <string>

namespace zav {

// Port for the maker's separate updater tool: the version text of the installed updater,
// empty when none is installed (there is none on Linux).
class Updater {
public:
    virtual ~Updater() = default;
    virtual std::string InstalledVersion() = 0;
};

} // namespace zav
