#include "report/TransferModel.h"

#include "platform/Number.h"
#include "platform/PostOnce.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"
#include "report/PostVars.h"
#include "report/TextReport.h"

namespace zav {

TransferModel::TransferModel(const ReportSource& source, TransferSettings& settings,
                             TransferHistory& history, Ports ports)
    : m_source(source), m_settings(settings), m_history(history), m_ports(ports) {}

void TransferModel::open() {
    username = m_settings.username;
    password = m_settings.password;
    Email = m_settings.Email;
    URL = m_settings.URL;
    AtfEmail = m_settings.AtfEmail;
    sendOnline = m_settings.online;
    sendByEmail = !sendOnline;
    okVisible = sendByEmail ? !AtfEmail.empty() : !URL.empty();
    Message = "This facility is for transfer of the data from the main ZAV form, this form, and "
              "the IP address to the server where it may be publicly available. If you do not "
              "want to publish your data, hit Cancel now.";
}

void TransferModel::close() {
    m_settings.username = username;
    m_settings.password = password;
    m_settings.Email = Email;
    m_settings.URL = URL;
    m_settings.AtfEmail = AtfEmail;
    m_settings.online = sendOnline;
}

void TransferModel::chooseOnline() {
    sendOnline = true;
    sendByEmail = false;
    okVisible = !URL.empty();
}

void TransferModel::chooseEmail() {
    sendByEmail = true;
    sendOnline = false;
    okVisible = !AtfEmail.empty();
}

void TransferModel::copyMessage() {
    m_ports.clipboard.SetText(Message);
}

void TransferModel::okPressed() {
    if (m_sending)
        return;
    if (okCaption == "Done")
        CloseRequested = true;
    else
        transfer();
}

std::string TransferModel::RequestBody(const std::string& user) const {
    return PostVars(m_source) + "&username=" + UrlEncode(user, true) +
           "&password=" + UrlEncode(password, true) + "&Email=" + UrlEncode(Email, true) +
           "&client=1&debug=" + std::to_string(m_history.serverDebug);
}

void TransferModel::transfer() {
    if (!HasResults(m_source))
        return;        // an observation without results is nothing to send
    okVisible = false; // never pressed twice while the request runs
    sendByEmail = !sendOnline;

    std::string user = username;
    if (!user.empty() && user[0] == '*') {
        user.erase(0, 1);
        m_history.serverDebug = 1;
    }

    if (m_source.observation.ObsTime == m_history.lastObsTime) {
        Message =
            "Error: observation already succesfully transfered, receipt " + m_history.lastReceipt;
        return;
    }

    m_sending = true;
    if (sendOnline)
        post(RequestBody(user));
    else
        mail(user);
    m_sending = false;
}

void TransferModel::post(const std::string& body) {
    const HttpResponse reply =
        PostOnce(m_ports.http, TransferAddress(URL), "application/x-www-form-urlencoded", body);
    if (reply.status != 200) {
        Message = "Error: HTTP status code:" + std::to_string(reply.status);
        if (!reply.cause.empty())
            Message += " (" + reply.cause + ")";
        if (reply.failure == HttpFailure::NotSent) {
            okVisible = true; // it never left: sending it now is the first time
        } else if (reply.failure == HttpFailure::MayHaveArrived) {
            // The server may have taken it; sending it again could enter it twice.
            Message += ". The observation may have arrived at the server; it was not sent again.";
        }
        return;
    }
    const auto cc = m_ports.xml.FirstElementText(reply.body, "cc");
    if (!cc) {
        Message = "Error:" + reply.body;
        return;
    }
    if (IsNumber(*cc) && Number(*cc) == 0) {
        m_history.lastReceipt = m_ports.xml.FirstElementText(reply.body, "receipt").value_or("");
        Message = "Receipt: " + m_history.lastReceipt;
        cancelVisible = false;
        okCaption = "Done";
        okVisible = true;
        okFocused = true;
        m_history.lastObsTime = m_source.observation.ObsTime;
        return;
    }
    // A refusal without a reason, or with an empty or blank one, shows the reply itself rather
    // than leave the operator with an empty message.
    const std::string reason =
        UrlDecode(m_ports.xml.FirstElementText(reply.body, "reason").value_or(""));
    const bool blank = reason.find_first_not_of(" \t\r\n") == std::string::npos;
    Message = blank ? "Error:" + reply.body : reason;
}

void TransferModel::mail(const std::string& user) {
    const std::string body = "username\t" + user + "\r\npassword\t" + password + "\r\nEmail\t" +
                             Email + "\r\ndebug\t" + std::to_string(m_history.serverDebug) +
                             "\r\n" + EmailTextResults(m_source);
    if (!m_ports.mailer.Send({AtfEmail, "### ZAV report ### ", body})) {
        m_ports.dialogs.ShowMessage("Error: unable to perform MAPI login.", kAppTitle,
                                    MessageIcon::Critical);
        return;
    }
    m_history.lastReceipt = "by Email";
    m_history.lastObsTime = m_source.observation.ObsTime;
    CloseRequested = true;
}

} // namespace zav
