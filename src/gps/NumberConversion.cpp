#include "gps/NumberConversion.h"

#include "gps/RuntimeError.h"
#include "platform/Number.h"

#include <charconv>
#include <cmath>
#include <string>

namespace zav {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSkipped(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

double ToDouble(std::string_view text, char decimalSeparator) {
    if (!IsNumber(text, decimalSeparator))
        throw RuntimeError::TypeMismatch();
    return Number(text, decimalSeparator);
}

std::int16_t RoundToInt16(double value) {
    // Round half to even without depending on the floating-point environment.
    double whole = std::floor(value);
    const double fraction = value - whole;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(whole, 2.0) != 0.0))
        whole += 1.0;
    if (!(whole >= -32768.0 && whole <= 32767.0))
        throw RuntimeError::Overflow();
    return static_cast<std::int16_t>(whole);
}

std::int16_t ToInt16(std::string_view text, char decimalSeparator) {
    return RoundToInt16(ToDouble(text, decimalSeparator));
}

std::int32_t ToBaudRate(std::string_view text) {
    const double value = std::nearbyint(ToDouble(text));
    if (!(value >= 1 && value <= 4000000))
        throw RuntimeError::Overflow();
    return static_cast<std::int32_t>(value);
}

double LeadingNumber(std::string_view text) {
    // Collect sign, digits, one point and an exponent, skipping blanks anywhere.
    std::string number;
    std::size_t i = 0;
    auto skip = [&] {
        while (i < text.size() && isSkipped(text[i]))
            ++i;
    };
    skip();
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        if (text[i] == '-')
            number += '-';
        ++i;
    }
    bool digits = false;
    bool point = false;
    for (skip(); i < text.size(); ++i, skip()) {
        if (isDigit(text[i])) {
            number += text[i];
            digits = true;
        } else if (text[i] == '.' && !point) {
            number += '.';
            point = true;
        } else {
            break;
        }
    }
    if (!digits)
        return 0.0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
        std::string exponent = "e";
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-'))
            exponent += text[j++];
        bool exponentDigits = false;
        while (j < text.size() && (isDigit(text[j]) || isSkipped(text[j]))) {
            if (isDigit(text[j])) {
                exponent += text[j];
                exponentDigits = true;
            }
            ++j;
        }
        if (exponentDigits)
            number += exponent;
    }
    double value = 0.0;
    auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
    (void)end;
    if (ec == std::errc::result_out_of_range) {
        if (number.find("e-") != std::string::npos)
            return 0.0;
        return number[0] == '-' ? -HUGE_VAL : HUGE_VAL;
    }
    return ec == std::errc() ? value : 0.0;
}

} // namespace zav
