#pragma once

#include <optional>
#include <string>
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

// Numbers in files and on the wire use "." whatever the operator's locale; the window shows
// and takes them with the locale's `decimalSeparator`. Both conversions change only the
// separator, so every digit the operator typed is kept.

// A number as stored or sent: `shown` (a number in `decimalSeparator`) with "." instead;
// anything that is not a number comes back unchanged.
std::string LocaleFreeNumber(std::string_view shown, char decimalSeparator);

// A stored number as the window shows it, with `decimalSeparator`. A file may hold "." or,
// written by a comma-locale machine, ","; nothing when `stored` is neither.
std::optional<std::string> ShownNumber(std::string_view stored, char decimalSeparator);

// The value of a stored number, written with "." or ","; nothing when it is not a number.
std::optional<double> StoredNumber(std::string_view stored);

} // namespace zav
