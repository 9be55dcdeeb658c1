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

    void Form_Load();
    void Licence_Click();
    // Starts the system-information tool, or says it is unavailable. No control of the box
    // calls it; it is kept for hosts that offer it.
    void StartSysInfo();
    void cmdOK_Click() { CloseRequested = true; }

    std::string Caption;
    std::string lblTitle;
    std::string lblVersion;
    std::string lblDisclaimer; // two lines split by a lone CR
    std::string lblDescription;
    std::string lblNotice; // the line below the description
    bool CloseRequested = false;

private:
    std::string m_installDir;
    Ports m_ports;
};

} // namespace zav
