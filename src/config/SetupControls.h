#pragma once

#include <string>

namespace zav {

// Captions and enabled states of the set-up controls that the options and the antenna file
// change.
struct SetupControls {
    std::string lblAntGain = "Gain (d&Bi)";
    std::string lblInterval = "Samples (k)";
    bool AntGainEnabled = true;            // off while an antenna file supplies the value
    bool MenuOptionsAntFactEnabled = true; // likewise
};

} // namespace zav
