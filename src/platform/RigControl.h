#pragma once

#include <string>
#include <vector>

namespace zav {

// What the receiver is set to before a measurement.
struct RigTuning {
    double frequencyHz = 0;
    std::string mode;   // Hamlib's name for it: "USB", "AM", ...
    int passbandHz = 0; // the profile's bandwidth, on which MBW depends; 0 leaves the rig's own
};

// How a tuning went. Without `tuned` the measurement cannot stand for its frequency; the
// other settings the rig refused are only worth telling the operator.
struct RigOutcome {
    bool tuned = false;
    std::string error;                 // why it was not tuned, in words
    std::vector<std::string> refusals; // "the rig cannot turn AGC off", ...
};

// Port for the receiver's remote control. A failed call leaves the port ready to try again:
// the next Tune opens the connection afresh.
class RigControl {
public:
    virtual ~RigControl() = default;
    virtual RigOutcome Tune(const RigTuning& tuning) = 0;
};

} // namespace zav
