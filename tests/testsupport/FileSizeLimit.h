#pragma once

#include <csignal>
#include <cstddef>
#include <sys/resource.h>

namespace zav::test {

// A full disk for this process alone, even as root: writes past `bytes` fail with EFBIG.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::size_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limited{bytes, m_old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_old), std::signal(SIGXFSZ, m_handler); }
    FileSizeLimit(const FileSizeLimit&) = delete;

private:
    rlimit m_old{};
    void (*m_handler)(int);
};

} // namespace zav::test
