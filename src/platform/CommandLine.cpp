#include "platform/CommandLine.h"

namespace zav {

std::vector<std::string> SplitCommandLine(std::string_view commandLine, int maxArgs) {
    std::vector<std::string> result(static_cast<std::size_t>(maxArgs) + 1);
    int count = 0;
    std::string current;
    bool inArgument = false;
    bool inQuotes = false;
    for (char c : commandLine) {
        if (count >= maxArgs)
            break;
        if (c == '"') {
            inQuotes = !inQuotes;
            inArgument = true;
        } else if ((c == ' ' || c == '\t') && !inQuotes) {
            if (inArgument) {
                result[++count] = std::move(current);
                current.clear();
                inArgument = false;
            }
        } else {
            current += c;
            inArgument = true;
        }
    }
    if (inArgument && count < maxArgs)
        result[++count] = std::move(current);
    result[0] = std::to_string(count);
    return result;
}

std::string JoinCommandLine(const std::vector<std::string>& args) {
    std::string line;
    for (const std::string& arg : args) {
        if (!line.empty())
            line += ' ';
        if (arg.empty() || arg.find_first_of(" \t") != std::string::npos)
            line += '"' + arg + '"';
        else
            line += arg;
    }
    return line;
}

} // namespace zav
