#include "platform/FileAccess.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#define ZAV_POSIX_FILES 1
#endif

namespace zav {
namespace {

void setError(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
}

std::string errnoText(int code) {
    return std::generic_category().message(code);
}

#ifdef ZAV_POSIX_FILES
// Opens without blocking: a FIFO with no writer would otherwise hold the open for ever.
// The descriptor is then checked before anything is read. -1 and `error` when refused.
int openRegular(const std::string& path, struct stat& info, std::string* error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        setError(error, errno == EISDIR ? "it is a folder" : errnoText(errno));
        return -1;
    }
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        const bool folder = S_ISDIR(info.st_mode);
        ::close(fd);
        setError(error, folder ? "it is a folder" : "it is not a regular file");
        return -1;
    }
    // Regular files never block; reads go on in the ordinary blocking mode.
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}
#endif

} // namespace

std::string LastErrorText() {
    return errnoText(errno);
}

bool ReadRegularFile(const std::string& path, std::size_t maxBytes, std::string& bytes,
                     std::string* error) {
    bytes.clear();
    const std::string tooLarge = "it is larger than " + std::to_string(maxBytes) + " bytes";
#ifdef ZAV_POSIX_FILES
    struct stat info {};
    const int fd = openRegular(path, info, error);
    if (fd < 0)
        return false;
    if (info.st_size > 0 && static_cast<unsigned long long>(info.st_size) > maxBytes) {
        ::close(fd);
        setError(error, tooLarge);
        return false;
    }
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int code = errno;
            ::close(fd);
            bytes.clear();
            setError(error, errnoText(code));
            return false;
        }
        if (got == 0)
            break;
        if (bytes.size() + static_cast<std::size_t>(got) > maxBytes) {
            ::close(fd);
            bytes.clear();
            setError(error, tooLarge);
            return false;
        }
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return true;
#else
    std::FILE* file = OpenRegularFile(path, error);
    if (!file)
        return false;
    char buffer[65536];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        if (bytes.size() + got > maxBytes) {
            std::fclose(file);
            bytes.clear();
            setError(error, tooLarge);
            return false;
        }
        bytes.append(buffer, got);
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) {
        bytes.clear();
        setError(error, "it cannot be read");
    }
    return !failed;
#endif
}

std::FILE* OpenRegularFile(const std::string& path, std::string* error) {
#ifdef ZAV_POSIX_FILES
    struct stat info {};
    const int fd = openRegular(path, info, error);
    if (fd < 0)
        return nullptr;
    std::FILE* file = ::fdopen(fd, "rb");
    if (!file) {
        setError(error, errnoText(errno));
        ::close(fd);
    }
    return file;
#else
    std::error_code ec;
    const std::filesystem::path p(std::u8string(path.begin(), path.end()));
    if (std::filesystem::is_directory(p, ec)) {
        setError(error, "it is a folder");
        return nullptr;
    }
    if (std::filesystem::exists(p, ec) && !std::filesystem::is_regular_file(p, ec)) {
        setError(error, "it is not a regular file");
        return nullptr;
    }
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        setError(error, errnoText(errno));
    return file;
#endif
}

std::FILE* CreateExclusiveFile(const std::string& path, std::string* error) {
#ifdef ZAV_POSIX_FILES
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        setError(error, errnoText(errno));
        return nullptr;
    }
    std::FILE* file = ::fdopen(fd, "w+b");
    if (!file) {
        setError(error, errnoText(errno));
        ::close(fd);
    }
    return file;
#else
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (!file)
        setError(error, errnoText(errno));
    return file;
#endif
}

bool RestrictToOwner(const std::string& path) {
    std::error_code ec;
    std::filesystem::permissions(std::filesystem::path(std::u8string(path.begin(), path.end())),
                                 std::filesystem::perms::owner_read |
                                     std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::replace, ec);
    return !ec;
}

} // namespace zav
