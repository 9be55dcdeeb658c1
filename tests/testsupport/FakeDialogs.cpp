#include "testsupport/FakeDialogs.h"

namespace zav::test {

MessageResult FakeDialogs::ShowMessage(const std::string& text, const std::string& title,
                                       MessageIcon icon, MessageButtons buttons) {
    messages.push_back({text, title, icon, buttons});
    if (answers.empty())
        return MessageResult::Ok;
    MessageResult r = answers.front();
    answers.pop_front();
    return r;
}

std::optional<std::string> FakeDialogs::OpenFileName(const FileDialogRequest& request) {
    fileRequests.push_back(request);
    if (files.empty())
        return std::nullopt;
    auto f = files.front();
    files.pop_front();
    return f;
}

std::optional<std::string> FakeDialogs::SaveFileName(const FileDialogRequest& request) {
    return OpenFileName(request);
}

std::vector<std::string> FakeDialogs::texts() const {
    std::vector<std::string> out;
    for (const Shown& m : messages)
        out.push_back(m.text);
    return out;
}

} // namespace zav::test
