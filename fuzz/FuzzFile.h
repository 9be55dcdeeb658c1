#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

// The readers under test take a path: each input goes to one file of this process's own in
// memory-backed /dev/shm (or /tmp), rewritten for every input. An input that starts with
// kSpecialPrefix names instead something that is no readable regular file, chosen by its
// third byte: a folder, a pipe nobody writes to, an endless device, or a regular file whose
// reading fails (/proc/self/mem). A reader must refuse each at once, never hang or throw.
inline constexpr unsigned char kSpecialPrefix[2] = {0xFE, 0xFD};

inline std::string FuzzFile(const std::uint8_t* data, std::size_t size, const char* suffix) {
    static const std::string dir = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    static const std::string path = dir + "/zav-fuzz-" + std::to_string(getpid()) + suffix;
    if (size >= 3 && data[0] == kSpecialPrefix[0] && data[1] == kSpecialPrefix[1]) {
        static const std::string fifo = [] {
            const std::string p = dir + "/zav-fuzz-" + std::to_string(getpid()) + ".fifo";
            unlink(p.c_str());
            mkfifo(p.c_str(), 0600);
            static const std::string removeAtExit = p;
            std::atexit([] { unlink(removeAtExit.c_str()); });
            return p;
        }();
        switch (data[2] % 4) {
        case 0:
            return dir;
        case 1:
            return fifo;
        case 2:
            return "/dev/zero";
        default:
            return "/proc/self/mem";
        }
    }
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f) {
        std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
    return path;
}
