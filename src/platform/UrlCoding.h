#pragma once

#include <string>
#include <string_view>

namespace zav {

// Form encoding: ASCII letters and digits stay; a blank becomes "+" (spaceAsPlus) or "%20";
// every other byte becomes "%" and two upper-case hex digits. Text is UTF-8, so a character
// outside ASCII is encoded byte by byte.
std::string UrlEncode(std::string_view text, bool spaceAsPlus);

// Inverse of UrlEncode: "+" becomes a blank, "%" and two hex digits the byte they name;
// anything else, including a "%" not followed by two hex digits, is kept.
std::string UrlDecode(std::string_view text);

} // namespace zav
