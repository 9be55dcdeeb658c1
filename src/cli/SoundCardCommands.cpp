#include "cli/SoundCardCommands.h"

#include "cli/Commands.h"
#include "cli/MonitorCommand.h"
#include "cli/RecordCommand.h"
#include "cli/SoundCardHelper.h"

#include <algorithm>
#include <utility>

namespace zav {

int RunSoundCardCli(const std::vector<std::string>& args, CliIo& io) {
    static const std::pair<const char*, CommandFunction> kCommands[] = {
        {"record", RecordCommand},
        {"monitor", MonitorCommand},
    };
    const auto it = args.empty() ? std::end(kCommands)
                                 : std::find_if(std::begin(kCommands), std::end(kCommands),
                                                [&](const auto& c) { return args[0] == c.first; });
    if (it == std::end(kCommands)) {
        io.err << kSoundCardHelperName << ": runs zavcli's sound-card commands; see zavcli help\n";
        return kExitUsage;
    }
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    // zavcli's own dispatch describes a command asked for --help without running it.
    if (std::find(rest.begin(), rest.end(), "--help") != rest.end())
        return RunCli(args, io);
    return it->second(rest, io);
}

} // namespace zav
