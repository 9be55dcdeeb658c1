#pragma once

#include <string>

namespace zav {

// Port for the system clipboard: replaces its content with plain text.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void SetText(const std::string& text) = 0;
};

} // namespace zav
