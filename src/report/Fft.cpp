#include "report/Fft.h"

#include <cmath>
#include <utility>

namespace zav {

bool IsPowerOfTwo(std::size_t n) {
    return n != 0 && (n & (n - 1)) == 0;
}

bool Fft(std::vector<std::complex<double>>& data, bool inverse) {
    const std::size_t n = data.size();
    if (!IsPowerOfTwo(n))
        return false;
    // Bit-reversed order first, then butterflies of growing span.
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j |= bit;
        if (i < j)
            std::swap(data[i], data[j]);
    }
    const double pi = std::acos(-1.0);
    const double sign = inverse ? 1.0 : -1.0;
    for (std::size_t span = 2; span <= n; span <<= 1) {
        const std::size_t half = span / 2;
        // Twiddles from the angle directly, not by repeated multiplication, so that long
        // transforms keep their accuracy.
        for (std::size_t k = 0; k < half; ++k) {
            const double angle =
                sign * 2.0 * pi * static_cast<double>(k) / static_cast<double>(span);
            const std::complex<double> w(std::cos(angle), std::sin(angle));
            for (std::size_t start = 0; start < n; start += span) {
                const std::complex<double> even = data[start + k];
                const std::complex<double> odd = w * data[start + k + half];
                data[start + k] = even + odd;
                data[start + k + half] = even - odd;
            }
        }
    }
    if (inverse)
        for (auto& v : data)
            v /= static_cast<double>(n);
    return true;
}

} // namespace zav
