#pragma once

#include <csignal>
#include <cstddef>

#include <sys/resource.h>

namespace zav::test {

// A full disk for this process alone: no file may grow past `bytes` while the guard lives;
// writes beyond fail with EFBIG instead of raising SIGXFSZ. Needs no privileges and holds for
// root too, unlike read-only permissions.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::size_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_old);
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limited = m_old;
        limited.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = nullptr;
};

} // namespace zav::test
