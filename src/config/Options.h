#pragma once

namespace zav {

// The six check-mark options of the Options menu.
struct Options {
    bool Beep = true;     // beep when a recording ends (kept in the settings)
    bool Verbose = true;  // prompts and messages in the steps
    bool AntFact = false; // AntGain holds an antenna factor (dB/m) instead of a gain (dBi)
    bool Samples = true;  // Interval counts units of 1024 samples instead of milliseconds
    bool Limits = true;   // failed judgements hold back the next step; not stored
    bool AutoTsv = false; // step 3 appends a data-log row
};

} // namespace zav
