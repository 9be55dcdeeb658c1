#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zav {

struct PlotPoint {
    double x = 0; // time, s
    double y = 0; // normalised voltage
};

// What a line plot `columns` pixels wide needs of samples [first, last): for each column the
// lowest and the highest sample it covers, in time order, so every peak and every dip still
// shows however long the recording. Sample i sits at x = i * secondsPerSample. A range that
// already fits (at most two samples per column) comes back whole. The range is clipped to the
// samples there are.
std::vector<PlotPoint> DecimateMinMax(std::span<const std::int16_t> samples, std::size_t first,
                                      std::size_t last, std::size_t columns,
                                      double secondsPerSample);

} // namespace zav
