#include "platform/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <unistd.h>
#define ZAV_POSIX_FILES 1
#endif

namespace zav {

namespace fs = std::filesystem;

// A stream buffer over the temporary file that keeps the system's reason for the first
// failed write, so that a full disk is reported as such and not as a vague stream error.
class AtomicFileWriter::Buffer : public std::streambuf {
public:
    explicit Buffer(const fs::path& path, FileAccessMode access) : m_data(65536) {
#ifdef ZAV_POSIX_FILES
        // Created new, never through something already there (a link planted at the name).
        m_fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      access == FileAccessMode::OwnerOnly ? 0600 : 0666);
        if (m_fd < 0)
            m_error = errno;
#else
        (void)access;
        m_file = std::fopen(path.string().c_str(), "wbx");
        if (!m_file)
            m_error = errno ? errno : EIO;
#endif
        setp(m_data.data(), m_data.data() + m_data.size());
    }
    ~Buffer() override {
        close();
    }

    bool IsOpen() const {
#ifdef ZAV_POSIX_FILES
        return m_fd >= 0;
#else
        return m_file != nullptr;
#endif
    }
    int Error() const {
        return m_error;
    }

    // Writes what is buffered, puts it on the disk (so a power cut right after the rename
    // finds the new content, not an empty file) and closes. False once anything failed.
    bool Finish() {
        const bool flushed = flush();
#ifdef ZAV_POSIX_FILES
        if (flushed && m_fd >= 0 && ::fsync(m_fd) != 0 && !m_error)
            m_error = errno;
#endif
        close();
        return flushed && !m_error;
    }

protected:
    int_type overflow(int_type c) override {
        if (!flush())
            return traits_type::eof();
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }
    int sync() override {
        return flush() ? 0 : -1;
    }

private:
    bool flush() {
        if (m_error || !IsOpen())
            return false;
        const char* from = pbase();
        std::size_t left = static_cast<std::size_t>(pptr() - pbase());
        while (left > 0) {
#ifdef ZAV_POSIX_FILES
            const ssize_t n = ::write(m_fd, from, left);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                m_error = n < 0 ? errno : ENOSPC;
                return false;
            }
#else
            const std::size_t n = std::fwrite(from, 1, left, m_file);
            if (n == 0) {
                m_error = errno ? errno : EIO;
                return false;
            }
#endif
            from += n;
            left -= static_cast<std::size_t>(n);
        }
        setp(m_data.data(), m_data.data() + m_data.size());
        return true;
    }
    void close() {
#ifdef ZAV_POSIX_FILES
        if (m_fd >= 0 && ::close(m_fd) != 0 && !m_error)
            m_error = errno;
        m_fd = -1;
#else
        if (m_file && std::fclose(m_file) != 0 && !m_error)
            m_error = errno ? errno : EIO;
        m_file = nullptr;
#endif
    }

    std::vector<char> m_data;
#ifdef ZAV_POSIX_FILES
    int m_fd = -1;
#else
    std::FILE* m_file = nullptr;
#endif
    int m_error = 0;
};

namespace {

// Paths are UTF-8 everywhere in the program.
fs::path toPath(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string temporaryName() {
    static std::mt19937_64 rng{std::random_device{}()};
    const char* hex = "0123456789abcdef";
    std::string name = ".~";
    for (int i = 0; i < 8; ++i)
        name += hex[rng() % 16];
    return name + ".tmp";
}

std::string reason(int code) {
    return std::generic_category().message(code);
}

bool fail(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
    return false;
}

} // namespace

AtomicFileWriter::AtomicFileWriter(const std::string& path, FileAccessMode access)
    : m_target(toPath(path)), m_out(nullptr), m_access(access) {
    std::error_code ec;
    // Replace the file a link points to, not the link.
    if (fs::is_symlink(m_target, ec)) {
        fs::path resolved = fs::canonical(m_target, ec);
        if (!ec)
            m_target = resolved;
    }
    m_existed = fs::exists(m_target, ec);
    // A name already taken (left by a run that died before its rename) gets another try.
    for (int attempt = 0; attempt < 8; ++attempt) {
        m_temporary = m_target;
        m_temporary += temporaryName();
        m_buffer = std::make_unique<Buffer>(m_temporary, access);
        if (m_buffer->IsOpen() || m_buffer->Error() != EEXIST)
            break;
    }
    m_out.rdbuf(m_buffer.get());
    if (!m_buffer->IsOpen()) {
        m_openError = "cannot write " + m_target.string() + ": " + reason(m_buffer->Error());
        m_out.setstate(std::ios::badbit);
    }
}

AtomicFileWriter::~AtomicFileWriter() {
    if (m_done)
        return;
    std::error_code ec;
    const bool created = m_buffer->IsOpen();
    m_buffer.reset();
    if (created)
        fs::remove(m_temporary, ec);
}

bool AtomicFileWriter::IsOpen() const {
    return m_buffer->IsOpen();
}

bool AtomicFileWriter::Commit(std::string* error) {
    if (m_done)
        return fail(error, "already committed");
    if (!m_buffer->IsOpen())
        return fail(error, m_openError);
    m_done = true;
    std::error_code ec;
    const bool streamOk = static_cast<bool>(m_out);
    if (!m_buffer->Finish() || !streamOk) {
        const int code = m_buffer->Error() ? m_buffer->Error() : EIO;
        fs::remove(m_temporary, ec);
        return fail(error, "cannot write " + m_target.string() + ": " + reason(code));
    }
    if (m_existed) {
        auto perms = fs::status(m_target, ec).permissions();
        if (m_access == FileAccessMode::OwnerOnly)
            perms &= fs::perms::owner_read | fs::perms::owner_write;
        if (!ec)
            fs::permissions(m_temporary, perms, ec);
    }
    fs::rename(m_temporary, m_target, ec);
    if (ec) {
        const std::string message = ec.message();
        fs::remove(m_temporary, ec);
        return fail(error, "cannot replace " + m_target.string() + ": " + message);
    }
    return true;
}

bool WriteFileAtomically(const std::string& path, std::string_view bytes, std::string* error,
                         FileAccessMode access) {
    AtomicFileWriter writer(path, access);
    if (writer.IsOpen())
        writer.Stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return writer.Commit(error);
}

} // namespace zav
