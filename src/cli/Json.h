#pragma once

#include <string>

namespace zav {

// A JSON string literal of UTF-8 `text`, control characters escaped.
std::string JsonString(const std::string& text);

// The shortest text that reads back as the same double; null where JSON has no number
// (infinity, NaN).
std::string JsonNumber(double value);

} // namespace zav
