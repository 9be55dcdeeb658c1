#include "support/LikePattern.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <regex>
#include <tuple>

using namespace zav;

namespace {

// The same pattern as a regular expression: an independent matcher to compare against.
std::string asRegex(const std::string& pattern) {
    std::string re;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '*') {
            re += "[\\s\\S]*";
        } else if (c == '?') {
            re += "[\\s\\S]";
        } else if (c == '#') {
            re += "[0-9]";
        } else if (c == '[') {
            const std::size_t close = pattern.find(']', i);
            std::string list = pattern.substr(i + 1, close - i - 1);
            re += "[";
            if (!list.empty() && list[0] == '!') {
                re += "^";
                list.erase(0, 1);
            }
            re += list + "]";
            i = close;
        } else if (std::isalnum(static_cast<unsigned char>(c))) {
            re += c;
        } else {
            re += std::string("\\") + c;
        }
    }
    return re;
}

} // namespace

TEST(Like, VersionAndAddressPatternsListsAndBadBrackets) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"2.1.37", "*#.*#.*#", true},
        {"10.0.0", "*#.*#.*#", true},
        {"2.2", "*#.*#.*#", false},
        {"2.1.37b", "*#.*#.*#", false},
        {"http://a/b/zav/", "http://*/zav/", true},
        {"https://www.zav-noise.org/zav/", "http://*/zav/", false},
        {"http://www.zav-noise.org/ZAV/", "http://*/zav/", false}, // case counts
        {"M", "[!a-z]", true},
        {"*", "[*]", true}, // a star inside a list is only itself
        {"x", "[*]", false},
        {"[a", "[a", false},
        {"", "***", true},
        {"a", "", false}};
    for (const auto& [text, pattern, match] : cases)
        EXPECT_EQ(Like(text, pattern), match) << text << " " << pattern;
}

TEST(Like, AgreesWithARegularExpressionOnRandomPatterns) {
    std::mt19937 rng(7);
    const char* pieces[] = {"a", "b", "1", "7", ".", "*", "?", "#", "[ab]", "[!1]", "[0-5]"};
    const char letters[] = "ab17.x9";
    for (int round = 0; round < 4000; ++round) {
        std::string pattern, text;
        const int n = static_cast<int>(rng() % 6);
        for (int i = 0; i < n; ++i)
            pattern += pieces[rng() % std::size(pieces)];
        const int m = static_cast<int>(rng() % 8);
        for (int i = 0; i < m; ++i)
            text += letters[rng() % (sizeof letters - 1)];
        const bool expected = std::regex_match(text, std::regex(asRegex(pattern)));
        ASSERT_EQ(Like(text, pattern), expected) << "text " << text << " pattern " << pattern;
    }
}
