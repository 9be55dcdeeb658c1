#pragma once

#include <string>

namespace zav {

struct MailMessage {
    std::string to; // may be empty: the operator chooses the recipient in the mail program
    std::string subject;
    std::string body;
};

// Port for handing a message to the user's mail program, which shows it for sending.
class Mailer {
public:
    virtual ~Mailer() = default;
    // False when no mail program took the message.
    virtual bool Send(const MailMessage& message) = 0;
};

} // namespace zav
