#include "platform/Number.h"
#include "platform/TextHelpers.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace zav {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::optional<double> parseHex(std::string_view digits) {
    if (digits.empty() || digits.size() > 8)
        return std::nullopt;
    std::uint32_t value = 0;
    for (char c : digits) {
        int v = HexDigitValue(c);
        if (v < 0)
            return std::nullopt;
        value = value * 16 + static_cast<std::uint32_t>(v);
    }
    if (digits.size() <= 4)
        return static_cast<double>(static_cast<std::int16_t>(static_cast<std::uint16_t>(value)));
    return static_cast<double>(static_cast<std::int32_t>(value));
}

// Checks the decimal grammar and copies the text with "." as separator for from_chars.
std::optional<double> parseDecimal(std::string_view s, char sep) {
    std::string normal;
    normal.reserve(s.size());
    std::size_t i = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
        if (s[i] == '-')
            normal += '-';
        ++i;
    }
    std::size_t mantissaDigits = 0;
    while (i < s.size() && isDigit(s[i])) {
        normal += s[i++];
        ++mantissaDigits;
    }
    if (i < s.size() && s[i] == sep) {
        normal += '.';
        ++i;
        while (i < s.size() && isDigit(s[i])) {
            normal += s[i++];
            ++mantissaDigits;
        }
    }
    if (mantissaDigits == 0)
        return std::nullopt;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        normal += 'e';
        ++i;
        if (i < s.size() && (s[i] == '+' || s[i] == '-'))
            normal += s[i++];
        std::size_t exponentDigits = 0;
        while (i < s.size() && isDigit(s[i])) {
            normal += s[i++];
            ++exponentDigits;
        }
        if (exponentDigits == 0)
            return std::nullopt;
    }
    if (i != s.size())
        return std::nullopt;
    double value = 0;
    auto [end, ec] = std::from_chars(normal.data(), normal.data() + normal.size(), value);
    if (ec != std::errc() || end != normal.data() + normal.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<double> parse(std::string_view text, char sep) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.size() >= 2 && text[0] == '&' && (text[1] == 'h' || text[1] == 'H'))
        return parseHex(text.substr(2));
    return parseDecimal(text, sep);
}

} // namespace

bool IsNumber(std::string_view text, char decimalSeparator) {
    return parse(text, decimalSeparator).has_value();
}

double Number(std::string_view text, char decimalSeparator) {
    return parse(text, decimalSeparator).value_or(0.0);
}

namespace {

std::string withSeparator(std::string_view text, char from, char to) {
    std::string out(text);
    if (from != to)
        for (char& c : out)
            if (c == from)
                c = to;
    return out;
}

} // namespace

std::string LocaleFreeNumber(std::string_view shown, char decimalSeparator) {
    if (decimalSeparator == '.' || !IsNumber(shown, decimalSeparator))
        return std::string(shown);
    return withSeparator(shown, decimalSeparator, '.');
}

std::optional<std::string> ShownNumber(std::string_view stored, char decimalSeparator) {
    for (char written : {'.', ','})
        if (IsNumber(stored, written))
            return withSeparator(stored, written, decimalSeparator);
    return std::nullopt;
}

std::optional<double> StoredNumber(std::string_view stored) {
    for (char written : {'.', ','})
        if (const auto value = parse(stored, written))
            return value;
    return std::nullopt;
}

} // namespace zav
