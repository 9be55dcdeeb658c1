#include "report/MinMaxDecimation.h"

#include "report/WaveSampleReader.h"

#include <algorithm>

namespace zav {

std::vector<PlotPoint> DecimateMinMax(std::span<const std::int16_t> samples, std::size_t first,
                                      std::size_t last, std::size_t columns,
                                      double secondsPerSample) {
    last = std::min(last, samples.size());
    std::vector<PlotPoint> points;
    if (first >= last || columns == 0)
        return points;
    auto point = [&](std::size_t i) {
        return PlotPoint{static_cast<double>(i) * secondsPerSample, NormalisedVoltage(samples[i])};
    };
    const std::size_t count = last - first;
    if (count <= 2 * columns) {
        points.reserve(count);
        for (std::size_t i = first; i < last; ++i)
            points.push_back(point(i));
        return points;
    }
    points.reserve(2 * columns);
    for (std::size_t c = 0; c < columns; ++c) {
        // Column c covers [begin, end): the sample count shared out as evenly as integers allow.
        const std::size_t begin = first + count * c / columns;
        const std::size_t end = first + count * (c + 1) / columns;
        const auto [low, high] =
            std::minmax_element(samples.begin() + static_cast<std::ptrdiff_t>(begin),
                                samples.begin() + static_cast<std::ptrdiff_t>(end));
        const auto lowIndex = static_cast<std::size_t>(low - samples.begin());
        const auto highIndex = static_cast<std::size_t>(high - samples.begin());
        if (lowIndex == highIndex) {
            points.push_back(point(lowIndex));
        } else {
            points.push_back(point(std::min(lowIndex, highIndex)));
            points.push_back(point(std::max(lowIndex, highIndex)));
        }
    }
    return points;
}

} // namespace zav
