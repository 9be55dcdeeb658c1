#pragma once

#include <string_view>

namespace zav {

// Pattern matching in the manner of the "Like" operator, case-sensitive: "*" any run of
// characters (none included), "?" any one character, "#" one digit, "[abc]" / "[a-z]" one
// character of the list, "[!abc]" one character not in it; anything else matches itself.
// The whole text must match. A "[" without its "]" makes a pattern that matches nothing.
bool Like(std::string_view text, std::string_view pattern);

} // namespace zav
