#include "qt/widgets/BusyIndicator.h"

#include "qt/services/QtHttpClient.h"

#include <QPointer>
#include <QProgressDialog>
#include <QTimer>

#include <memory>

namespace zav {

void ShowBusyWhileWaiting(QtHttpClient& client, QWidget* parent, const QString& text) {
    auto busy = std::make_shared<QPointer<QProgressDialog>>();
    QPointer<QWidget> owner(parent);
    client.waitStarted = [busy, owner, text, &client] {
        auto* dialog = new QProgressDialog(text, QObject::tr("Cancel"), 0, 0, owner);
        dialog->setWindowModality(Qt::ApplicationModal);
        dialog->setAutoClose(false);
        // Shown only when the wait lasts: a quick reply does not flash a window.
        QTimer::singleShot(400, dialog, [dialog] { dialog->show(); });
        QObject::connect(dialog, &QProgressDialog::canceled, [&client] { client.Abort(); });
        *busy = dialog;
    };
    client.waitFinished = [busy] {
        if (*busy)
            delete busy->data();
    };
}

} // namespace zav
