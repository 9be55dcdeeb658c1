#include "config/TextEncoding.h"

#include <cstdint>

namespace zav {
namespace {

// Code points of 0x80..0x9F in Windows-1252; the rest of the page equals Latin-1.
constexpr std::uint16_t kHighControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf8(std::string& out, std::uint32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// UTF-16 after its byte-order mark, as Windows' Notepad saves "Unicode" text. A lone
// surrogate or an odd last byte becomes U+FFFD.
std::string utf16ToUtf8(std::string_view bytes, bool bigEndian) {
    std::string out;
    out.reserve(bytes.size() / 2);
    auto unit = [&](std::size_t i) {
        const auto a = static_cast<unsigned char>(bytes[i]);
        const auto b = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<std::uint32_t>(bigEndian ? (a << 8) | b : (b << 8) | a);
    };
    std::size_t i = 0;
    for (; i + 1 < bytes.size(); i += 2) {
        std::uint32_t cp = unit(i);
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 3 < bytes.size()) {
            const std::uint32_t low = unit(i + 2);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        if (cp >= 0xD800 && cp <= 0xDFFF)
            cp = 0xFFFD;
        appendUtf8(out, cp);
    }
    if (i < bytes.size())
        appendUtf8(out, 0xFFFD);
    return out;
}

} // namespace

bool IsValidUtf8(std::string_view bytes) {
    std::size_t i = 0;
    while (i < bytes.size()) {
        const auto b0 = static_cast<unsigned char>(bytes[i]);
        if (b0 < 0x80) {
            ++i;
            continue;
        }
        int length;
        std::uint32_t cp;
        if (b0 >= 0xC2 && b0 <= 0xDF) {
            length = 2;
            cp = b0 & 0x1F;
        } else if (b0 >= 0xE0 && b0 <= 0xEF) {
            length = 3;
            cp = b0 & 0x0F;
        } else if (b0 >= 0xF0 && b0 <= 0xF4) {
            length = 4;
            cp = b0 & 0x07;
        } else {
            return false;
        }
        if (i + length > bytes.size())
            return false;
        for (int k = 1; k < length; ++k) {
            const auto b = static_cast<unsigned char>(bytes[i + k]);
            if ((b & 0xC0) != 0x80)
                return false;
            cp = (cp << 6) | (b & 0x3F);
        }
        const bool overlong = (length == 3 && cp < 0x800) || (length == 4 && cp < 0x10000);
        if (overlong || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        i += length;
    }
    return true;
}

std::string Windows1252ToUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 4);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b <= 0x9F)
            appendUtf8(out, kHighControls[b - 0x80]);
        else
            appendUtf8(out, b);
    }
    return out;
}

std::string DecodeText(std::string_view bytes) {
    if (bytes.substr(0, 2) == "\xFF\xFE")
        return utf16ToUtf8(bytes.substr(2), false);
    if (bytes.substr(0, 2) == "\xFE\xFF")
        return utf16ToUtf8(bytes.substr(2), true);
    if (!IsValidUtf8(bytes))
        return Windows1252ToUtf8(bytes);
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    return std::string(bytes);
}

} // namespace zav
