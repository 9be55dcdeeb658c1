#pragma once

#include <stdexcept>
#include <string>

namespace zav {

// A run-time error with the number and text a host shows for it: the interpreter raises these
// out of parseSentence and leaves the catching to its host.
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(int number, const std::string& text)
        : std::runtime_error(text), m_number(number) {}

    int Number() const { return m_number; }

    static RuntimeError Overflow() { return {6, "Overflow"}; }
    static RuntimeError SubscriptOutOfRange() { return {9, "Subscript out of range"}; }
    static RuntimeError TypeMismatch() { return {13, "Type mismatch"}; }

private:
    int m_number;
};

} // namespace zav
