#pragma once

#include "platform/Dialogs.h"

namespace zav {

// Swallows every message and chooses no file: for a look at a file whose problems the step
// that follows reports itself.
class SilentDialogs : public Dialogs {
public:
    MessageResult ShowMessage(const std::string&, const std::string&, MessageIcon,
                              MessageButtons) override {
        return MessageResult::Ok;
    }
    std::optional<std::string> OpenFileName(const FileDialogRequest&) override { return {}; }
    std::optional<std::string> SaveFileName(const FileDialogRequest&) override { return {}; }
};

} // namespace zav
