#pragma once

#include "platform/Updater.h"

namespace zav {

// The installed version of the maker's updater tool, from its uninstall registration on
// Windows ("KwUpdater_is1"); there is no such tool elsewhere, so the version is empty.
class QtUpdater : public Updater {
public:
    std::string InstalledVersion() override;
};

} // namespace zav
