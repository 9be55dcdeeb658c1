#include "platform/OpenDocument.h"

#include "platform/Version.h"

namespace zav {

bool ReportShellResult(int result, const ShellFailureTexts& texts, Dialogs& dialogs) {
    if (result < 31) {
        dialogs.ShowMessage(texts.problem + std::to_string(result) + ")", texts.title,
                            MessageIcon::Exclamation);
        return false;
    }
    if (result == 32) {
        dialogs.ShowMessage(texts.noAssociation, texts.title, MessageIcon::Exclamation);
        return false;
    }
    return true;
}

bool OpenLocalDocument(const std::string& path, const ShellFailureTexts& texts, Shell& shell,
                       Dialogs& dialogs) {
    return ReportShellResult(shell.Open(path), texts, dialogs);
}

bool OpenDocument(const std::string& target, Shell& shell, Dialogs& dialogs) {
    const ShellFailureTexts texts{
        "Browser Unavailable",
        "Problem running your web browser. You should check that your browser is correctly "
        "installed. (Error ",
        std::string(kAppTitle) + " could not find a file association for " + target +
            " on your system. You should check that your browser is correctly installed and "
            "associated with this type of file."};
    return ReportShellResult(shell.Open(target), texts, dialogs);
}

} // namespace zav
