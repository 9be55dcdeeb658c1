#pragma once

#include "config/IniFile.h"

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace zav {

// What a monitoring run does and for how long. The profile's "monitor" section gives it; the
// command line overrides key by key.
struct MonitorPlan {
    std::vector<double> frequenciesMHz; // empty: the set-up's frequency, receiver as left
    int intervalSeconds = 600;          // from the start of one cycle to the next
    int count = 0;                      // cycles to run; 0 with no end time: until stopped
    std::optional<std::time_t> until;   // no cycle starts at or after this time
    std::string mode = "USB";           // the receiver's mode, Hamlib's name
    int settleMs = 500;                 // after tuning, before recording
    int rigModel = 0;                   // Hamlib's rig model number; 0: no rig
    std::string rigPort;                // device or host:port, as Hamlib takes it
};

// "3.5,5.3,7.0" (";" and blanks also separate): every item a frequency above 0 MHz.
std::optional<std::vector<double>> ParseFrequencyList(const std::string& text);

// "10m", "90s", "2h" or plain seconds; at least one second.
std::optional<int> ParseDuration(const std::string& text);

// "HH:MM" (the next such local time after `now`), "YYYY-MM-DD HH:MM" or "YYYY-MM-DDTHH:MM",
// with optional ":SS"; local time.
std::optional<std::time_t> ParseUntil(const std::string& text, std::time_t now);

// Reads the profile's "monitor" section (keys Frequencies, Every, Count, Until, Mode, Settle,
// Rig, RigPort) over `plan`. An unreadable value leaves the plan's and gives the reason.
std::vector<std::string> ReadMonitorSection(const IniFile& profile, std::time_t now,
                                            MonitorPlan& plan);

// Why the plan cannot run, or empty.
std::string CheckMonitorPlan(const MonitorPlan& plan);

} // namespace zav
