#include "platform/CompareVersions.h"

#include "platform/Number.h"

#include <algorithm>

namespace zav {
namespace {

constexpr std::size_t kNoDot = 1000; // a missing dot stands for "the rest of the text"

// 1-based position of the first "." at or after 1-based `from`, or kNoDot.
std::size_t dotFrom(std::string_view s, std::size_t from) {
    if (from > s.size())
        return kNoDot;
    const std::size_t at = s.find('.', from - 1);
    return at == std::string_view::npos ? kNoDot : at + 1;
}

// The 1-based stretch [from, to) of `s`, clipped to the text.
std::string_view stretch(std::string_view s, std::size_t from, std::size_t to) {
    if (from > s.size() || to <= from)
        return {};
    return s.substr(from - 1, std::min(to, s.size() + 1) - from);
}

} // namespace

std::int16_t CompareVersions(std::string_view a, std::string_view b, int parts) {
    std::size_t p = 1;
    for (int pass = 0; pass < parts; ++pass) {
        const std::size_t dotA = dotFrom(a, p);
        const std::size_t dotB = dotFrom(b, p);
        const double na = Number(stretch(a, p, dotA));
        const double nb = Number(stretch(b, p, dotB));
        if (nb > na)
            return -1;
        if (nb < na)
            return 1;
        p = std::min(dotA, dotB) + 1;
    }
    return 0;
}

} // namespace zav
