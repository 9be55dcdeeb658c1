#include "platform/PostOnce.h"

#include <cctype>

namespace zav {
namespace {

constexpr int kMaxRedirects = 5;

struct Origin {
    std::string scheme, host, port;
    std::string rest; // path and query, from the "/" after the host on
};

std::string lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

Origin originOf(const std::string& url) {
    Origin o;
    const std::size_t colon = url.find("://");
    if (colon == std::string::npos)
        return o;
    o.scheme = lower(url.substr(0, colon));
    const std::size_t hostStart = colon + 3;
    const std::size_t pathStart = url.find_first_of("/?#", hostStart);
    std::string authority = url.substr(hostStart, pathStart - hostStart);
    if (const std::size_t at = authority.rfind('@'); at != std::string::npos)
        authority.erase(0, at + 1);
    const std::size_t bracket = authority.rfind(']');
    const std::size_t portColon = authority.rfind(':');
    if (portColon != std::string::npos && (bracket == std::string::npos || portColon > bracket)) {
        o.port = authority.substr(portColon + 1);
        authority.erase(portColon);
    }
    if (o.port.empty())
        o.port = o.scheme == "https" ? "443" : "80";
    o.host = lower(authority);
    o.rest = pathStart == std::string::npos ? "/" : url.substr(pathStart);
    return o;
}

bool isRedirect(int status) {
    return status >= 300 && status < 400;
}

} // namespace

std::string ResolveLocation(const std::string& requested, const std::string& location) {
    if (location.find("://") != std::string::npos)
        return location;
    const std::size_t colon = requested.find("://");
    if (colon == std::string::npos)
        return location;
    if (location.rfind("//", 0) == 0)
        return requested.substr(0, colon + 1) + location;
    const std::size_t pathStart = requested.find_first_of("/?#", colon + 3);
    const std::string root = requested.substr(0, pathStart);
    if (location.rfind('/', 0) == 0)
        return root + location;
    // Relative to the folder of the requested path.
    std::string path = pathStart == std::string::npos ? "/" : requested.substr(pathStart);
    path = path.substr(0, path.find_first_of("?#"));
    return root + path.substr(0, path.rfind('/') + 1) + location;
}

bool SameOrigin(const std::string& a, const std::string& b) {
    const Origin x = originOf(a), y = originOf(b);
    return !x.scheme.empty() && x.scheme == y.scheme && x.host == y.host && x.port == y.port;
}

HttpResponse PostOnce(HttpClient& http, const std::string& url, const std::string& contentType,
                      const std::string& body) {
    std::string address = url;
    for (int hop = 0;; ++hop) {
        HttpResponse reply = http.Post(address, contentType, body);
        if (!isRedirect(reply.status))
            return reply;
        const std::string next = ResolveLocation(address, reply.location);
        const bool keepsPost = reply.status == 307 || reply.status == 308;
        if (reply.location.empty())
            reply.cause = "redirected without a new address";
        else if (!keepsPost || !SameOrigin(address, next))
            reply.cause = "redirected to " + next + ", not followed";
        else if (hop + 1 >= kMaxRedirects)
            reply.cause = "redirected too often, last to " + next;
        else {
            address = next;
            continue;
        }
        return reply;
    }
}

} // namespace zav
