#pragma once

#include <string>

namespace zav {

// The online-transfer account kept in the profile's "transfer" section.
struct TransferSettings {
    std::string username;
    std::string password; // kept in clear text, as the profile always has
    std::string Email;    // the observer's own address
    std::string URL;      // the collection server's address without the scheme
    std::string AtfEmail; // the collecting e-mail address
    bool online = true;   // true: post to the server; false: send by e-mail
};

} // namespace zav
