#pragma once

#include <string>

namespace zav {

// Port that says where the platform's system-information tool lies: its full path, or
// empty when the platform names none.
class SystemInfo {
public:
    virtual ~SystemInfo() = default;
    virtual std::string ToolPath() = 0;
};

} // namespace zav
