#pragma once

#include <cstdint>
#include <string>

namespace zav {

// The GPS receiver's serial settings and the wanted accuracy, kept in the settings' "gps"
// section. The speed is 32-bit, for today's receivers at 38400 to 115200 baud.
struct GpsSettings {
    std::int16_t Port = 1; // serial port number (COMn)
    std::int32_t Speed = 4800;
    std::string Parity = "N";
    std::int16_t Dbits = 8;
    std::int16_t Sbits = 1;
    std::int16_t Acc = 10; // wanted accuracy, m; 0 turns accuracy-based acceptance off
    std::string Device;    // a device that wins over Port when set, e.g. /dev/serial/by-id/...
};

} // namespace zav
