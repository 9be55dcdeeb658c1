// zavcli's sound-card commands (recording, monitoring), which need Qt Multimedia: zavcli hands
// them over to this program so that its other commands load no GUI library.
#include "cli/CliMain.h"
#include "cli/SoundCardCommands.h"

int main(int argc, char* argv[]) {
    return zav::RunCliProgram(argc, argv, zav::RunSoundCardCli);
}
