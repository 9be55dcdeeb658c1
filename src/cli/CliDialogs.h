#pragma once

#include "cli/CliIo.h"
#include "platform/Dialogs.h"

#include <string>
#include <vector>

namespace zav {

// The headless stand-in for message boxes: every message goes to standard error as
// "Title: text" (just the text without a title) and is answered OK; no file is ever chosen.
class CliDialogs : public Dialogs {
public:
    explicit CliDialogs(std::ostream& err) : m_err(err) {}

    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFileName(const FileDialogRequest& request) override;

    // Every message shown so far, in the order shown.
    const std::vector<std::string>& messages() const { return m_messages; }

    // False: OK / Cancel prompts are answered OK without being shown (a step's "hit OK"
    // prompts mean nothing without a person at the receiver).
    bool showPrompts = true;

private:
    std::ostream& m_err;
    std::vector<std::string> m_messages;
};

} // namespace zav
