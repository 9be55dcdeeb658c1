#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace zav {

// NMEA sentences are at most 82 characters; a line far longer is no sentence, and only its
// start is kept, so that a stream without line ends cannot fill the memory.
constexpr std::size_t kMaxNmeaLineBytes = 1024;

// The lines of a capture as a receiver sent them, from a file, a pipe, a character device
// (a live receiver) or standard input ("-"). Reads as the bytes arrive, never throws, and
// with a deadline never waits past it, even on a pipe nobody writes to or a device that
// sends without end.
class NmeaInput {
public:
    using Clock = std::chrono::steady_clock;
    enum class Next { Line, End, TimedOut, Failed };

    NmeaInput() = default;
    ~NmeaInput();
    NmeaInput(const NmeaInput&) = delete;
    NmeaInput& operator=(const NmeaInput&) = delete;

    // False and `error` in words when `path` cannot be read: missing, a folder, no access.
    // `waitForWriter`: a named pipe is opened as `cat` opens it, waiting for its writer;
    // otherwise the open returns at once and reading waits, up to its deadline.
    bool Open(const std::string& path, std::string& error, bool waitForWriter = false);
    // Reading standard input.
    void OpenStandardInput();
    // True for a regular file: its end is the end of the capture.
    bool IsRegularFile() const { return m_regular; }

    // The next line: up to LF, one CR before it dropped, cut at kMaxNmeaLineBytes; a last
    // line without a line end counts too. `Failed` leaves the reason in Error().
    Next Read(std::string& line, std::optional<Clock::time_point> deadline = std::nullopt);
    const std::string& Error() const { return m_error; }

private:
    // More bytes into the buffer; Line when some arrived.
    Next fill(std::optional<Clock::time_point> deadline);

    int m_fd = -1;
    bool m_ownFd = false;
    bool m_regular = false;
    bool m_fifo = false;
    bool m_gotData = false;
    std::string m_buffer;
    std::size_t m_at = 0;
    std::string m_error;
};

} // namespace zav
