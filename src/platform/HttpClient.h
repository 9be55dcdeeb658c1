#pragma once

#include <string>

namespace zav {

// What came back from one request. A request that got no HTTP reply at all (refused,
// unreachable, timed out) has status 0, so every caller's "status is not 200" rule covers it.
struct HttpResponse {
    int status = 0;
    std::string body;
};

// Port for a synchronous HTTP request: the call returns when the reply is complete or the
// request has failed. The wait itself belongs to the adapter (a busy indicator, a time-out).
class HttpClient {
public:
    virtual ~HttpClient() = default;
    virtual HttpResponse Get(const std::string& url) = 0;
    virtual HttpResponse Post(const std::string& url, const std::string& contentType,
                              const std::string& body) = 0;
};

} // namespace zav
