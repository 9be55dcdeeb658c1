#include "cli/CliDialogs.h"

namespace zav {

MessageResult CliDialogs::ShowMessage(const std::string& text, const std::string& title,
                                      MessageIcon, MessageButtons buttons) {
    if (buttons == MessageButtons::OkCancel && !showPrompts)
        return MessageResult::Ok;
    // Boxes break lines with a lone CR; a terminal wants LF.
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
            if (i + 1 < text.size())
                line += '\n';
        } else {
            line += text[i];
        }
    }
    m_messages.push_back(line);
    // Titles such as "Value error:" carry their own colon.
    const std::string separator = !title.empty() && title.back() == ':' ? " " : ": ";
    m_err << (title.empty() ? line : title + separator + line) << '\n';
    return MessageResult::Ok;
}

std::optional<std::string> CliDialogs::OpenFileName(const FileDialogRequest&) {
    return std::nullopt;
}

std::optional<std::string> CliDialogs::SaveFileName(const FileDialogRequest&) {
    return std::nullopt;
}

} // namespace zav
