#include "gps/SerialErrorMessage.h"

namespace zav {

std::string SerialErrorMessage(long errorNumber) {
    switch (errorNumber) {
    case 8021:
        return "Internal error retrieving device control block for the port";
    case 394:
        return "Property is write-only";
    case 380:
        return "Invalid property value";
    case 8005:
    case 8012:
        return "Port In Use";
    case 8002:
        return "Invalid port number";
    case 8018:
        return "Operation valid only when the port is open";
    case 8000:
        return "Operation not valid while the port is opened";
    // One number written as 8020 and 8015 run together: 8015 and 8020 themselves fall
    // through to "Other error...". Kept as the program has always shown it.
    case 80208015:
        return "Port ERROR";
    case 383:
        return "Property is read-only";
    case 70:
        return "Permission denied";
    default:
        return "Other error...";
    }
}

} // namespace zav
