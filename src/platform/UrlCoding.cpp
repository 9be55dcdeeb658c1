#include "platform/UrlCoding.h"
#include "platform/TextHelpers.h"

namespace zav {
namespace {

bool isAsciiAlnum(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

} // namespace

std::string UrlEncode(std::string_view text, bool spaceAsPlus) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size() * 3);
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (isAsciiAlnum(c)) {
            out += ch;
        } else if (c == ' ' && spaceAsPlus) {
            out += '+';
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 0x0F];
        }
    }
    return out;
}

std::string UrlDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '+') {
            out += ' ';
        } else if (c == '%' && i + 2 < text.size() && HexDigitValue(text[i + 1]) >= 0 &&
                   HexDigitValue(text[i + 2]) >= 0) {
            out += static_cast<char>(HexDigitValue(text[i + 1]) * 16 + HexDigitValue(text[i + 2]));
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace zav
