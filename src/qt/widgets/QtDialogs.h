#pragma once

#include "platform/Dialogs.h"

#include <QString>

#include <map>
#include <string>

class QWidget;

namespace zav {

// Message boxes and file choosers as Qt dialogs, modal to `parent`.
class QtDialogs : public Dialogs {
public:
    explicit QtDialogs(QWidget* parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }

    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons = MessageButtons::Ok) override;
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFileName(const FileDialogRequest& request) override;

private:
    QString startFolder(const FileDialogRequest& request) const;
    void remember(const FileDialogRequest& request, const QString& chosen);

    QWidget* m_parent;
    // The folder each kind of file was last chosen in during this run.
    std::map<std::string, QString> m_lastFolder;
};

// "Name|pattern|Name|pattern" as Qt's "Name (pattern);;Name (pattern)".
QString QtFilterFromList(const std::string& filter);

} // namespace zav
