#include "cli/AntennaCommand.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "measure/AntennaFile.h"
#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

int AntennaCommand(const std::vector<std::string>& args, CliIo& io) {
    std::string path;
    std::vector<double> frequenciesMHz;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--at") {
            if (i + 1 >= args.size() || !IsNumber(args[i + 1]))
                return UsageError(io, "antenna", "--at needs a number of MHz");
            frequenciesMHz.push_back(Number(args[++i]));
        } else if (a.size() > 1 && a[0] == '-') {
            return UsageError(io, "antenna", "unknown option \"" + a + "\"");
        } else if (path.empty()) {
            path = a;
        } else {
            return UsageError(io, "antenna", "one file only");
        }
    }
    if (path.empty())
        return UsageError(io, "antenna", "no file given");
    if (frequenciesMHz.empty())
        return UsageError(io, "antenna", "no --at frequency given");

    CliDialogs dialogs(io.err);
    const AntennaFile file = ReadAntennaFile(path, dialogs);
    if (!file.Ok)
        return kExitFailed;
    for (double f : frequenciesMHz)
        io.out << Format(csinterpolate(file.IntTable, f), "0.00") << "\n";
    return kExitOk;
}

} // namespace zav
