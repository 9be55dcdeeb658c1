#pragma once

#include <string>

namespace zav {

// Port for opening a document, a web address or a program with what the desktop associates
// with it. The result keeps the convention the messages are built on: above 32 success,
// 2 file not found, 31 no association, 32 and below 31 failures.
class Shell {
public:
    virtual ~Shell() = default;
    virtual int Open(const std::string& target) = 0;
    // Starts a program with arguments; true when it started.
    virtual bool Run(const std::string& program, const std::string& arguments) = 0;
};

} // namespace zav
