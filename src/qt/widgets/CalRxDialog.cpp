#include "qt/widgets/CalRxDialog.h"

#include "measure/CalRxModel.h"

#include <QFocusEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

namespace zav {
namespace {

constexpr CalSource kSources[] = {CalSource::Carrier, CalSource::NoiseDensity,
                                  CalSource::ExcessNoiseRatio};

QLabel* figure(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(80);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

CalRxDialog::CalRxDialog(CalRxModel& model, QWidget* parent) : QDialog(parent), m_model(model) {
    setWindowTitle(QString::fromLatin1(CalRxModel::kCaption));
    setModal(true);

    auto* sourceBox = new QGroupBox(tr("Source"), this);
    auto* sourceLayout = new QVBoxLayout(sourceBox);
    const char* names[] = {"OptionCarrier", "OptionDensity", "OptionEnr"};
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        const CalSource source = kSources[i];
        m_sources[i] =
            new QRadioButton(QString::fromLatin1(CalRxModel::SourceCaption(source)), sourceBox);
        m_sources[i]->setObjectName(QString::fromLatin1(names[i]));
        // A click picks the source without taking the focus (and its check) from the level.
        m_sources[i]->setFocusPolicy(Qt::TabFocus);
        connect(m_sources[i], &QRadioButton::clicked, this, [this, source] {
            m_model.chooseSource(source);
            render();
        });
        sourceLayout->addWidget(m_sources[i]);
    }

    m_level = new QLineEdit(this);
    m_level->setObjectName(QStringLiteral("CalLevel"));
    m_level->installEventFilter(this);
    connect(m_level, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_model.CalLevel = text.toStdString();
        m_model.calibrationLevelChanged();
        render();
    });

    m_yFactor = figure("lblYFactor", this);
    m_systemNf = figure("lblSystemNF", this);
    m_receiverNf = figure("lblReceiverNF", this);
    m_noiseFloor = figure("lblNoiseFloor", this);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("statusText"));
    m_status->setWordWrap(true);
    m_status->setStyleSheet(QStringLiteral("color: rgb(255, 0, 0)"));

    auto* figures = new QFormLayout;
    figures->addRow(tr("&Level"), m_level);
    figures->addRow(tr("Y factor (dB)"), m_yFactor);
    figures->addRow(tr("System noise figure (dB)"), m_systemNf);
    figures->addRow(tr("Receiver noise figure (dB)"), m_receiverNf);
    figures->addRow(tr("Receiver noise floor (dBm)"), m_noiseFloor);

    m_apply = new QPushButton(tr("Apply"), this);
    m_apply->setObjectName(QStringLiteral("Apply"));
    m_apply->setDefault(true);
    connect(m_apply, &QPushButton::clicked, this, [this] { apply(); });
    m_cancel = new QPushButton(tr("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("Cancel"));
    // Leaving without a change needs no valid level: Cancel never takes the focus.
    m_cancel->setFocusPolicy(Qt::NoFocus);
    m_cancel->setAutoDefault(false);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_model.cancelPressed();
        reject();
    });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_apply);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(sourceBox);
    layout->addLayout(figures);
    layout->addWidget(m_status);
    layout->addLayout(buttons);

    m_model.open();
    render();
    m_level->setFocus(Qt::OtherFocusReason);
}

void CalRxDialog::apply() {
    m_model.applyCalibration();
    render();
    if (m_model.CloseRequested)
        accept();
}

void CalRxDialog::validateLevel() {
    bool cancel = false;
    m_validating = true;
    m_model.calibrationLevelLeft(cancel);
    m_validating = false;
    render();
}

bool CalRxDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_level && event->type() == QEvent::FocusOut && !m_validating) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Other windows (the message box itself among them) do not take the value away.
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            validateLevel();
    }
    return QDialog::eventFilter(watched, event);
}

void CalRxDialog::render() {
    const CalRxModel& m = m_model;
    for (std::size_t i = 0; i < m_sources.size(); ++i)
        m_sources[i]->setChecked(m.Source == kSources[i]);
    const QString level = QString::fromStdString(m.CalLevel);
    if (m_level->text() != level)
        m_level->setText(level);
    m_yFactor->setText(QString::fromStdString(m.yFactorText));
    m_systemNf->setText(QString::fromStdString(m.systemNfText));
    m_receiverNf->setText(QString::fromStdString(m.receiverNfText));
    m_noiseFloor->setText(QString::fromStdString(m.noiseFloorText));
    m_status->setText(QString::fromStdString(m.statusText));
    m_apply->setEnabled(m.ApplyEnabled);
    if (m_model.CalLevelFocus) {
        m_model.CalLevelFocus = false;
        QTimer::singleShot(0, m_level, [edit = m_level] {
            edit->setFocus(Qt::OtherFocusReason);
            edit->selectAll();
        });
    }
}

} // namespace zav
