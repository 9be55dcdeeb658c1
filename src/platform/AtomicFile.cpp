#include "platform/AtomicFile.h"

#include <random>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zav {
namespace {

namespace fs = std::filesystem;

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

// Puts the new content on the disk before the rename makes it the file, so that a power cut
// right after a save finds either the old file or the new one, never an empty one.
bool syncToDisk(const fs::path& path) {
#if defined(__unix__) || defined(__APPLE__)
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    return ::close(fd) == 0 && synced;
#else
    (void)path;
    return true;
#endif
}

bool fail(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
    return false;
}

} // namespace

AtomicFileWriter::AtomicFileWriter(const std::string& path) : m_target(toPath(path)) {
    std::error_code ec;
    // Replace the file a link points to, not the link.
    if (fs::is_symlink(m_target, ec)) {
        fs::path resolved = fs::canonical(m_target, ec);
        if (!ec)
            m_target = resolved;
    }
    m_existed = fs::exists(m_target, ec);
    m_temporary = m_target;
    m_temporary += temporaryName();
    m_out.open(m_temporary, std::ios::binary | std::ios::trunc);
    if (!m_out.is_open())
        m_openError = "cannot create " + m_temporary.string();
}

AtomicFileWriter::~AtomicFileWriter() {
    if (m_done)
        return;
    std::error_code ec;
    if (m_out.is_open())
        m_out.close();
    fs::remove(m_temporary, ec);
}

bool AtomicFileWriter::Commit(std::string* error) {
    if (m_done)
        return fail(error, "already committed");
    if (!m_out.is_open())
        return fail(error, m_openError);
    m_done = true;
    std::error_code ec;
    m_out.close();
    if (!m_out || !syncToDisk(m_temporary)) {
        fs::remove(m_temporary, ec);
        return fail(error, "cannot write " + m_temporary.string());
    }
    if (m_existed) {
        const auto perms = fs::status(m_target, ec).permissions();
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

bool WriteFileAtomically(const std::string& path, std::string_view bytes, std::string* error) {
    AtomicFileWriter writer(path);
    if (writer.IsOpen())
        writer.Stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return writer.Commit(error);
}

} // namespace zav
