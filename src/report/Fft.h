#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace zav {

// True for 1, 2, 4, 8, ...
bool IsPowerOfTwo(std::size_t n);

// In-place discrete Fourier transform X[k] = sum x[n] e^(-2 pi i k n / N) (radix 2, N a power
// of two); with `inverse` the sign of the exponent turns and the result is divided by N, so
// the inverse undoes the forward transform. False, with `data` untouched, for any other size.
bool Fft(std::vector<std::complex<double>>& data, bool inverse = false);

} // namespace zav
