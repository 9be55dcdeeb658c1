#pragma once

#include "platform/Dialogs.h"
#include "platform/Shell.h"

#include <string>

namespace zav {

// The two messages a failed shell "open" can give. Results below 31 show `problem` followed
// by the result and ")"; exactly 32 shows `noAssociation`; 31 and everything above 32 show
// nothing. The gap at 31 is deliberate and kept: 31 passes silently everywhere.
struct ShellFailureTexts {
    std::string title;
    std::string problem; // ends in "(Error "
    std::string noAssociation;
};

// Shows the message `result` calls for, with the exclamation icon. True when nothing was
// shown (the target is taken as opened).
bool ReportShellResult(int result, const ShellFailureTexts& texts, Dialogs& dialogs);

// Opens a local document (a manual, a licence, the updater's file) and reports by the rule,
// except that nothing on the system taking it (31 as well as 32) is always said, with the
// path, so that the operator can open it by hand.
bool OpenLocalDocument(const std::string& path, const ShellFailureTexts& texts, Shell& shell,
                       Dialogs& dialogs);

// Opens a web address or any document with what the desktop associates with it; failures
// are reported as a browser problem, nothing taking it with the address, as above.
bool OpenDocument(const std::string& target, Shell& shell, Dialogs& dialogs);

} // namespace zav
