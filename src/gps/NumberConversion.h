#pragma once

#include <cstdint>
#include <string_view>

namespace zav {

// Strict text-to-number conversions of fields and settings: whatever Number() accepts, with
// the given decimal separator; anything else throws RuntimeError "Type mismatch".
double ToDouble(std::string_view text, char decimalSeparator = '.');

// A 16-bit signed value: the number rounded half to even (2.5 gives 2, 3.5 gives 4); outside
// -32768..32767 throws RuntimeError "Overflow".
std::int16_t ToInt16(std::string_view text, char decimalSeparator = '.');
std::int16_t RoundToInt16(double value);

// A serial line speed in baud: a whole number from 1 to 4,000,000 ("115200"); a text that is
// no number throws "Type mismatch", a number out of that range "Overflow".
std::int32_t ToBaudRate(std::string_view text);

// The leading number of a text, always with "." as separator: blanks are skipped, the
// conversion stops at the first character that cannot continue a number, and a text without
// one gives 0. "51.1234'" gives 51.1234.
double LeadingNumber(std::string_view text);

} // namespace zav
