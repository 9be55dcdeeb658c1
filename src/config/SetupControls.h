#pragma once

#include <string>

namespace zav {

// Captions and enabled states of the set-up controls that the options and the antenna file
// change.
struct SetupControls {
    // The captions that name the unit of the AntGain and Interval boxes.
    static const char* AntGainCaption(bool antFact) {
        return antFact ? "Factor (d&B/m)" : "Gain (d&Bi)";
    }
    static const char* IntervalCaption(bool samples) {
        return samples ? "Samples (k)" : "Interval (ms)";
    }

    std::string antGainLabel = AntGainCaption(false);
    std::string intervalLabel = IntervalCaption(true);
    bool AntGainEnabled = true;       // off while an antenna file supplies the value
    bool antennaFactorEnabled = true; // likewise
};

} // namespace zav
