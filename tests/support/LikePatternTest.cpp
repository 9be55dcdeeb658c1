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
        if (c == '*' || c == '?') {
            re += c == '*' ? "[\\s\\S]*" : "[\\s\\S]";
        } else if (c == '#') {
            re += "[0-9]";
        } else if (c == '[') {
            const std::size_t close = pattern.find(']', i);
            const std::string list = pattern.substr(i + 1, close - i - 1);
            re += list[0] == '!' ? "[^" + list.substr(1) + "]" : "[" + list + "]";
            i = close;
        } else {
            re += std::isalnum(static_cast<unsigned char>(c)) ? std::string(1, c)
                                                              : std::string("\\") + c;
        }
    }
    return re;
}

} // namespace

TEST(Like, AgreesWithARegularExpressionOnRandomPatterns) {
    std::mt19937 rng(7);
    const char* pieces[] = {"a", "b", "1", "7", "9", ".", "*", "?", "#", "[ab]", "[!1]", "[0-5]"};
    const char letters[] = "ab17.x9";
    for (int round = 0; round < 4000; ++round) {
        std::string pattern, text;
        for (int i = static_cast<int>(rng() % 6); i > 0; --i)
            pattern += pieces[rng() % std::size(pieces)];
        for (int i = static_cast<int>(rng() % 8); i > 0; --i)
            text += letters[rng() % (sizeof letters - 1)];
        ASSERT_EQ(Like(text, pattern), std::regex_match(text, std::regex(asRegex(pattern))))
            << "text " << text << " pattern " << pattern;
    }
}

TEST(Like, WhatTheRegularExpressionCannotSay) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"2.1.39", "*#.*#.*#", true},
        {"2.1.37b", "*#.*#.*#", false},
        {"*", "[*]", true}, // a star inside a list is only itself
        {"x", "[*]", false},
        {"[a", "[a", false}, // an open bracket matches nothing
        {"", "***", true},
        {"a", "", false}};
    for (const auto& [text, pattern, match] : cases)
        EXPECT_EQ(Like(text, pattern), match) << text << " " << pattern;
}
