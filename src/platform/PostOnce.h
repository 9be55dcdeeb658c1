#pragma once

#include "platform/HttpClient.h"

#include <string>

namespace zav {

// The address a redirect's Location names, read against the address that was asked for
// ("/new", "new" and "//host/new" as well as whole addresses).
std::string ResolveLocation(const std::string& requested, const std::string& location);

// True when both addresses have the same scheme, host and port.
bool SameOrigin(const std::string& a, const std::string& b);

// Posts `body` to `url` once per call. A 307 or 308 to the same scheme, host and port is
// followed with the same POST; any other redirect is not followed, so a body (and the password
// in it) never goes to another host nor turns into a GET: it comes back as the redirect's
// status with a cause naming the new address.
HttpResponse PostOnce(HttpClient& http, const std::string& url, const std::string& contentType,
                      const std::string& body);

} // namespace zav
