#include "platform/TempFolder.h"

#include "platform/Paths.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/stat.h>
#include <unistd.h>
#define ZAV_POSIX_FILES 1
#endif

namespace zav {
namespace {

namespace fs = std::filesystem;

#ifdef ZAV_POSIX_FILES
// True when `dir` is a real folder (not a link) of this user that nobody else may enter.
bool isPrivateFolder(const std::string& dir) {
    struct stat info {};
    return ::lstat(dir.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::getuid() &&
           (info.st_mode & 077) == 0;
}

// `dir` made (0700) or found private; false otherwise.
bool makePrivateFolder(const std::string& dir) {
    if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    return isPrivateFolder(dir);
}
#endif

bool isRecordingName(const std::string& name, long& pid) {
    if (name.size() != 13 || name[0] != '~')
        return false;
    const std::string ext = name.substr(9);
    if (ext != ".wav" && ext != ".tmp")
        return false;
    const std::string hex = name.substr(1, 8);
    if (hex.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos)
        return false;
    pid = std::strtol(hex.c_str(), nullptr, 16);
    return true;
}

// Paths to remove at a termination signal, as plain bytes for the handler.
constexpr std::size_t kMaxTerminationPaths = 4;
constexpr std::size_t kMaxPathBytes = 4096;
char g_terminationPaths[kMaxTerminationPaths][kMaxPathBytes];
volatile std::sig_atomic_t g_terminationCount = 0;

extern "C" void removeAndEnd(int signal) {
#ifdef ZAV_POSIX_FILES
    for (std::sig_atomic_t i = 0; i < g_terminationCount; ++i)
        ::unlink(g_terminationPaths[i]);
#endif
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

std::string PrivateTempFolder(const std::string& runtimeDir, const std::string& sharedTempDir,
                              std::string* error) {
#ifdef ZAV_POSIX_FILES
    if (!runtimeDir.empty() && isPrivateFolder(runtimeDir)) {
        const std::string dir = WithTrailingSeparator(runtimeDir) + "zav";
        if (makePrivateFolder(dir))
            return WithTrailingSeparator(dir);
    }
    const std::string shared = WithTrailingSeparator(sharedTempDir);
    const std::string own = shared + "zav-" + std::to_string(::getuid());
    if (makePrivateFolder(own))
        return WithTrailingSeparator(own);
    // Someone else holds the usual name: an unguessable one of this run's own.
    std::string pattern = shared + "zav-XXXXXX";
    if (::mkdtemp(pattern.data()) && isPrivateFolder(pattern))
        return WithTrailingSeparator(pattern);
    if (error)
        *error = "no private folder for the recordings in " + sharedTempDir + ": " +
                 std::generic_category().message(errno);
    return "";
#else
    (void)runtimeDir;
    (void)error;
    return WithTrailingSeparator(sharedTempDir);
#endif
}

std::string PrivateTempFolder(std::string* error) {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ec;
    fs::path shared = fs::temp_directory_path(ec);
    if (ec)
        shared = "/tmp";
    return PrivateTempFolder(runtime ? runtime : "", shared.string(), error);
}

void RemoveStaleRecordings(const std::string& folder) {
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        long pid = 0;
        if (!isRecordingName(it->path().filename().string(), pid))
            continue;
#ifdef ZAV_POSIX_FILES
        if (pid == ::getpid())
            continue; // this run's own
        const bool alive = pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
        if (alive)
            continue; // another run's, in use
#endif
        std::error_code ignored;
        fs::remove(it->path(), ignored);
    }
}

void RemoveOnTermination(const std::vector<std::string>& paths) {
    g_terminationCount = 0;
    std::size_t n = 0;
    for (const std::string& p : paths) {
        if (n == kMaxTerminationPaths || p.size() >= kMaxPathBytes)
            continue;
        std::memcpy(g_terminationPaths[n], p.c_str(), p.size() + 1);
        ++n;
    }
    g_terminationCount = static_cast<std::sig_atomic_t>(n);
    for (int signal : {SIGTERM, SIGINT
#ifdef SIGHUP
                       ,
                       SIGHUP
#endif
         })
        std::signal(signal, removeAndEnd);
}

} // namespace zav
