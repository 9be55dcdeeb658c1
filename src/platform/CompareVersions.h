#pragma once

#include <cstdint>
#include <string_view>

namespace zav {

// −1, 0 or 1 as version `a` is lower than, equal to or higher than `b`, looking at no more
// than `parts` dotted parts, each compared as a number. One scanning position is shared by
// both texts, so parts of different lengths are compared out of step after the first dot;
// that is how versions have always been compared here and stays so.
std::int16_t CompareVersions(std::string_view a, std::string_view b, int parts);

} // namespace zav
