#pragma once

#include <cstdint>
#include <string>

namespace zav {

// The GPS receiver's serial settings and the wanted accuracy, kept in the settings' "gps"
// section. The numbers are 16-bit, as they always were: a speed of 38400 does not fit.
struct GpsSettings {
    std::int16_t Port = 1; // serial port number (COMn)
    std::int16_t Speed = 4800;
    std::string Parity = "N";
    std::int16_t Dbits = 8;
    std::int16_t Sbits = 1;
    std::int16_t Acc = 10; // wanted accuracy, m; 0 turns accuracy-based acceptance off
    std::string Device;    // a device path that wins over Port when set, e.g. /dev/ttyUSB0
};

} // namespace zav
