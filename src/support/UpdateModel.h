#pragma once

#include "platform/Dialogs.h"
#include "platform/HttpClient.h"
#include "platform/Shell.h"
#include "platform/Updater.h"
#include "platform/XmlLookup.h"

#include <string>

namespace zav {

// The "Check for updates" dialog without its window: on load it fetches "Update.xml" from
// the maker's site, checks where it came from and what it says, and compares the newest
// version with the running one. It can start the updater tool and open the download page.
class UpdateModel {
public:
    struct Ports {
        HttpClient& http;
        XmlLookup& xml;
        Updater& updater;
        Shell& shell;
        Dialogs& dialogs;
    };

    // How the check ended, for a caller without a window.
    enum class Outcome { NotChecked, SiteFailed, Current, NewVersion };

    static constexpr const char* kCaption = "Check for updates";

    // `BaseUrl` ends in "/"; `appDir` is the program's folder, where "ZAV.kwupdate" lies.
    UpdateModel(std::string BaseUrl, std::string appDir, Ports ports);

    void open();
    void runUpdater();
    void openSupportPage();
    void exitPressed() { CloseRequested = true; }

    std::string Message;
    bool updaterEnabled = false;
    bool supportVisible = false;
    bool CloseRequested = false;
    Outcome outcome = Outcome::NotChecked;

private:
    void fail(std::string text);

    std::string m_baseUrl;
    std::string m_appDir;
    Ports m_ports;
};

} // namespace zav
