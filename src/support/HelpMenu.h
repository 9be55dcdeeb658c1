#pragma once

#include "platform/Dialogs.h"
#include "platform/Shell.h"

#include <string>

namespace zav {

// The Help menu's links: the manual and the maker's home, FAQ and support pages, each
// opened with what the desktop associates with it and failures reported by the shell-result rules.
class HelpMenu {
public:
    HelpMenu(Shell& shell, Dialogs& dialogs) : m_shell(shell), m_dialogs(dialogs) {}

    // The manual "ZAV.pdf" in `documentsDir`.
    void openHelp(const std::string& documentsDir);
    // `BaseUrl` ends in "/".
    void openHomePage(const std::string& BaseUrl);
    void openFaq(const std::string& BaseUrl);
    void openSupportPage(const std::string& BaseUrl);

private:
    Shell& m_shell;
    Dialogs& m_dialogs;
};

} // namespace zav
