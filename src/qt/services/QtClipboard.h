#pragma once

#include "platform/Clipboard.h"

namespace zav {

// The system clipboard as plain text. Does nothing in a program without a GUI application
// object (there is no clipboard to reach).
class QtClipboard : public Clipboard {
public:
    void SetText(const std::string& text) override;
};

} // namespace zav
