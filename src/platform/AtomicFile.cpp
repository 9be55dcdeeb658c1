#include "platform/AtomicFile.h"

#include <filesystem>
#include <fstream>
#include <random>

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

bool fail(std::string* error, std::string text) {
    if (error)
        *error = std::move(text);
    return false;
}

} // namespace

bool WriteFileAtomically(const std::string& path, std::string_view bytes, std::string* error) {
    std::error_code ec;
    fs::path target = toPath(path);
    // Replace the file a link points to, not the link.
    if (fs::is_symlink(target, ec)) {
        fs::path resolved = fs::canonical(target, ec);
        if (!ec)
            target = resolved;
    }
    const bool existed = fs::exists(target, ec);
    fs::path temporary = target;
    temporary += temporaryName();
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out)
            return fail(error, "cannot create " + temporary.string());
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            fs::remove(temporary, ec);
            return fail(error, "cannot write " + temporary.string());
        }
    }
    if (existed) {
        const auto perms = fs::status(target, ec).permissions();
        if (!ec)
            fs::permissions(temporary, perms, ec);
    }
    fs::rename(temporary, target, ec);
    if (ec) {
        const std::string message = ec.message();
        fs::remove(temporary, ec);
        return fail(error, "cannot replace " + target.string() + ": " + message);
    }
    return true;
}

} // namespace zav
