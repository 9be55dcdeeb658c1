#include "qt/widgets/BusyIndicator.h"

#include "qt/services/QtHttpClient.h"

#include <QPointer>
#include <QProgressDialog>
#include <QTimer>

#include <memory>
#include <vector>

namespace zav {

void ShowBusyWhileWaiting(QtHttpClient& client, QWidget* parent, const QString& text) {
    // One window per wait, taken down by the end of that same wait: a wait that starts inside
    // another (an event delivered during the first) can never leave a window behind.
    auto shown = std::make_shared<std::vector<QPointer<QProgressDialog>>>();
    QPointer<QWidget> owner(parent);
    client.waitStarted = [shown, owner, text, &client] {
        auto* dialog = new QProgressDialog(text, QObject::tr("Cancel"), 0, 0, owner);
        dialog->setWindowModality(Qt::ApplicationModal);
        dialog->setAutoClose(false);
        // Shown only when the wait lasts: a quick reply does not flash a window.
        QTimer::singleShot(400, dialog, [dialog] { dialog->show(); });
        QObject::connect(dialog, &QProgressDialog::canceled, [&client] { client.Abort(); });
        shown->push_back(dialog);
    };
    client.waitFinished = [shown] {
        if (shown->empty())
            return;
        delete shown->back().data();
        shown->pop_back();
    };
}

} // namespace zav
