#include "support/UpdateModel.h"

#include "platform/CompareVersions.h"
#include "platform/OpenDocument.h"
#include "platform/Paths.h"
#include "platform/TextHelpers.h"
#include "platform/Version.h"
#include "support/LikePattern.h"

namespace zav {

UpdateModel::UpdateModel(std::string BaseUrl, std::string appDir, Ports ports)
    : m_baseUrl(std::move(BaseUrl)), m_appDir(std::move(appDir)), m_ports(ports) {}

void UpdateModel::fail(std::string text) {
    Message = std::move(text);
    outcome = Outcome::SiteFailed;
}

void UpdateModel::open() {
    updaterEnabled = CompareVersions(m_ports.updater.InstalledVersion(), "0.0.0", 3) > 0;

    const HttpResponse reply = m_ports.http.Get(m_baseUrl + "Update.xml");
    if (reply.status != 200)
        return fail(
            "Update site not responding properly. HTTP status=" + std::to_string(reply.status) +
            (reply.cause.empty() ? "" : " (" + reply.cause + ")"));

    // Only a description published under the program's own folder of a site is believed, on
    // a plain or a secure site alike.
    const std::string url = m_ports.xml.FirstElementText(reply.body, "url").value_or("");
    const std::string folder = "/" + LowerAscii(kAppTitle) + "/";
    if (!Like(url, "http://*" + folder) && !Like(url, "https://*" + folder))
        return fail("Update site not responding properly.");
    const auto version = m_ports.xml.FirstElementText(reply.body, "version");
    if (!version || !Like(*version, "*#.*#.*#"))
        return fail("Update site not responding properly.");

    if (CompareVersions(*version, VersionText(), 3) > 0) {
        Message = "New version available: " + *version;
        supportVisible = true;
        outcome = Outcome::NewVersion;
    } else {
        Message = "Version " + VersionText() + " is current";
        outcome = Outcome::Current;
    }
}

void UpdateModel::runUpdater() {
    const ShellFailureTexts texts{"kwUpdate unavailable", "Problem accessing kwUpdate. (Error ",
                                  std::string(kAppTitle) +
                                      " could not find a file association for .kwupdate on your "
                                      "system."};
    OpenLocalDocument(WithTrailingSeparator(m_appDir) + "ZAV.kwupdate", texts, m_ports.shell,
                      m_ports.dialogs);
    CloseRequested = true;
}

void UpdateModel::openSupportPage() {
    OpenDocument(m_baseUrl + "support.htm#download", m_ports.shell, m_ports.dialogs);
    CloseRequested = true;
}

} // namespace zav
