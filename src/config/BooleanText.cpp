#include "config/BooleanText.h"

#include "platform/Number.h"

#include <algorithm>

namespace zav {
namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
}

} // namespace

std::optional<bool> TextToBoolean(std::string_view text, char decimalSeparator) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    if (equalsIgnoringCase(text, "true"))
        return true;
    if (equalsIgnoringCase(text, "false"))
        return false;
    if (IsNumber(text, decimalSeparator))
        return Number(text, decimalSeparator) != 0;
    return std::nullopt;
}

} // namespace zav
