#pragma once

#include "platform/Dialogs.h"
#include "platform/Shell.h"
#include "platform/SystemInfo.h"

#include <string>

namespace zav {

// The about box without its window: title, version and disclaimer, the licence text through
// the shell, and the platform's system-information tool.
class AboutModel {
public:
    struct Ports {
        Shell& shell;
        Dialogs& dialogs;
        SystemInfo& systemInfo;
    };

    // `installDir` is the folder that holds "licence.txt" (a separator is added if missing).
    AboutModel(std::string installDir, Ports ports);

    void open();
    void showLicence();
    // Starts the system-information tool, or says it is unavailable. No control of the box
    // calls it; it is kept for hosts that offer it.
    void startSystemInfo();
    void okPressed() { CloseRequested = true; }

    std::string Caption;
    std::string titleText;
    std::string versionText;
    std::string disclaimerText; // two lines split by a lone CR
    std::string descriptionText;
    std::string noticeText; // the line below the description
    bool CloseRequested = false;

private:
    std::string m_installDir;
    Ports m_ports;
};

} // namespace zav
