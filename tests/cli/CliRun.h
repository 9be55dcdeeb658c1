#pragma once

#include "cli/Commands.h"

#include <sstream>
#include <string>
#include <vector>

namespace zav::test {

// zavcli in-process: what a command prints, kept apart for standard output and error.
struct Cli {
    std::ostringstream out, err;
    CliIo io{out, err, false};
    int run(std::vector<std::string> args) { return RunCli(args, io); }
};

} // namespace zav::test
