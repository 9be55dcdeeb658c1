#pragma once

#include "report/ReportSource.h"

#include <string>

namespace zav {

// The observation as the collection server takes it: "key=value" items joined by "&". Free
// text is form-encoded; every number (set-up, grid cells, position) goes with "." as its
// decimal separator whatever the window shows; the time and the position go unencoded. The position
// pair comes last and only when both halves are known.
std::string PostVars(const ReportSource& source);

// The address a request goes to: the text as it stands when it already names "http://" or
// "https://" (in any case), else with "http://" in front.
std::string TransferAddress(const std::string& URL);

} // namespace zav
