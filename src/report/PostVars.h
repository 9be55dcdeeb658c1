#pragma once

#include "report/ReportSource.h"

#include <string>

namespace zav {

// The observation as the collection server takes it: "key=value" items joined by "&". Free
// text is form-encoded; the grid cells go as displayed; the observation time and the position
// go as stored, unencoded. The position pair comes last and only when both halves are known.
std::string PostVars(const ReportSource& source);

// The address a request goes to: the text as it stands when it already names "http://" or
// "https://" (in any case), else with "http://" in front.
std::string TransferAddress(const std::string& URL);

} // namespace zav
