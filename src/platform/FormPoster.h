#pragma once

#include "platform/HttpClient.h"

#include <string>

namespace zav {

// Whether a request can have reached the server. Only `NeverLeft` is proof that it did not:
// no connection was made, or none of the request was written. Anything after the first byte
// went out may have been received, so a request that then failed is never sent again.
enum class PostDelivery { Answered, NeverLeft, Unknown };

struct PostAttempt {
    PostDelivery delivery = PostDelivery::NeverLeft;
    HttpResponse response; // when Answered
    std::string error;     // why there was no answer, in words
};

// Port for posting a form to a server when the caller must know whether it left.
class FormPoster {
public:
    virtual ~FormPoster() = default;
    virtual PostAttempt Post(const std::string& url, const std::string& body) = 0;
};

} // namespace zav
