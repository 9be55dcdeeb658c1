#pragma once

#include "cli/CliIo.h"

#include <QCoreApplication>

#include <clocale>
#include <iostream>
#include <string>
#include <vector>
#ifdef _WIN32
#include <io.h>
#else
#include <csignal>
#include <unistd.h>
#endif

namespace zav {

// The shared body of zavcli's programs: a window-less Qt application, numbers printed with
// "." whatever the locale, progress only when standard error is a terminal.
inline int RunCliProgram(int argc, char* argv[],
                         int (*run)(const std::vector<std::string>&, CliIo&)) {
    QCoreApplication app(argc, argv);
    std::setlocale(LC_ALL, "C");
#ifndef _WIN32
    // A file that may grow no more (a size limit, a full quota) fails the write with an error
    // the command reports, instead of ending the program halfway through a file.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    const std::vector<std::string> args(argv + 1, argv + argc);
#ifdef _WIN32
    const bool terminal = _isatty(_fileno(stderr)) != 0;
#else
    const bool terminal = isatty(fileno(stderr)) != 0;
#endif
    CliIo io{std::cout, std::cerr, terminal};
    return run(args, io);
}

} // namespace zav
