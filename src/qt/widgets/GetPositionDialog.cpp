#include "qt/widgets/GetPositionDialog.h"

#include "qt/widgets/DialogButtons.h"

#include "config/GpsSettings.h"
#include "gps/GetPositionModel.h"
#include "platform/SerialPort.h"
#include "qt/services/QtSerialPort.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>

namespace zav {

// The dialog's port: everything goes to the real one, and after each chunk or error the
// model has handled, the dialog shows the model again.
class GetPositionDialog::WatchedPort : public SerialPort {
public:
    WatchedPort(SerialPort& port, std::function<void()> changed)
        : m_port(port), m_changed(std::move(changed)) {}

    int SetSettings(const std::string& settings) override { return m_port.SetSettings(settings); }
    int SetCommPort(int number) override { return m_port.SetCommPort(number); }
    int SetDevice(const std::string& name) override { return m_port.SetDevice(name); }
    int SetPortOpen(bool open) override { return m_port.SetPortOpen(open); }
    bool PortOpen() const override { return m_port.PortOpen(); }
    std::vector<std::string> ListPorts() const override { return m_port.ListPorts(); }
    std::string DeviceName() const override { return m_port.DeviceName(); }

    void SetReceiveHandler(ReceiveHandler handler) override {
        if (!handler) {
            m_port.SetReceiveHandler(nullptr);
            return;
        }
        m_port.SetReceiveHandler([this, handler](const std::string& chunk) {
            handler(chunk);
            m_changed();
        });
    }
    void SetErrorHandler(ErrorHandler handler) override {
        if (!handler) {
            m_port.SetErrorHandler(nullptr);
            return;
        }
        m_port.SetErrorHandler([this, handler](int errorNumber) {
            handler(errorNumber);
            m_changed();
        });
    }

private:
    SerialPort& m_port;
    std::function<void()> m_changed;
};

namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

QLineEdit* makeBox(const char* name, int characters, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setReadOnly(true);
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QString(characters, QChar('0'))) +
                         12);
    return box;
}

QLabel* caption(const char* text, QWidget* parent) {
    return new QLabel(QString::fromLatin1(text), parent);
}

} // namespace

GetPositionDialog::GetPositionDialog(const GpsSettings& settings, SerialPort& port, Beeper& beeper,
                                     bool beepOption, char decimalSeparator, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("getPositionDialog"));
    setWindowTitle(QStringLiteral("Get Position"));
    setModal(true);

    auto* current = new QGroupBox(QStringLiteral("Current GPS data"), this);
    m_hdop = makeBox("HDOP", 5, current);
    m_fixText = new QLabel(current);
    m_fixText->setObjectName(QStringLiteral("fixText"));
    m_record = makeBox("record", 60, current);
    m_record->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_latl = makeBox("latl", 11, current);
    m_lonl = makeBox("lonl", 11, current);
    auto* currentGrid = new QGridLayout(current);
    currentGrid->addWidget(caption("HDOP", current), 0, 0);
    currentGrid->addWidget(m_hdop, 0, 1);
    currentGrid->addWidget(m_fixText, 0, 2, 1, 2);
    currentGrid->addWidget(caption("Record", current), 1, 0);
    currentGrid->addWidget(m_record, 1, 1, 1, 3);
    currentGrid->addWidget(caption("Latitude", current), 2, 0);
    currentGrid->addWidget(m_latl, 2, 1);
    currentGrid->addWidget(caption("Longitude", current), 2, 2);
    currentGrid->addWidget(m_lonl, 2, 3);

    auto* average = new QGroupBox(QStringLiteral("Average"), this);
    m_acc = makeBox("acc", 7, average);
    m_ct = makeBox("ct", 6, average);
    m_lat = makeBox("lat", 11, average);
    m_lon = makeBox("lon", 11, average);
    auto* averageGrid = new QGridLayout(average);
    averageGrid->addWidget(caption("Accuracy (m)", average), 0, 0);
    averageGrid->addWidget(m_acc, 0, 1);
    averageGrid->addWidget(caption("Count", average), 0, 2);
    averageGrid->addWidget(m_ct, 0, 3);
    averageGrid->addWidget(caption("Latitude", average), 1, 0);
    averageGrid->addWidget(m_lat, 1, 1);
    averageGrid->addWidget(caption("Longitude", average), 1, 2);
    averageGrid->addWidget(m_lon, 1, 3);

    const OkCancelButtons buttons(this, [this] { accept(); });
    m_ok = buttons.ok;
    m_cancel = buttons.cancel;

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(current);
    layout->addWidget(average);
    layout->addLayout(buttons.row);

    m_port = std::make_unique<WatchedPort>(port, [this] { render(); });
    m_model =
        std::make_unique<GetPositionModel>(settings, *m_port, beeper, beepOption, decimalSeparator);
    m_tickTimer = new QTimer(this);
    m_tickTimer->setObjectName(QStringLiteral("clockTimer"));
    m_tickTimer->setInterval(1000);
    connect(m_tickTimer, &QTimer::timeout, this, [this] { tick(); });

    m_model->open();
    m_tickTimer->start();
    render();
}

GetPositionDialog::~GetPositionDialog() {
    m_tickTimer->stop();
    if (m_model->result() == GetPositionModel::Result::Open)
        m_model->close();
}

void GetPositionDialog::Capture(SetupRecord& setup, const GpsSettings& settings, Beeper& beeper,
                                bool beepOption, char decimalSeparator, QWidget* parent) {
    QtSerialPort port;
    GetPositionDialog dialog(settings, port, beeper, beepOption, decimalSeparator, parent);
    dialog.exec();
    dialog.model().ApplyTo(setup);
}

void GetPositionDialog::tick() {
    m_model->onClockTick();
    render();
    if (m_model->result() == GetPositionModel::Result::Ok)
        accept();
}

void GetPositionDialog::accept() {
    m_tickTimer->stop();
    if (m_model->result() == GetPositionModel::Result::Open)
        m_model->okPressed();
    QDialog::accept();
}

void GetPositionDialog::reject() {
    m_tickTimer->stop();
    if (m_model->result() == GetPositionModel::Result::Open)
        m_model->cancelPressed();
    QDialog::reject();
}

void GetPositionDialog::render() {
    const GetPositionModel& m = *m_model;
    QColor colour = palette().color(QPalette::Text);
    switch (m.HDOPColour) {
    case CellColour::Red:
        colour = QColor(255, 0, 0);
        break;
    case CellColour::Orange:
        colour = QColor(255, 128, 0);
        break;
    case CellColour::WindowText:
        break;
    }
    QPalette hdopPalette = m_hdop->palette();
    hdopPalette.setColor(QPalette::Text, colour);
    m_hdop->setPalette(hdopPalette);

    const std::pair<QLineEdit*, const std::string*> boxes[] = {
        {m_hdop, &m.HDOP}, {m_record, &m.record}, {m_latl, &m.currentLat}, {m_lonl, &m.currentLon},
        {m_acc, &m.acc},   {m_ct, &m.fixCount},   {m_lat, &m.lat},         {m_lon, &m.lon},
    };
    for (const auto& [box, text] : boxes) {
        if (box->text() == qs(*text))
            continue;
        box->setText(qs(*text));
        box->setCursorPosition(0); // a long line shows its start, where the sentence type is
    }
    m_fixText->setText(qs(m.fixText));
}

} // namespace zav
