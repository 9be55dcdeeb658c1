#pragma once

#include "report/ReportSource.h"

#include <string>

namespace zav {

// The data log's first line: 32 keys, each followed by a tab, then CR LF.
std::string DataLogHeader();

// One observation's row: 32 values joined by tabs (the notes URL-encoded), then CR LF.
std::string DataLogRow(const ReportSource& source);

// Appends the row to the log at `path`, preceded by the header when the file is new or
// empty, in a single write so that a crash never leaves half a row. False (and `error`: the
// file and the system's reason) on any failure; the file is then exactly as long as it was,
// earlier rows untouched and no part of the new row left behind.
bool AppendDataLog(const std::string& path, const ReportSource& source,
                   std::string* error = nullptr);

} // namespace zav
