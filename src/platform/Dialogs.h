#pragma once

#include <optional>
#include <string>

namespace zav {

enum class MessageIcon { None, Critical, Exclamation, Information, Question };
enum class MessageButtons { Ok, OkCancel };
enum class MessageResult { Ok, Cancel };

// A file chooser's set-up. `filter` keeps the program's "Name|pattern|Name|pattern" form;
// `filterIndex` is 1-based, counting the filter entries from the first.
struct FileDialogRequest {
    std::string title;
    std::string initialDir;
    std::string fileName;
    std::string filter;
    int filterIndex = 1;
};

// Port for everything the program asks or tells the operator in a modal window.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual MessageResult ShowMessage(const std::string& text, const std::string& title,
                                      MessageIcon icon,
                                      MessageButtons buttons = MessageButtons::Ok) = 0;
    // The chosen path, or nothing when the operator cancels.
    virtual std::optional<std::string> OpenFileName(const FileDialogRequest& request) = 0;
    virtual std::optional<std::string> SaveFileName(const FileDialogRequest& request) = 0;
};

} // namespace zav
