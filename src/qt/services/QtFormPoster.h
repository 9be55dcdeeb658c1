#pragma once

#include "platform/FormPoster.h"

#include <chrono>

namespace zav {

// Posts a form over a socket of its own, so that it knows whether any of the request left:
// a connection that was never made (refused, no such host, no route, a failed TLS handshake)
// is `NeverLeft`; a failure after the first byte was handed to the system is `Unknown`. The
// wait runs in a local event loop, so it works in any thread that has none of its own.
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
