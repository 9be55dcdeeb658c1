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

namespace {

bool openAndReport(const std::string& target, const ShellFailureTexts& texts, Shell& shell,
                   Dialogs& dialogs) {
    const int result = shell.Open(target);
    if (result == 31 || result == 32) {
        // No viewer or browser at all: a link that silently does nothing leaves the operator
        // guessing, and the address is all that is needed to open it some other way.
        dialogs.ShowMessage(texts.noAssociation + "\n\nOpen it by hand: " + target, texts.title,
                            MessageIcon::Exclamation);
        return false;
    }
    return ReportShellResult(result, texts, dialogs);
}

} // namespace

bool OpenLocalDocument(const std::string& path, const ShellFailureTexts& texts, Shell& shell,
                       Dialogs& dialogs) {
    return openAndReport(path, texts, shell, dialogs);
}

bool OpenDocument(const std::string& target, Shell& shell, Dialogs& dialogs) {
    const ShellFailureTexts texts{
        "Browser Unavailable",
        "Problem running your web browser. You should check that your browser is correctly "
        "installed. (Error ",
        std::string(kAppTitle) + " could not find a file association for " + target +
            " on your system. You should check that your browser is correctly installed and "
            "associated with this type of file."};
    return openAndReport(target, texts, shell, dialogs);
}

} // namespace zav
