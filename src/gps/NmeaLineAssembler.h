#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zav {

// Turns the bytes of a serial line into the lines a receiver sent, however the port happened
// to split them into reads: the same bytes give the same lines for any split. A line ends at
// LF; one CR before it is dropped. A line that runs past kMaxLineBytes without an end is no
// sentence: only its start is kept, so a stream without line ends cannot fill the memory.
class NmeaLineAssembler {
public:
    // NMEA sentences are at most 82 characters; this leaves room for proprietary ones.
    static constexpr std::size_t kMaxLineBytes = 1024;

    // The lines that `chunk` completes, in order, without their line ends.
    std::vector<std::string> Add(std::string_view chunk);
    // The start of a line still waiting for its end.
    const std::string& Pending() const { return m_pending; }
    void Clear() { m_pending.clear(); }

private:
    std::string m_pending;
};

} // namespace zav
