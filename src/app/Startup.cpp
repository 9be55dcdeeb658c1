#include "app/Startup.h"

#include "app/GetOpt.h"
#include "platform/CommandLine.h"
#include "platform/Number.h"
#include "platform/Paths.h"

namespace zav {

std::string UsageText() {
    return "Usage: ZAV [-d] [-h] [-l] [-t]\r"
           "   d   debug\r"
           "   h   help\r"
           "   l   use last saved profile\r"
           "   t   TSV file name\r";
}

StartupDecision DecideStartup(std::string_view commandLine, std::string_view currentDirectory,
                              const SettingsStore& settings, Dialogs& dialogs) {
    StartupDecision decision;
    StartupState& s = decision.state;
    s.currentDir = WithTrailingSeparator(currentDirectory);
    s.profileName = "ZAV";
    s.profilePath = s.currentDir + "ZAV" + ".zav";

    const std::vector<std::string> args = SplitCommandLine(commandLine, 5);
    GetOpt getopt(dialogs);
    for (std::string c = getopt.Next(args, "dhlt:"); c != "-1"; c = getopt.Next(args, "dhlt:")) {
        if (c == "d") {
            s.debugFlag = 1;
        } else if (c == "h") {
            dialogs.ShowMessage(UsageText(), "ZAV - Help", MessageIcon::None);
            return decision;
        } else if (c == "l") {
            s.profilePath = settings.GetSetting("default", "Profile", s.currentDir + "ZAV.zav");
            s.profileName = ProfileBaseName(s.profilePath);
        } else if (c == "t") {
            s.tsvFileName = getopt.optarg;
        } else if (c == "?") {
            return decision;
        }
    }

    const int count = static_cast<int>(Number(args[0]));
    if (count >= getopt.optind) {
        std::string path = args[getopt.optind];
        if (path.size() < 4 || path.substr(path.size() - 4) != ".zav")
            path += ".zav";
        if (!HasDirectoryPart(path))
            path = s.currentDir + path;
        s.profilePath = path;
        s.profileName = ProfileBaseName(path);
    }
    decision.showWindow = true;
    return decision;
}

} // namespace zav
