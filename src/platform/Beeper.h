#pragma once

namespace zav {

// Port for the short tone that ends a recording or a GPS capture. Silent where there is no
// sound output; never an error.
class Beeper {
public:
    virtual ~Beeper() = default;
    virtual void Beep(int frequencyHz, int durationMs) = 0;
};

} // namespace zav
