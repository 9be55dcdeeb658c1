#pragma once

#include <optional>
#include <string_view>

namespace zav {

// Text to boolean as stored options have always been read: "True" or "False" in any case,
// or a number (zero false, anything else true), blanks around it ignored. Nothing for any
// other text.
std::optional<bool> TextToBoolean(std::string_view text, char decimalSeparator = '.');

// How a boolean is stored: "True" or "False".
inline const char* BooleanText(bool value) {
    return value ? "True" : "False";
}

} // namespace zav
