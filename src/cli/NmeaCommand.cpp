#include "cli/NmeaCommand.h"

#include "cli/Commands.h"
#include "gps/NmeaEventText.h"
#include "gps/NmeaInterpreter.h"
#include "gps/RuntimeError.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace zav {

bool ReadNmeaLine(std::istream& in, std::string& line) {
    line.clear();
    std::istreambuf_iterator<char> it(in);
    const std::istreambuf_iterator<char> end;
    if (it == end)
        return false;
    for (; it != end; ++it) {
        const char c = *it;
        if (c == '\n') {
            ++it;
            break;
        }
        if (line.size() < kMaxNmeaLineBytes)
            line += c;
    }
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return true;
}

int NmeaCommand(const std::vector<std::string>& args, CliIo& io) {
    if (args.size() > 1 || (args.size() == 1 && args[0].size() > 1 && args[0][0] == '-')) {
        return UsageError(io, "nmea", "");
    }
    std::ifstream file;
    std::istream* in = &std::cin;
    if (!args.empty() && args[0] != "-") {
        file.open(args[0], std::ios::binary);
        if (!file) {
            io.err << "zavcli: cannot read " << args[0] << "\n";
            return kExitFailed;
        }
        in = &file;
    }

    NmeaEventText text(io.out);
    NmeaInterpreter interpreter(text);
    std::string sentence;
    // Each line's events go out at once, so a receiver piped in is followed live.
    while (ReadNmeaLine(*in, sentence)) {
        try {
            if (!interpreter.FParse(sentence))
                io.out << "rejected\t" << sentence << '\n';
        } catch (const RuntimeError& e) {
            io.out << "error\t" << e.what() << '\n';
        }
        io.out.flush();
    }
    return kExitOk;
}

} // namespace zav
