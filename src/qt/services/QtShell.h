#pragma once

#include "platform/Shell.h"

#include <functional>

class QUrl;

namespace zav {

// The shell's "open" and program start over Qt: a document or address goes to what the
// desktop associates with it (QDesktopServices), a program is started detached (QProcess).
// Open's result keeps the program's convention: 42 opened, 2 no such file, 31 nothing took it.
class QtShell : public Shell {
public:
    // What hands a URL to the desktop; unless told otherwise QDesktopServices::openUrl, or on
    // a Unix desktop XdgOpen.
    using Opener = std::function<bool(const QUrl&)>;

    static constexpr int kOpened = 42;
    static constexpr int kFileNotFound = 2;
    static constexpr int kNoAssociation = 31;

    explicit QtShell(Opener opener = {});

    int Open(const std::string& target) override;
    // `arguments` is one command-line text; double quotes keep blanks inside an argument.
    bool Run(const std::string& program, const std::string& arguments) override;

private:
    Opener m_opener;
};

// Opens `url` with xdg-open and waits a moment for its verdict: true when it opened it or is
// still busy opening it (a viewer was started), false when it is missing or found nothing to
// open it with. Qt's own hand-off reports success as soon as xdg-open has started, so a
// desktop without any browser or viewer would fail in silence.
bool XdgOpen(const QUrl& url);

// A web address or other URL (it names a scheme such as "https:" or "mailto:"), as opposed
// to a local path, a Windows drive letter included.
bool IsAddress(const std::string& target);

} // namespace zav
