#pragma once

#include "platform/Mailer.h"

#include <functional>

class QUrl;

namespace zav {

// Hands a message to the user's mail program as a "mailto:" address with subject and body;
// the mail program shows it for sending. False when nothing takes the address.
class QtMailer : public Mailer {
public:
    using Opener = std::function<bool(const QUrl&)>;

    // QDesktopServices::openUrl unless told otherwise.
    explicit QtMailer(Opener opener = {});

    bool Send(const MailMessage& message) override;

private:
    Opener m_opener;
};

// The "mailto:" address of `message`, every part percent-encoded (line ends as %0D%0A).
QUrl MailtoUrl(const MailMessage& message);

} // namespace zav
