#include "qt/widgets/TransferDialog.h"

#include "report/TransferModel.h"

#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zav {
namespace {

QLineEdit* field(const char* name, std::string& target, QWidget* parent) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromLatin1(name));
    QObject::connect(edit, &QLineEdit::textEdited,
                     [&target](const QString& text) { target = text.toStdString(); });
    return edit;
}

void showText(QLineEdit* edit, const std::string& text) {
    const QString value = QString::fromStdString(text);
    if (edit->text() != value)
        edit->setText(value);
}

} // namespace

TransferDialog::TransferDialog(TransferModel& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
    setWindowTitle(QString::fromLatin1(TransferModel::kCaption));
    setModal(true);

    m_username = field("username", m_model.username, this);
    m_password = field("password", m_model.password, this);
    m_password->setEchoMode(QLineEdit::Password);
    m_email = field("Email", m_model.Email, this);
    m_url = field("URL", m_model.URL, this);
    m_atfEmail = field("AtfEmail", m_model.AtfEmail, this);
    m_url->installEventFilter(this);
    m_atfEmail->installEventFilter(this);
    connect(m_url, &QLineEdit::textEdited, this, [this] { after(&TransferModel::urlEdited); });
    connect(m_atfEmail, &QLineEdit::textEdited, this,
            [this] { after(&TransferModel::collectingAddressEdited); });

    m_online = new QRadioButton(tr("Post to the collection &server"), this);
    m_online->setObjectName(QStringLiteral("sendOnline"));
    m_byEmail = new QRadioButton(tr("Send by &e-mail"), this);
    m_byEmail->setObjectName(QStringLiteral("sendByEmail"));
    connect(m_online, &QRadioButton::clicked, this,
            [this] { after(&TransferModel::chooseOnline); });
    connect(m_byEmail, &QRadioButton::clicked, this,
            [this] { after(&TransferModel::chooseEmail); });

    m_message = new QPlainTextEdit(this);
    m_message->setObjectName(QStringLiteral("Message"));
    m_message->setAccessibleName(tr("Message"));
    m_message->setReadOnly(true);
    m_message->viewport()->installEventFilter(this);

    m_ok = new QPushButton(this);
    m_ok->setObjectName(QStringLiteral("OKButton"));
    m_ok->setAutoDefault(false);
    m_cancel = new QPushButton(tr("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("CancelButton"));
    m_cancel->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, [this] {
        // Off at once and until the press is handled: a second click arriving while the
        // server is awaited finds it disabled, whatever else is shown meanwhile.
        m_okPressed = true;
        m_ok->setEnabled(false);
        after(&TransferModel::okPressed);
    });
    connect(m_cancel, &QPushButton::clicked, this,
            [this] { after(&TransferModel::cancelPressed); });

    auto* account = new QFormLayout;
    account->addRow(tr("User &name"), m_username);
    account->addRow(tr("&Password"), m_password);
    account->addRow(tr("Your e-&mail"), m_email);
    account->addRow(m_online);
    account->addRow(tr("Server &URL"), m_url);
    account->addRow(m_byEmail);
    account->addRow(tr("&Collecting e-mail"), m_atfEmail);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(account);
    layout->addWidget(m_message);
    layout->addLayout(buttons);

    m_model.open();
    render();
}

void TransferDialog::after(void (TransferModel::*handler)()) {
    if (m_unloaded) // focus leaving the boxes as the dialog closes
        return;
    (m_model.*handler)();
    if (handler == &TransferModel::okPressed)
        m_okPressed = false;
    render();
    if (m_model.CloseRequested)
        accept();
}

void TransferDialog::render() {
    showText(m_username, m_model.username);
    showText(m_password, m_model.password);
    showText(m_email, m_model.Email);
    showText(m_url, m_model.URL);
    showText(m_atfEmail, m_model.AtfEmail);
    m_online->setChecked(m_model.sendOnline);
    m_byEmail->setChecked(m_model.sendByEmail);
    if (m_message->toPlainText() != QString::fromStdString(m_model.Message))
        m_message->setPlainText(QString::fromStdString(m_model.Message));
    m_ok->setText(QString::fromStdString(m_model.okCaption));
    m_ok->setVisible(m_model.okVisible);
    m_ok->setEnabled(!m_okPressed);
    m_cancel->setVisible(m_model.cancelVisible);
    if (m_model.okFocused) {
        m_ok->setDefault(true);
        m_ok->setFocus();
        m_model.okFocused = false;
    }
}

bool TransferDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == m_url)
            after(&TransferModel::urlLeft);
        else if (watched == m_atfEmail)
            after(&TransferModel::collectingAddressLeft);
    } else if (event->type() == QEvent::MouseButtonDblClick && watched == m_message->viewport()) {
        after(&TransferModel::copyMessage);
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void TransferDialog::done(int result) {
    if (!m_unloaded) {
        m_unloaded = true;
        m_model.close();
    }
    QDialog::done(result);
}

} // namespace zav
