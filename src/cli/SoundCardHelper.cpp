#include "cli/SoundCardHelper.h"

#include "cli/Commands.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstring>
#include <filesystem>
#ifdef _WIN32
#include <process.h>
#define execv _execv
#else
#include <unistd.h>
#endif

namespace zav {

std::string SoundCardHelperPath(const std::string& programDir) {
    namespace fs = std::filesystem;
    std::string name = kSoundCardHelperName;
#ifdef _WIN32
    name += ".exe";
#endif
    std::error_code ignored;
    for (const fs::path& candidate :
         {fs::path(programDir) / name, fs::path(programDir) / ".." / "libexec" / "zav" / name}) {
        if (fs::is_regular_file(candidate, ignored))
            return candidate.lexically_normal().string();
    }
    return {};
}

int RunInSoundCardHelper(const std::string& command, const std::vector<std::string>& args,
                         CliIo& io) {
    const std::string programDir = QCoreApplication::applicationDirPath().toStdString();
    const std::string helper = SoundCardHelperPath(programDir);
    if (helper.empty()) {
        io.err << "zavcli " << command << ": the sound-card helper " << kSoundCardHelperName
               << " is not installed (looked beside zavcli and in ../libexec/zav)\n";
        return kExitFailed;
    }
    std::vector<std::string> words{helper, command};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    io.out.flush();
    io.err.flush();
    execv(helper.c_str(), argv.data());
    io.err << "zavcli " << command << ": cannot start " << helper << ": " << std::strerror(errno)
           << "\n";
    return kExitFailed;
}

} // namespace zav
