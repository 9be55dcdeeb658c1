#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// The real captures (GPS receivers, WAVE files from other writers) live in ../shared/data
// beside the source tree. A clone elsewhere may not have them: the tests that read them then
// skip and say which folder they need. In CI (CI set) the folder must be there.
#define ZAV_NEED_SHARED_DATA()                                                                     \
    do {                                                                                           \
        std::error_code zavIgnored;                                                                \
        if (!std::filesystem::is_directory(ZAV_SHARED_DATA_DIR, zavIgnored)) {                     \
            const std::string zavWhy = std::string("needs the real captures in ") +                \
                                       ZAV_SHARED_DATA_DIR + " (the shared data folder)";          \
            if (std::getenv("CI"))                                                                 \
                FAIL() << zavWhy;                                                                  \
            GTEST_SKIP() << zavWhy;                                                                \
        }                                                                                          \
    } while (0)
