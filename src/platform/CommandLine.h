#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zav {

// Cuts a command-line text (without the program's own name) into at most `maxArgs`
// arguments. Blanks and tabs separate arguments; a double quote starts a stretch that runs to
// the next double quote, in which blanks belong to the argument; the quotes are dropped.
// The result has maxArgs + 1 elements: element 0 holds the count as text, elements 1..count
// the arguments, the rest are empty.
std::vector<std::string> SplitCommandLine(std::string_view commandLine, int maxArgs = 5);

// The command-line text that SplitCommandLine cuts back into `args` (each argument with a
// blank, a tab or nothing in it is quoted). Used where the platform hands over argv.
std::string JoinCommandLine(const std::vector<std::string>& args);

} // namespace zav
