#include "support/LikePattern.h"

#include <optional>
#include <vector>

namespace zav {
namespace {

// One position of a pattern: "*", or a test of a single character.
struct Token {
    enum class Kind { Star, Any, Digit, Literal, List };
    explicit Token(Kind k, char c = 0) : kind(k), literal(c) {}
    Kind kind;
    char literal;
    std::string_view list; // between the brackets, "!" dropped
    bool negated = false;
};

bool inList(char c, std::string_view list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i + 2 < list.size() && list[i + 1] == '-') {
            if (c >= list[i] && c <= list[i + 2])
                return true;
            i += 2;
        } else if (list[i] == c) {
            return true;
        }
    }
    return false;
}

bool matches(const Token& t, char c) {
    switch (t.kind) {
    case Token::Kind::Any:
        return true;
    case Token::Kind::Digit:
        return c >= '0' && c <= '9';
    case Token::Kind::Literal:
        return c == t.literal;
    case Token::Kind::List:
        return inList(c, t.list) != t.negated;
    case Token::Kind::Star:
        break;
    }
    return false;
}

std::optional<std::vector<Token>> tokenise(std::string_view pattern) {
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '*') {
            tokens.emplace_back(Token::Kind::Star);
        } else if (c == '?') {
            tokens.emplace_back(Token::Kind::Any);
        } else if (c == '#') {
            tokens.emplace_back(Token::Kind::Digit);
        } else if (c == '[') {
            const std::size_t close = pattern.find(']', i + 1);
            if (close == std::string_view::npos)
                return std::nullopt;
            Token t(Token::Kind::List);
            std::string_view list = pattern.substr(i + 1, close - i - 1);
            if (!list.empty() && list[0] == '!') {
                t.negated = true;
                list.remove_prefix(1);
            }
            t.list = list;
            tokens.push_back(t);
            i = close;
        } else {
            tokens.emplace_back(Token::Kind::Literal, c);
        }
    }
    return tokens;
}

} // namespace

bool Like(std::string_view text, std::string_view pattern) {
    const auto tokens = tokenise(pattern);
    if (!tokens)
        return false;
    // Greedy walk that returns to the last "*" and lets it take one more character when a
    // later token fails: linear in practice, and exact because every other token takes one.
    std::size_t t = 0, p = 0;
    std::optional<std::size_t> star;
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < tokens->size() && (*tokens)[p].kind == Token::Kind::Star) {
            star = p++;
            starText = t;
        } else if (p < tokens->size() && matches((*tokens)[p], text[t])) {
            ++p;
            ++t;
        } else if (star) {
            p = *star + 1;
            t = ++starText;
        } else {
            return false;
        }
    }
    while (p < tokens->size() && (*tokens)[p].kind == Token::Kind::Star)
        ++p;
    return p == tokens->size();
}

} // namespace zav
