#include "qt/widgets/QtDialogs.h"

#include "platform/Paths.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QStringList>

namespace zav {
namespace {

QMessageBox::Icon qtIcon(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::Critical:
        return QMessageBox::Critical;
    case MessageIcon::Exclamation:
        return QMessageBox::Warning;
    case MessageIcon::Information:
        return QMessageBox::Information;
    case MessageIcon::Question:
        return QMessageBox::Question;
    case MessageIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QString selectedFilter(const QString& filters, int index) {
    const QStringList parts = filters.split(QStringLiteral(";;"));
    return index >= 1 && index <= parts.size() ? parts[index - 1] : QString();
}

} // namespace

QString QtFilterFromList(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split('|');
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString name = parts[i];
        const QString pattern = QString(parts[i + 1]).replace(';', ' ');
        // "ZAV files (*.zav)" already names its pattern; Qt reads the last parenthesis.
        if (!name.contains('('))
            name += " (" + pattern + ")";
        else
            name = name.left(name.indexOf('(')).trimmed() + " (" + pattern + ")";
        entries << name;
    }
    return entries.join(QStringLiteral(";;"));
}

MessageResult QtDialogs::ShowMessage(const std::string& text, const std::string& title,
                                     MessageIcon icon, MessageButtons buttons) {
    QMessageBox box(qtIcon(icon), QString::fromStdString(title),
                    QString::fromStdString(text).replace("\r\n", "\n").replace('\r', '\n'),
                    buttons == MessageButtons::OkCancel ? QMessageBox::Ok | QMessageBox::Cancel
                                                        : QMessageBox::Ok,
                    m_parent);
    return box.exec() == QMessageBox::Cancel ? MessageResult::Cancel : MessageResult::Ok;
}

QString QtDialogs::startFolder(const FileDialogRequest& request) const {
    const auto last = m_lastFolder.find(FileKind(request.filter));
    if (last != m_lastFolder.end())
        return last->second;
    return QString::fromStdString(request.initialDir);
}

void QtDialogs::remember(const FileDialogRequest& request, const QString& chosen) {
    m_lastFolder[FileKind(request.filter)] = QFileInfo(chosen).absolutePath();
}

std::optional<std::string> QtDialogs::OpenFileName(const FileDialogRequest& request) {
    const QString filters = QtFilterFromList(request.filter);
    QString chosenFilter = selectedFilter(filters, request.filterIndex);
    const QString start = startFolder(request) + '/' + QString::fromStdString(request.fileName);
    const QString path = QFileDialog::getOpenFileName(
        m_parent, QString::fromStdString(request.title), start, filters, &chosenFilter);
    if (path.isEmpty())
        return std::nullopt;
    remember(request, path);
    return path.toStdString();
}

std::optional<std::string> QtDialogs::SaveFileName(const FileDialogRequest& request) {
    const QString filters = QtFilterFromList(request.filter);
    QString start = QString::fromStdString(request.fileName);
    if (!start.contains('/'))
        start = startFolder(request) + '/' + start;
    QFileDialog dialog(m_parent, QString::fromStdString(request.title), start, filters);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.selectNameFilter(selectedFilter(filters, request.filterIndex));
    // A name typed without a suffix gets the type's, before the overwrite question is asked.
    dialog.setDefaultSuffix(
        QString::fromStdString(FilterSuffix(request.filter, request.filterIndex)));
    QObject::connect(
        &dialog, &QFileDialog::filterSelected, &dialog,
        [&dialog, &request, filters](const QString& chosen) {
            const int index =
                static_cast<int>(filters.split(QStringLiteral(";;")).indexOf(chosen) + 1);
            dialog.setDefaultSuffix(QString::fromStdString(FilterSuffix(request.filter, index)));
        });
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    const QString path = dialog.selectedFiles().front();
    remember(request, path);
    return path.toStdString();
}

} // namespace zav
