// zavcli's sound-card commands (recording), which need Qt Multimedia: zavcli hands them over
// to this program so that its other commands load no GUI library.
#include "cli/SoundCardCommands.h"

#include <QCoreApplication>

#include <clocale>
#include <iostream>
#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>
#endif

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    std::setlocale(LC_ALL, "C"); // numbers always with "."
    std::vector<std::string> args(argv + 1, argv + argc);
    zav::CliIo io{std::cout, std::cerr, isatty(fileno(stderr)) != 0};
    return zav::RunSoundCardCli(args, io);
}
