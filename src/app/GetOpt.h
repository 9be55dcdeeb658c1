#pragma once

#include "platform/Dialogs.h"

#include <string>
#include <string_view>
#include <vector>

namespace zav {

// The program's small getopt. `args` is SplitCommandLine's array: element 0 the count,
// elements 1..count the arguments. Positions are 1-based, as the state has always been kept.
class GetOpt {
public:
    explicit GetOpt(Dialogs& dialogs) : m_dialogs(dialogs) {}

    // The next option letter, "?" after an error, or "-1" when the options are exhausted.
    std::string Next(const std::vector<std::string>& args, std::string_view optstring);

    // Shows "Error: " & message (critical icon) when opterr is set; always returns "?".
    std::string ShowOptionError(const std::string& message);

    int optind = 1;
    int optpos = 2;
    std::string optarg;
    bool opterr = true;

private:
    Dialogs& m_dialogs;
};

} // namespace zav
