// The headless tool: the same core as the desktop program, with no window.
#include "cli/CliMain.h"
#include "cli/Commands.h"

int main(int argc, char* argv[]) {
    return zav::RunCliProgram(argc, argv, zav::RunCli);
}
