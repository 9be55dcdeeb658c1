#include "cli/NmeaInput.h"

#include "platform/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zav {

NmeaInput::~NmeaInput() {
    if (m_ownFd && m_fd >= 0)
        ::close(m_fd);
}

bool NmeaInput::Open(const std::string& path, std::string& error, bool waitForWriter) {
    // Not blocking at the open unless asked: a FIFO without a writer would hold it for ever.
    const int fd =
        ::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC | (waitForWriter ? 0 : O_NONBLOCK));
    if (fd < 0) {
        error = errno == EISDIR ? "it is a folder" : LastErrorText();
        return false;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        error = S_ISDIR(info.st_mode) ? "it is a folder" : LastErrorText();
        ::close(fd);
        return false;
    }
    m_fd = fd;
    m_ownFd = true;
    m_regular = S_ISREG(info.st_mode);
    m_fifo = S_ISFIFO(info.st_mode);
    return true;
}

void NmeaInput::OpenStandardInput() {
    m_fd = STDIN_FILENO;
    m_ownFd = false;
    struct stat info {};
    m_regular = ::fstat(m_fd, &info) == 0 && S_ISREG(info.st_mode);
    m_fifo = S_ISFIFO(info.st_mode);
}

NmeaInput::Next NmeaInput::fill(std::optional<Clock::time_point> deadline) {
    char chunk[4096];
    for (;;) {
        const auto now = Clock::now();
        if (deadline && now >= *deadline)
            return Next::TimedOut;
        if (!m_regular) {
            int wait = -1;
            if (deadline)
                wait = static_cast<int>(
                    std::chrono::ceil<std::chrono::milliseconds>(*deadline - now).count());
            pollfd p{m_fd, POLLIN, 0};
            const int ready = ::poll(&p, 1, wait);
            if (ready < 0 && errno != EINTR) {
                m_error = LastErrorText();
                return Next::Failed;
            }
            if (ready <= 0)
                continue; // the deadline is checked again above
        }
        const ssize_t got = ::read(m_fd, chunk, sizeof chunk);
        if (got > 0) {
            m_buffer.erase(0, m_at);
            m_at = 0;
            m_buffer.append(chunk, static_cast<std::size_t>(got));
            m_gotData = true;
            return Next::Line;
        }
        if (got == 0) {
            // A FIFO nobody has opened for writing yet reads as ended: wait for its writer.
            if (m_fifo && !m_gotData && deadline) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                continue;
            }
            return Next::End;
        }
        if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)
            continue;
        m_error = LastErrorText();
        return Next::Failed;
    }
}

NmeaInput::Next NmeaInput::Read(std::string& line, std::optional<Clock::time_point> deadline) {
    line.clear();
    bool any = false;
    for (;;) {
        const std::size_t lf = m_buffer.find('\n', m_at);
        const std::size_t stop = lf == std::string::npos ? m_buffer.size() : lf;
        if (stop > m_at) {
            any = true;
            const std::size_t room = kMaxNmeaLineBytes - std::min(kMaxNmeaLineBytes, line.size());
            line.append(m_buffer, m_at, std::min(room, stop - m_at));
        }
        if (lf != std::string::npos) {
            m_at = lf + 1;
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            return Next::Line;
        }
        m_buffer.clear();
        m_at = 0;
        const Next more = fill(deadline);
        if (more == Next::Line)
            continue;
        if (more == Next::End && any) {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            return Next::Line;
        }
        return more;
    }
}

} // namespace zav
