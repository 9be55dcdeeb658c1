#include "support/HelpMenu.h"

#include "platform/OpenDocument.h"
#include "platform/Paths.h"
#include "platform/Version.h"

namespace zav {

void HelpMenu::openHelp(const std::string& documentsDir) {
    const ShellFailureTexts texts{"Acrobat unavailable", "Problem accessing documentation. (Error ",
                                  std::string(kAppTitle) +
                                      " could not find a file association for ZAV.pdf on your "
                                      "system."};
    OpenLocalDocument(WithTrailingSeparator(documentsDir) + "ZAV.pdf", texts, m_shell, m_dialogs);
}

void HelpMenu::openHomePage(const std::string& BaseUrl) {
    OpenDocument(BaseUrl, m_shell, m_dialogs);
}

void HelpMenu::openFaq(const std::string& BaseUrl) {
    OpenDocument(BaseUrl + "faq.htm", m_shell, m_dialogs);
}

void HelpMenu::openSupportPage(const std::string& BaseUrl) {
    OpenDocument(BaseUrl + "support.htm", m_shell, m_dialogs);
}

} // namespace zav
