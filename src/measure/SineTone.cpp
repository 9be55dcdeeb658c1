#include "measure/SineTone.h"

#include "platform/Conversions.h"

#include <algorithm>
#include <cmath>

namespace zav {

std::vector<std::int16_t> SineTone(double frequencyHz, int durationMs, int sampleRate,
                                   double amplitude) {
    if (durationMs <= 0 || sampleRate <= 0)
        return {};
    const auto count = static_cast<std::size_t>(std::llround(durationMs * 0.001 * sampleRate));
    const std::size_t ramp =
        std::min<std::size_t>(static_cast<std::size_t>(0.005 * sampleRate), count / 4);
    const double pi = PiValue();
    const double peak = std::clamp(amplitude, 0.0, 1.0) * 32767.0;
    std::vector<std::int16_t> tone(count);
    for (std::size_t i = 0; i < count; ++i) {
        double gain = 1.0;
        const std::size_t fromEdge = std::min(i, count - 1 - i);
        if (fromEdge < ramp) // raised cosine from 0 to 1
            gain = 0.5 - 0.5 * std::cos(pi * static_cast<double>(fromEdge) / ramp);
        const double v = peak * gain * std::sin(2 * pi * frequencyHz * i / sampleRate);
        tone[i] = static_cast<std::int16_t>(std::lround(v));
    }
    return tone;
}

} // namespace zav
