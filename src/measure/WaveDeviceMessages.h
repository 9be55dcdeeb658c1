#pragma once

#include "platform/AudioOutput.h"

#include <string>

namespace zav {

// Error numbers the audio adapters report. The first four are the audio system's own
// (open, input/output, underrun, fatal); the rest are the adapters' own findings.
enum DeviceErrorNumber : int {
    kDeviceOpenError = 1,
    kDeviceIoError = 2,
    kDeviceUnderrun = 3,
    kDeviceFatalError = 4,
    kDeviceMissing = 5,  // no such device, or none at all
    kDeviceSilent = 6,   // the stream delivered nothing for too long
    kDeviceRemoved = 7,  // the device went away while in use
    kDeviceBadFile = 8,  // a file the device was to play or fill is unusable
    kDeviceBadFormat = 9 // the device cannot take the format asked for
};

// "Error: recording wave file: " + text + "(" + number + ")."
std::string RecordingErrorMessage(const DeviceError& error);
// "Error: playing wave file: " + text + "(" + number + ")."
std::string PlayingErrorMessage(const DeviceError& error);

} // namespace zav
