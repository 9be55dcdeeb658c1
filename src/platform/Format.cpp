#include "platform/Format.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace zav {
namespace {

struct Pattern {
    int integerDigits = 0;
    int decimals = 0;
};

Pattern parsePattern(std::string_view pattern) {
    Pattern p;
    bool afterPoint = false;
    for (char c : pattern) {
        if (c == '0')
            (afterPoint ? p.decimals : p.integerDigits)++;
        else if (c == '.' && !afterPoint)
            afterPoint = true;
        else
            throw std::invalid_argument("unsupported number pattern: " + std::string(pattern));
    }
    return p;
}

} // namespace

std::string Format(double value, std::string_view pattern, char decimalSeparator) {
    const Pattern p = parsePattern(pattern);
    if (std::isnan(value))
        return "NaN";
    if (std::isinf(value))
        return value < 0 ? "-Infinity" : "Infinity";

    // 15 significant digits: d.dddddddddddddde±XX
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.14e", std::fabs(value));
    std::string digits;
    const char* c = buf;
    for (; *c && *c != 'e'; ++c)
        if (*c >= '0' && *c <= '9')
            digits += *c;
    const int exponent = std::atoi(c + 1);

    // digits[i] has the place value 10^(exponent - i); keep places down to 10^-decimals.
    const int keep = exponent + 1 + p.decimals; // digits that survive
    std::string kept;
    if (keep > 0) {
        kept = digits.substr(0, std::min<std::size_t>(keep, digits.size()));
        kept.append(keep > static_cast<int>(digits.size()) ? keep - digits.size() : 0, '0');
        const bool roundUp = keep < static_cast<int>(digits.size()) && digits[keep] >= '5';
        if (roundUp) {
            int i = static_cast<int>(kept.size()) - 1;
            while (i >= 0 && kept[i] == '9')
                kept[i--] = '0';
            if (i >= 0)
                ++kept[i];
            else
                kept.insert(kept.begin(), '1');
        }
    } else if (keep == 0 && digits[0] >= '5') {
        kept = "1"; // 0.006 at two decimals rounds up into the last kept place
    }

    // kept holds the value in units of 10^-decimals.
    if (static_cast<int>(kept.size()) < p.decimals + 1)
        kept.insert(0, p.decimals + 1 - kept.size(), '0');
    std::string integerPart = kept.substr(0, kept.size() - p.decimals);
    const std::string fraction = kept.substr(kept.size() - p.decimals);
    while (integerPart.size() > 1 && integerPart[0] == '0')
        integerPart.erase(0, 1);
    if (integerPart == "0" && p.integerDigits == 0)
        integerPart.clear();
    if (static_cast<int>(integerPart.size()) < p.integerDigits)
        integerPart.insert(0, p.integerDigits - integerPart.size(), '0');

    const bool isZero = kept.find_first_not_of('0') == std::string::npos;
    std::string out = (value < 0 && !isZero) ? "-" : "";
    out += integerPart;
    if (p.decimals > 0) {
        out += decimalSeparator;
        out += fraction;
    }
    return out;
}

} // namespace zav
