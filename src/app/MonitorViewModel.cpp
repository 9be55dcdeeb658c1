#include "app/MonitorViewModel.h"

#include "measure/P372Noise.h"
#include "platform/Format.h"
#include "platform/TextHelpers.h"
#include "report/MonitorSummary.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace zav {

void MonitorViewModel::Started(const std::vector<double>& frequenciesMHz) {
    series.clear();
    table.clear();
    events.clear();
    for (double f : frequenciesMHz) {
        Series s;
        s.frequencyMHz = f;
        s.name = Format(f, "0.000") + " MHz";
        for (P372Curve curve : kP372Curves)
            if (P372InRange(curve, f))
                s.references.push_back({P372Data(curve).name, P372Median(curve, f)});
        series.push_back(std::move(s));
    }
    running = true;
    startEnabled = false;
    stopEnabled = true;
}

void MonitorViewModel::StatusChanged(const MonitorStatus& status) {
    stateText = MonitorStateText(status.state);
    if (status.cycle > 0)
        stateText += ", cycle " + std::to_string(status.cycle);
    if (status.nextCycle > 0 && status.state == MonitorState::Waiting) {
        const std::tm t = LocalTime(status.nextCycle);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &t);
        nextCycleText = text;
    } else {
        nextCycleText.clear();
    }
    countsText =
        std::to_string(status.logged) + " logged, " + std::to_string(status.failedVerdicts) +
        " failed verdicts, " + std::to_string(status.audioGaps) + " audio gaps, " +
        std::to_string(status.rigErrors) + " rig errors, " + std::to_string(status.posted) +
        " posted, " + std::to_string(status.queued) + " queued";
    const bool ended = status.state == MonitorState::Finished ||
                       status.state == MonitorState::Stopped ||
                       status.state == MonitorState::Failed;
    if (ended) {
        running = false;
        startEnabled = true;
        stopEnabled = false;
    }
}

void MonitorViewModel::Observed(const MonitorObservation& observation) {
    if (!observation.faDb)
        return;
    for (Series& s : series) {
        if (std::abs(s.frequencyMHz - observation.frequencyMHz) < 1e-6) {
            s.points.push_back({observation.time, *observation.faDb});
            rebuildTable();
            return;
        }
    }
}

void MonitorViewModel::Event(const std::string& text) {
    events.push_back(text);
    if (events.size() > kMaxEvents)
        events.erase(events.begin(),
                     events.begin() + static_cast<long>(events.size() - kMaxEvents));
}

void MonitorViewModel::rebuildTable() {
    table.clear();
    for (const Series& s : series) {
        std::map<int, std::vector<double>> byHour;
        for (const Point& p : s.points)
            byHour[LocalTime(p.time).tm_hour].push_back(p.value);
        for (const auto& [hour, values] : byHour) {
            const auto [lo, hi] = std::minmax_element(values.begin(), values.end());
            table.push_back({s.name, (hour < 10 ? "0" : "") + std::to_string(hour),
                             std::to_string(values.size()), Format(*lo, "0.0"),
                             Format(Median(values), "0.0"), Format(*hi, "0.0")});
        }
    }
}

std::pair<double, double> MonitorViewModel::ValueRange() const {
    double lo = INFINITY, hi = -INFINITY;
    for (const Series& s : series) {
        for (const Point& p : s.points) {
            lo = std::min(lo, p.value);
            hi = std::max(hi, p.value);
        }
        for (const ReferenceLine& r : s.references) {
            lo = std::min(lo, r.valueDb);
            hi = std::max(hi, r.valueDb);
        }
    }
    if (!std::isfinite(lo))
        return {0, 100};
    // Whole tens around the data, so that the grid lines fall on round values.
    return {std::floor(lo / 10) * 10 - 10, std::ceil(hi / 10) * 10 + 10};
}

} // namespace zav
