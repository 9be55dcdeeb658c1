#pragma once

#include <cstdint>
#include <vector>

namespace zav {

// A tone of `frequencyHz` lasting `durationMs` at `sampleRate`, as 16-bit mono samples of
// peak `amplitude` (of full scale). The first and last 5 ms (at most a quarter of the tone
// each) rise and fall smoothly, so that the tone starts and ends without a click.
std::vector<std::int16_t> SineTone(double frequencyHz, int durationMs, int sampleRate,
                                   double amplitude);

} // namespace zav
