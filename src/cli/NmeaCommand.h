#pragma once

#include "cli/CliIo.h"

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace zav {

// zavcli nmea [FILE|-]: every event the NMEA interpreter raises, one per line.
int NmeaCommand(const std::vector<std::string>& args, CliIo& io);

// NMEA sentences are at most 82 characters; a line far longer is no sentence, and only its
// start is kept, so that a stream without line ends cannot fill the memory.
constexpr std::size_t kMaxNmeaLineBytes = 1024;

// The next line of a capture as a receiver sent it, read as it arrives: up to LF, one CR
// before it dropped, cut at kMaxNmeaLineBytes; a last line without a line end counts too.
// False at the end of the input.
bool ReadNmeaLine(std::istream& in, std::string& line);

} // namespace zav
