#include "qt/services/QtFormPoster.h"

#include "qt/services/SocketPost.h"

namespace zav {

PostAttempt QtFormPoster::Post(const std::string& url, const std::string& body) {
    SocketPost socket(m_timeout, kMaxReplyBytes);
    HttpResponse reply = socket.Send(url, "application/x-www-form-urlencoded", body, {}, {});
    PostAttempt attempt;
    attempt.delivery = reply.failure == HttpFailure::None      ? PostDelivery::Answered
                       : reply.failure == HttpFailure::NotSent ? PostDelivery::NeverLeft
                                                               : PostDelivery::Unknown;
    attempt.error = reply.cause;
    attempt.response = std::move(reply);
    return attempt;
}

} // namespace zav
