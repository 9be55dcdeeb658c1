#include "support/AboutModel.h"

#include "platform/OpenDocument.h"
#include "platform/Paths.h"
#include "platform/Version.h"

#include <filesystem>

namespace zav {

AboutModel::AboutModel(std::string installDir, Ports ports)
    : m_installDir(std::move(installDir)), m_ports(ports) {}

void AboutModel::open() {
    Caption = std::string("About ") + kAppTitle;
    versionText = "Version: " + VersionText();
    titleText = kAppTitle;
    disclaimerText = "Disclaimer:\rUse at your own risk, see licence for warranty statement.";
    descriptionText = "Measures radio noise and signal field strength with an ordinary receiver "
                      "and the computer's sound card: average, RMS, quasi-peak and peak.";
    noticeText = "Free software under the MIT licence. Reports of problems and observations are "
                 "welcome through the support page.";
}

void AboutModel::showLicence() {
    const ShellFailureTexts texts{
        "Browser Unavailable", "Problem accessing licence file. (Error ",
        std::string(kAppTitle) +
            " could not find a file association for licence.txt on your system. You should "
            "check that your browser is correctly installed and associated with this type of "
            "file."};
    OpenLocalDocument(WithTrailingSeparator(m_installDir) + "licence.txt", texts, m_ports.shell,
                      m_ports.dialogs);
}

void AboutModel::startSystemInfo() {
    const std::string path = m_ports.systemInfo.ToolPath();
    std::error_code ignored;
    if (path.empty() || !std::filesystem::is_regular_file(path, ignored)) {
        m_ports.dialogs.ShowMessage("System Information Is Unavailable At This Time", kAppTitle,
                                    MessageIcon::None);
        return;
    }
    m_ports.shell.Run(path, "");
}

} // namespace zav
