#pragma once

#include <string>

namespace zav {

// The text the position dialog shows after "Error: " for a serial-port error number.
std::string SerialErrorMessage(long errorNumber);

} // namespace zav
