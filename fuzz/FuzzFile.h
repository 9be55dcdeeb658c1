#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

// The readers under test take a path: each input goes to one file of this process's own in
// memory-backed /dev/shm (or /tmp), rewritten for every input.
inline std::string FuzzFile(const std::uint8_t* data, std::size_t size, const char* suffix) {
    static const std::string path = [suffix] {
        const char* dir = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        return std::string(dir) + "/zav-fuzz-" + std::to_string(getpid()) + suffix;
    }();
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f) {
        std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
    return path;
}
