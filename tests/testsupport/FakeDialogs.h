#pragma once

#include "platform/Dialogs.h"

#include <deque>
#include <string>
#include <vector>

namespace zav::test {

// Records every message and file chooser shown; answers from queues (then OK and cancel).
struct FakeDialogs : Dialogs {
    struct Shown {
        std::string text, title;
        MessageIcon icon;
        MessageButtons buttons;
    };
    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons = MessageButtons::Ok) override {
        messages.push_back({text, title, icon, buttons});
        return next(answers, MessageResult::Ok);
    }
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override {
        fileRequests.push_back(request);
        return next(files, std::optional<std::string>());
    }
    std::optional<std::string> SaveFileName(const FileDialogRequest& request) override {
        return OpenFileName(request);
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> out;
        for (const Shown& m : messages)
            out.push_back(m.text);
        return out;
    }
    template <class T> static T next(std::deque<T>& queue, T otherwise) {
        if (!queue.empty())
            otherwise = queue.front(), queue.pop_front();
        return otherwise;
    }
    std::vector<Shown> messages;
    std::vector<FileDialogRequest> fileRequests;
    std::deque<MessageResult> answers;
    std::deque<std::optional<std::string>> files;
};

} // namespace zav::test
