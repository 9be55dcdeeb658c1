#pragma once

#include "config/TransferSettings.h"
#include "platform/Clipboard.h"
#include "platform/Dialogs.h"
#include "platform/HttpClient.h"
#include "platform/Mailer.h"
#include "platform/XmlLookup.h"
#include "report/ReportSource.h"
#include "report/TransferHistory.h"

#include <string>

namespace zav {

// The "ZAV - Transfer results" dialog without its window: publishes the current observation
// to the collection server over HTTP, or mails it to the collecting address, and shows the
// receipt. The account fields come from `settings` on load and go back on unload.
class TransferModel {
public:
    struct Ports {
        HttpClient& http;
        XmlLookup& xml;
        Mailer& mailer;
        Clipboard& clipboard;
        Dialogs& dialogs;
    };

    static constexpr const char* kCaption = "ZAV - Transfer results";

    TransferModel(const ReportSource& source, TransferSettings& settings, TransferHistory& history,
                  Ports ports);

    void open();
    // Writes the fields back to the settings, whatever closed the dialog.
    void close();
    // "OK" transfers; "Done" closes. A press while a transfer is still waiting for the server
    // (a double-click delivered inside the wait) does nothing.
    void okPressed();
    void cancelPressed() { CloseRequested = true; }
    void chooseOnline();
    void chooseEmail();
    void urlLeft() { okVisible = !URL.empty(); }
    void collectingAddressLeft() { okVisible = !AtfEmail.empty(); }
    // OK follows the address as it is typed, so that it is there for a click that comes
    // straight from another box.
    void urlEdited() { okVisible = !URL.empty(); }
    void collectingAddressEdited() { okVisible = !AtfEmail.empty(); }
    // Puts the whole notice or receipt on the clipboard.
    void copyMessage();

    // The request body: the field list, the account fields, the client and debug fields.
    std::string RequestBody(const std::string& user) const;

    std::string username;
    std::string password;
    std::string Email;
    std::string URL;
    std::string AtfEmail;
    bool sendOnline = true;
    bool sendByEmail = false;
    std::string Message;
    std::string okCaption = "OK";
    bool okVisible = true;
    bool okFocused = false; // the view gives "Done" the focus
    bool cancelVisible = true;
    bool CloseRequested = false; // the view closes the dialog (and then calls close)

private:
    void transfer();
    void post(const std::string& body);
    void mail(const std::string& user);

    ReportSource m_source;
    TransferSettings& m_settings;
    TransferHistory& m_history;
    Ports m_ports;
    bool m_sending = false;
};

} // namespace zav
