#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

// Without the real captures in ../shared/data a test skips saying why, or fails in CI.
#define ZAV_NEED_SHARED_DATA()                                                                     \
    if (std::error_code zavIgnored;                                                                \
        !std::filesystem::is_directory(ZAV_SHARED_DATA_DIR, zavIgnored)) {                         \
        if (std::getenv("CI"))                                                                     \
            FAIL() << "needs the real captures in " ZAV_SHARED_DATA_DIR;                           \
        GTEST_SKIP() << "needs the real captures in " ZAV_SHARED_DATA_DIR;                         \
    }
