#pragma once

#include <cstdio>
#include <string>

namespace zav::test {

// "$" + body + "*hh" with the NMEA checksum (XOR of the body's bytes), computed here on its own.
inline std::string Sentence(const std::string& body) {
    unsigned char sum = 0;
    for (unsigned char c : body)
        sum ^= c;
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X", sum);
    return "$" + body + "*" + hex;
}

} // namespace zav::test
