#include "measure/LevelMeter.h"

#include "platform/Format.h"

#include <cmath>
#include <limits>

namespace zav {

LevelMeter::LevelMeter(std::size_t windowSamples)
    : m_window(windowSamples > 0 ? windowSamples : 1) {}

void LevelMeter::Add(const std::int16_t* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t v = samples[i];
        if (m_filled == m_window.size()) {
            const std::int64_t old = m_window[m_next];
            m_sumSquares -= static_cast<std::uint64_t>(old * old);
        } else {
            ++m_filled;
        }
        m_window[m_next] = samples[i];
        m_sumSquares += static_cast<std::uint64_t>(v * v);
        m_next = (m_next + 1) % m_window.size();
    }
}

double LevelMeter::Dbfs() const {
    if (m_sumSquares == 0)
        return -std::numeric_limits<double>::infinity();
    const double meanSquare =
        static_cast<double>(m_sumSquares) / static_cast<double>(m_filled) / (32768.0 * 32768.0);
    return 10.0 * std::log10(meanSquare);
}

std::string LevelText(double dbfs, char decimalSeparator) {
    if (!std::isfinite(dbfs))
        return "-inf dBFS";
    return Format(dbfs, "0.0", decimalSeparator) + " dBFS";
}

} // namespace zav
