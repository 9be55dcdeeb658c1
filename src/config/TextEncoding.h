#pragma once

#include <string>
#include <string_view>

namespace zav {

// True when `bytes` is well-formed UTF-8 (no overlong forms, no surrogates, nothing above
// U+10FFFF).
bool IsValidUtf8(std::string_view bytes);

// Windows-1252 text as UTF-8. The five codes that code page leaves undefined (0x81, 0x8D,
// 0x8F, 0x90, 0x9D) become the control characters of the same number, as Windows maps them.
std::string Windows1252ToUtf8(std::string_view bytes);

// Text from a file written here or on Windows: UTF-16 with its byte-order mark (either byte
// order) converted, UTF-8 as it is (without a byte-order mark), anything that is not valid
// UTF-8 read as Windows-1252.
std::string DecodeText(std::string_view bytes);

} // namespace zav
