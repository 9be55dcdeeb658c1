#include "measure/WaveDeviceMessages.h"

namespace zav {

std::string RecordingErrorMessage(const DeviceError& error) {
    return "Error: recording wave file: " + error.text + "(" + std::to_string(error.number) + ").";
}

std::string PlayingErrorMessage(const DeviceError& error) {
    return "Error: playing wave file: " + error.text + "(" + std::to_string(error.number) + ").";
}

} // namespace zav
