#pragma once

#include "report/ReportSource.h"

#include <string>

namespace zav {

// The text report: "label<TAB>value" lines with CR LF, an empty line, "Notes:" and the notes.
// It always ends with a line end.
std::string TextResults(const ReportSource& source);

// The report as "&Save text file" writes it: one further CR LF.
std::string SavedTextResults(const ReportSource& source);

// The report as an e-mail body: followed by "--" and CR LF.
std::string EmailTextResults(const ReportSource& source);

// The e-mail subject: "### ZAV report ### " & ObsTime.
std::string EmailSubject(const Observation& observation);

} // namespace zav
