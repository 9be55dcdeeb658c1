#pragma once

#include <string_view>

namespace zav {

// True when `text` is a number: optional blanks, an optional sign, digits with at most one
// `decimalSeparator`, an optional exponent ("e" or "E", optional sign, digits), optional
// blanks; or "&h" / "&H" followed by hexadecimal digits. Anything else (empty text, letters,
// two separators, thousands separators, a value out of the double range) is not a number.
bool IsNumber(std::string_view text, char decimalSeparator = '.');

// The value of `text` when IsNumber(text), else 0. Hexadecimal forms of up to four digits
// are 16-bit signed ("&hFFFF" is -1), of five to eight digits 32-bit signed.
double Number(std::string_view text, char decimalSeparator = '.');

} // namespace zav
