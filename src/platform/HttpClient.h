#pragma once

#include <string>

namespace zav {

// How far a request got when no usable reply came back. The difference matters for anything
// that must not happen twice: a request that never left may be sent again; one that went out
// may already have been acted on.
enum class HttpFailure {
    None,          // a whole reply came back (whatever its status)
    NotSent,       // it provably never left: refused, host not found, secure connection failed
    MayHaveArrived // it went out, but no whole reply came back (dropped, cut off, timed out)
};

// What came back from one request. A request that got no HTTP reply at all has status 0, so
// every caller's "status is not 200" rule covers it, and `cause` says why in words
// ("connection refused by 127.0.0.1:8765", "no answer in 30 s").
struct HttpResponse {
    int status = 0;
    std::string body;
    std::string location{}; // the Location header of a redirect, as sent
    HttpFailure failure = HttpFailure::None;
    std::string cause{};
};

// Port for a synchronous HTTP request: the call returns when the reply is complete or the
// request has failed. The wait itself belongs to the adapter (a busy indicator, a time-out).
// Post sends its request once: it never resends on its own and never follows a redirect.
class HttpClient {
public:
    virtual ~HttpClient() = default;
    virtual HttpResponse Get(const std::string& url) = 0;
    virtual HttpResponse Post(const std::string& url, const std::string& contentType,
                              const std::string& body) = 0;
};

} // namespace zav
