#pragma once

#include "cli/CliIo.h"

#include <optional>
#include <string>
#include <vector>

namespace zav {

// A zavcli command: `args` are the words after the command's name.
using CommandFunction = int (*)(const std::vector<std::string>& args, CliIo& io);

struct Command {
    const char* name;
    const char* synopsis;
    const char* description;
    CommandFunction run; // null while the command is not built yet
};

// Exit codes shared by every command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

const std::vector<Command>& Commands();

// Reports a bad command line: "zavcli COMMAND: why" (when there is a why), then the
// command's synopsis; returns kExitUsage.
int UsageError(CliIo& io, const std::string& command, const std::string& why);

// A profile named on the command line that is not a readable file is a mistyped name, not a
// request for the defaults: "zavcli COMMAND: no such profile: PATH", kExitUsage. Nothing for
// an empty path (no profile given) or an existing file.
std::optional<int> CheckProfileExists(CliIo& io, const std::string& command,
                                      const std::string& path);

// Runs zavcli with its arguments (program name excluded).
int RunCli(const std::vector<std::string>& args, CliIo& io);

} // namespace zav
