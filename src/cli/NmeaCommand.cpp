#include "cli/NmeaCommand.h"

#include "cli/Commands.h"
#include "cli/NmeaInput.h"
#include "gps/NmeaEventText.h"
#include "gps/NmeaInterpreter.h"
#include "gps/RuntimeError.h"

namespace zav {

int NmeaCommand(const std::vector<std::string>& args, CliIo& io) {
    if (args.size() > 1 || (args.size() == 1 && args[0].size() > 1 && args[0][0] == '-')) {
        return UsageError(io, "nmea", "");
    }
    NmeaInput in;
    if (!args.empty() && args[0] != "-") {
        std::string error;
        // Followed like `cat` follows it: a named pipe is waited on until its writer comes.
        if (!in.Open(args[0], error, true)) {
            io.err << "zavcli: cannot read " << args[0] << ": " << error << "\n";
            return kExitFailed;
        }
    } else {
        in.OpenStandardInput();
    }

    NmeaEventText text(io.out);
    NmeaInterpreter interpreter(text);
    std::string sentence;
    // Each line's events go out at once, so a receiver piped in is followed live.
    NmeaInput::Next next;
    while ((next = in.Read(sentence)) == NmeaInput::Next::Line) {
        try {
            if (!interpreter.parseSentence(sentence))
                io.out << "rejected\t" << sentence << '\n';
        } catch (const RuntimeError& e) {
            io.out << "error\t" << e.what() << '\n';
        }
        io.out.flush();
    }
    if (next == NmeaInput::Next::Failed) {
        // A stick pulled out or a port gone: the events so far stand, the end is said.
        io.err << "zavcli: reading " << (args.empty() ? "-" : args[0]) << " failed: " << in.Error()
               << "\n";
        return kExitFailed;
    }
    return kExitOk;
}

} // namespace zav
