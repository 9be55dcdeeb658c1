#include "cli/NmeaCommand.h"

#include "cli/Commands.h"
#include "gps/NmeaEventText.h"
#include "gps/NmeaInterpreter.h"
#include "gps/RuntimeError.h"

#include <fstream>
#include <iostream>

namespace zav {

std::vector<std::string> ReadNmeaLines(std::istream& in) {
    std::vector<std::string> lines;
    std::string text;
    while (std::getline(in, text)) {
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        lines.push_back(std::move(text));
        text.clear();
    }
    return lines;
}

int NmeaCommand(const std::vector<std::string>& args, CliIo& io) {
    if (args.size() > 1 || (args.size() == 1 && args[0].size() > 1 && args[0][0] == '-')) {
        return UsageError(io, "nmea", "");
    }
    std::vector<std::string> lines;
    if (args.empty() || args[0] == "-") {
        lines = ReadNmeaLines(std::cin);
    } else {
        std::ifstream file(args[0], std::ios::binary);
        if (!file) {
            io.err << "zavcli: cannot read " << args[0] << "\n";
            return kExitFailed;
        }
        lines = ReadNmeaLines(file);
    }

    NmeaEventText text(io.out);
    NmeaInterpreter interpreter(text);
    for (const std::string& sentence : lines) {
        try {
            if (!interpreter.FParse(sentence))
                io.out << "rejected\t" << sentence << '\n';
        } catch (const RuntimeError& e) {
            io.out << "error\t" << e.what() << '\n';
        }
    }
    io.out.flush();
    return kExitOk;
}

} // namespace zav
