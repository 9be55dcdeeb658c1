#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace zav::test {

// The folders ScratchDir() made for the running test; the test programs' main removes them
// when the test ends, whether it passed or failed (RemoveScratchDirs).
inline std::vector<std::filesystem::path>& ScratchDirsOfThisTest() {
    static std::vector<std::filesystem::path> dirs;
    return dirs;
}

inline void RemoveScratchDirs() {
    std::error_code ignored;
    for (const auto& dir : ScratchDirsOfThisTest())
        std::filesystem::remove_all(dir, ignored);
    ScratchDirsOfThisTest().clear();
}

// A fresh, empty folder for the running test, named after it and this process, so that test
// programs running side by side (ctest -j) never share one.
inline std::filesystem::path ScratchDir() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const auto dir = std::filesystem::temp_directory_path() /
                     ("zav-" + std::string(info->test_suite_name()) + "." + info->name() + "-" +
                      std::to_string(getpid()));
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    ScratchDirsOfThisTest().push_back(dir);
    return dir;
}

// The whole content of a file, as bytes ("" when it cannot be read).
inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// ScratchDir() that is removed as soon as it goes out of scope.
struct TempDir {
    std::filesystem::path path = ScratchDir();
    TempDir() = default;
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

// Installed by the test programs' main: scratch folders go when their test ends.
struct ScratchDirCleanup : ::testing::EmptyTestEventListener {
    void OnTestEnd(const ::testing::TestInfo&) override { RemoveScratchDirs(); }
};

} // namespace zav::test
