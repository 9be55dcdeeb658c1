#pragma once

#include "platform/Dialogs.h"

#include <deque>
#include <string>
#include <vector>

namespace zav::test {

// Records every message and file chooser the code under test shows, and answers them from
// queues the test fills (OK and cancel by default).
class FakeDialogs : public Dialogs {
public:
    struct Shown {
        std::string text;
        std::string title;
        MessageIcon icon;
        MessageButtons buttons;
    };

    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFileName(const FileDialogRequest& request) override;

    std::vector<Shown> messages;
    std::vector<FileDialogRequest> fileRequests;
    std::deque<MessageResult> answers;            // next answers to OK/Cancel boxes
    std::deque<std::optional<std::string>> files; // next chosen files; empty = cancel

    std::vector<std::string> texts() const;
};

} // namespace zav::test
