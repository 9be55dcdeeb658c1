#include "qt/widgets/GpsSetupDialog.h"

#include "qt/widgets/DialogButtons.h"

#include "gps/GpsSetupModel.h"
#include "qt/services/QtSerialPort.h"

#include <QComboBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

QComboBox* makeList(const char* name, const std::vector<std::string>& items, bool editable,
                    QWidget* parent) {
    auto* box = new QComboBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setEditable(editable);
    // A typed value is the setting, not a new entry of the list.
    box->setInsertPolicy(QComboBox::NoInsert);
    for (const std::string& item : items)
        box->addItem(qs(item));
    return box;
}

// Shows `text` in a list: typed into an editable one, picked (and added when missing, so an
// unusual stored value is still shown) in a fixed one.
void showText(QComboBox* box, const std::string& text) {
    const QString wanted = qs(text);
    if (box->currentText() == wanted)
        return;
    if (!box->isEditable() && box->findText(wanted) < 0)
        box->addItem(wanted);
    box->setCurrentText(wanted);
}

} // namespace

GpsSetupDialog::GpsSetupDialog(GpsSetupModel& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
    setObjectName(QStringLiteral("gpsSetupDialog"));
    setWindowTitle(QStringLiteral("GPS setup"));
    setModal(true);
    m_model.open();

    m_port = makeList("port", m_model.portList, true, this);
    m_port->setMinimumContentsLength(14);
    m_speed = makeList("speed", m_model.speedList, false, this);
    m_parity = makeList("parity", m_model.parityList, true, this);
    m_dbits = makeList("dbits", m_model.dataBitsList, true, this);
    m_sbits = makeList("sbits", m_model.stopBitsList, true, this);
    m_acc = new QLineEdit(this);
    m_acc->setObjectName(QStringLiteral("acc"));
    m_acc->installEventFilter(this);

    connect(m_port, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { portEdited(text); });
    const std::pair<QComboBox*, std::string GpsSetupModel::*> lists[] = {
        {m_speed, &GpsSetupModel::speed},
        {m_parity, &GpsSetupModel::parity},
        {m_dbits, &GpsSetupModel::dataBits},
        {m_sbits, &GpsSetupModel::stopBits},
    };
    for (const auto& [box, member] : lists) {
        connect(box, &QComboBox::currentTextChanged, this, [this, member](const QString& text) {
            if (!m_rendering)
                m_model.*member = text.toStdString();
        });
    }
    connect(m_acc, &QLineEdit::textEdited, this,
            [this](const QString& text) { m_model.acc = text.toStdString(); });

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("&Port"), m_port);
    form->addRow(QStringLiteral("&Speed"), m_speed);
    form->addRow(QStringLiteral("P&arity"), m_parity);
    form->addRow(QStringLiteral("&Data bits"), m_dbits);
    form->addRow(QStringLiteral("S&top bits"), m_sbits);
    form->addRow(QStringLiteral("Accuracy (m)"), m_acc);

    const OkCancelButtons buttons(this, [this] { okClicked(); });
    m_ok = buttons.ok;
    m_cancel = buttons.cancel;

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons.row);

    render();
}

bool GpsSetupDialog::Edit(GpsSettings& settings, Dialogs& dialogs, QWidget* parent) {
    const QString point = QLocale().decimalPoint();
    GpsSetupModel model(settings, dialogs, QtSerialPort().ListDevices(),
                        point.size() == 1 ? point.at(0).toLatin1() : '.');
    GpsSetupDialog dialog(model, parent);
    dialog.exec();
    return model.Stored();
}

void GpsSetupDialog::portEdited(const QString& text) {
    if (!m_rendering)
        m_model.portChanged(text.toStdString());
}

void GpsSetupDialog::okClicked() {
    // The accuracy box may still hold a text that has not been left yet.
    m_model.acc = m_acc->text().toStdString();
    m_model.okPressed();
    render();
    if (!m_model.Visible())
        QDialog::accept();
}

void GpsSetupDialog::reject() {
    m_model.cancelPressed();
    QDialog::reject();
}

void GpsSetupDialog::selectAccuracy() {
    if (!m_model.accSelected)
        return;
    m_model.accSelected = false;
    m_acc->selectAll();
    // Once more after a click, which places the cursor after focusing the box.
    QTimer::singleShot(0, m_acc, [edit = m_acc] { edit->selectAll(); });
}

bool GpsSetupDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_acc)
        return QDialog::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::FocusIn:
        m_model.accuracyFocused();
        selectAccuracy();
        break;
    case QEvent::FocusOut: {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Another window (a message box) taking the focus is not leaving the box.
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason) {
            m_model.acc = m_acc->text().toStdString();
            m_model.accuracyLeft();
            render();
        }
        break;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            m_model.acc = m_acc->text().toStdString();
            m_model.accuracyKeyPressed(Key::Enter);
            render();
            selectAccuracy();
            return true; // Enter checks the value; it does not press OK
        }
        break;
    }
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}

void GpsSetupDialog::render() {
    const GpsSetupModel& m = m_model;
    m_rendering = true;
    showText(m_port, m.PortShown());
    showText(m_speed, m.speed);
    showText(m_parity, m.parity);
    showText(m_dbits, m.dataBits);
    showText(m_sbits, m.stopBits);
    if (m_acc->text() != qs(m.acc))
        m_acc->setText(qs(m.acc));
    m_rendering = false;
}

} // namespace zav
