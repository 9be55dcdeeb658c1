#pragma once

#include "app/Monitor.h"

#include <ctime>
#include <string>
#include <vector>

namespace zav {

// The Monitor window without the window: the run's state and next cycle, the external noise
// of each frequency against time with the P.372 curves' values at that frequency, and the
// minimum, median and maximum per frequency and hour.
class MonitorViewModel {
public:
    struct Point {
        std::time_t time;
        double value;
    };
    struct ReferenceLine {
        std::string name; // "Business", ... "Galactic"
        double valueDb;
    };
    struct Series {
        double frequencyMHz = 0;
        std::string name; // "7.000 MHz"
        std::vector<Point> points;
        std::vector<ReferenceLine> references;
    };
    struct TableRow {
        std::string frequency, hour, n, min, median, max;
    };

    static constexpr const char* kCaption = "ZAV - Monitor";
    static constexpr const char* kPlotTitle = "External noise Fa (dB above kT0b)";

    // A run is about to start on these frequencies.
    void Started(const std::vector<double>& frequenciesMHz);
    void StatusChanged(const MonitorStatus& status);
    void Observed(const MonitorObservation& observation);
    void Event(const std::string& text);

    // Shown state.
    std::string stateText = MonitorStateText(MonitorState::Idle);
    std::string nextCycleText;
    std::string countsText;
    std::vector<std::string> events; // the run's log of events, newest last
    std::vector<Series> series;
    std::vector<TableRow> table;
    bool running = false;
    bool startEnabled = true;
    bool stopEnabled = false;

    // The range the plot's value axis needs to show every point and reference line.
    std::pair<double, double> ValueRange() const;

private:
    void rebuildTable();
    static constexpr std::size_t kMaxEvents = 1000;
};

} // namespace zav
