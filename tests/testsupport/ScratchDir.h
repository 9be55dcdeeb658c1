#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace zav::test {

inline void RemoveAll(const std::filesystem::path& dir) {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}

// Removed when their test ends, passed or failed, by ScratchDirCleanup.
inline std::vector<std::filesystem::path> scratchDirs;

// A fresh folder named after the running test and this process: programs run side by side.
inline std::filesystem::path ScratchDir() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const auto dir = std::filesystem::temp_directory_path() /
                     ("zav-" + std::string(info->test_suite_name()) + "." + info->name() + "-" +
                      std::to_string(getpid()));
    RemoveAll(dir);
    std::filesystem::create_directories(dir);
    scratchDirs.push_back(dir);
    return dir;
}

inline std::string ReadFile(const std::filesystem::path& path) { // "" when it cannot be read
    std::stringstream ss;
    ss << std::ifstream(path, std::ios::binary).rdbuf();
    return ss.str();
}

struct TempDir {
    std::filesystem::path path = ScratchDir();
    TempDir() = default;
    TempDir(const TempDir&) = delete;
    ~TempDir() { RemoveAll(path); }
};

struct ScratchDirCleanup : ::testing::EmptyTestEventListener {
    void OnTestEnd(const ::testing::TestInfo&) override {
        for (const auto& dir : scratchDirs)
            RemoveAll(dir);
        scratchDirs.clear();
    }
};

} // namespace zav::test
