#pragma once

#include "config/SetupEvents.h"

#include <functional>
#include <string>
#include <vector>

namespace zav::test {

// Records every call the set-up code makes into the rest of the window, in order.
struct RecordingEvents : SetupEvents {
    void recalculate() override { calls.push_back("recalculate"); }
    void resetFromStep1() override { calls.push_back("resetFromStep1"); }
    void resetFromStep3() override { calls.push_back("resetFromStep3"); }
    std::optional<double> AntennaValueAt(double f) override {
        return antenna ? (calls.push_back("AntennaValueAt"), std::optional(antenna(f)))
                       : std::nullopt;
    }
    void UnloadAntennaFile() override { calls.push_back("UnloadAntennaFile"); }
    void LoadAntennaFile() override { calls.push_back("LoadAntennaFile"), onLoadAntenna(); }
    void SetFocus(FocusTarget target) override {
        calls.push_back(target == FocusTarget::Step1   ? "Focus Step1"
                        : target == FocusTarget::Step3 ? "Focus Step3"
                                                       : "Focus other");
    }
    void ProfileNameChanged(const std::string& n) override { calls.push_back("Caption " + n); }

    std::vector<std::string> calls;
    std::function<double(double)> antenna;       // set: an antenna file is loaded
    std::function<void()> onLoadAntenna = [] {}; // what loading the antenna file does
};

} // namespace zav::test
