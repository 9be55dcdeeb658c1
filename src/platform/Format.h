#pragma once

#include <string>
#include <string_view>

namespace zav {

// Formats `value` with a fixed display pattern made of zeros and at most one ".":
// "0", "0.0", "0.00", "0.000", "0.00000", "0.000000", "00.000000", "000.000000".
// The zeros before the point give the minimum count of integer digits, those after it the
// exact count of decimals. The value is first taken to 15 significant digits and then rounded
// half away from zero, so 2.675 shows as 2.68 the way an operator reads it. A value that
// rounds to zero shows no minus sign. `decimalSeparator` replaces the point in the output.
std::string Format(double value, std::string_view pattern, char decimalSeparator = '.');

} // namespace zav
