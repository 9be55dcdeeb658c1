#include "qt/widgets/UpdateDialog.h"

#include "support/UpdateModel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zav {

UpdateDialog::UpdateDialog(UpdateModel& model, QWidget* parent) : QDialog(parent), m_model(model) {
    setWindowTitle(QString::fromLatin1(UpdateModel::kCaption));
    setModal(true);
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("Message"));
    m_message->setWordWrap(true);
    m_message->setMinimumWidth(320);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_kwupdater = new QPushButton(tr("Launch kwUpdater"), this);
    m_kwupdater->setObjectName(QStringLiteral("updaterButton"));
    m_support = new QPushButton(tr("Open download page"), this);
    m_support->setObjectName(QStringLiteral("supportButton"));
    m_exit = new QPushButton(tr("Exit"), this);
    m_exit->setObjectName(QStringLiteral("exitButton"));
    m_exit->setDefault(true);
    connect(m_kwupdater, &QPushButton::clicked, this, [this] { after(&UpdateModel::runUpdater); });
    connect(m_support, &QPushButton::clicked, this,
            [this] { after(&UpdateModel::openSupportPage); });
    connect(m_exit, &QPushButton::clicked, this, [this] { after(&UpdateModel::exitPressed); });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_kwupdater);
    buttons->addWidget(m_support);
    buttons->addStretch();
    buttons->addWidget(m_exit);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_message);
    layout->addLayout(buttons);

    m_model.open();
    render();
}

void UpdateDialog::after(void (UpdateModel::*handler)()) {
    (m_model.*handler)();
    render();
    if (m_model.CloseRequested)
        accept();
}

void UpdateDialog::render() {
    m_message->setText(QString::fromStdString(m_model.Message));
    m_kwupdater->setEnabled(m_model.updaterEnabled);
    m_support->setVisible(m_model.supportVisible);
}

} // namespace zav
