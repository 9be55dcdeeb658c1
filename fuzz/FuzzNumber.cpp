// The number reader on any text; a number it reads formats and reads back within rounding.
#include "platform/Format.h"
#include "platform/Number.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (char sep : {'.', ','}) {
        if (!zav::IsNumber(text, sep))
            continue;
        const double v = zav::Number(text, sep);
        if (!std::isfinite(v))
            std::abort();
        if (std::fabs(v) < 1e12) {
            const double back = zav::Number(zav::Format(v, "0.000000", sep), sep);
            // Formatting keeps 15 significant digits, then six decimals.
            if (std::fabs(back - v) > 5.000001e-7 + std::fabs(v) * 1e-14)
                std::abort();
        }
    }
    return 0;
}
