#pragma once

#include "platform/FormPoster.h"

#include <chrono>

namespace zav {

// The monitor's form post: the transfer's own socket post (sent once, no redirect followed),
// told as whether any of the request can have reached the server. A connection that was never
// made (refused, no such host, a failed TLS handshake) is `NeverLeft`; a failure once the
// request was written is `Unknown`. The wait runs in a local event loop, so it works in any
// thread that has none of its own.
class QtFormPoster : public FormPoster {
public:
    // The server's replies are a few hundred bytes; more than this is not its reply.
    static constexpr long long kMaxReplyBytes = 1024 * 1024;

    explicit QtFormPoster(std::chrono::milliseconds timeout = std::chrono::seconds(30))
        : m_timeout(timeout) {}

    PostAttempt Post(const std::string& url, const std::string& body) override;

private:
    std::chrono::milliseconds m_timeout;
};

} // namespace zav
