#pragma once

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

#include <functional>

namespace zav {

// The OK / Cancel pair at the foot of a dialog, right-aligned, named as the dialogs' models
// name them ("OKButton", "CancelButton"). Enter presses OK; Cancel rejects the dialog.
struct OkCancelButtons {
    QPushButton* ok;
    QPushButton* cancel;
    QHBoxLayout* row;

    OkCancelButtons(QDialog* dialog, const std::function<void()>& onOk)
        : ok(new QPushButton(QStringLiteral("OK"), dialog)),
          cancel(new QPushButton(QStringLiteral("Cancel"), dialog)), row(new QHBoxLayout) {
        ok->setObjectName(QStringLiteral("OKButton"));
        ok->setDefault(true);
        QObject::connect(ok, &QPushButton::clicked, dialog, onOk);
        cancel->setObjectName(QStringLiteral("CancelButton"));
        cancel->setAutoDefault(false);
        QObject::connect(cancel, &QPushButton::clicked, dialog, [dialog] { dialog->reject(); });
        row->addStretch();
        row->addWidget(ok);
        row->addWidget(cancel);
    }
};

} // namespace zav
