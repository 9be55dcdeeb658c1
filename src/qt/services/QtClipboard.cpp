#include "qt/services/QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace zav {

void QtClipboard::SetText(const std::string& text) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return;
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(QString::fromStdString(text));
}

} // namespace zav
