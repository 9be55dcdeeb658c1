#include "qt/widgets/WorkingDialog.h"

#include "measure/LevelMeter.h"
#include "platform/Version.h"

#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zav {
namespace {

constexpr int kProgressSteps = 1000;
constexpr int kMeterFloorDb = -60; // the meter's left end; anything quieter reads empty

} // namespace

WorkingDialog::WorkingDialog(QWidget* parent, char decimalSeparator)
    : QDialog(parent), m_decimalSeparator(decimalSeparator) {
    setObjectName("workingDialog");
    setWindowTitle(kAppTitle);
    setWindowModality(Qt::ApplicationModal);
    m_count = new QLabel(this);
    m_count->setObjectName("countText");
    m_progress = new QProgressBar(this);
    m_progress->setObjectName("progress");
    m_progress->setRange(0, kProgressSteps);
    m_meter = new QProgressBar(this);
    m_meter->setObjectName("meter");
    m_meter->setRange(kMeterFloorDb, 0);
    m_meter->setTextVisible(false);
    m_level = new QLabel(this);
    m_level->setObjectName("levelText");
    m_level->setMinimumWidth(m_level->fontMetrics().horizontalAdvance("-000.0 dBFS"));
    m_cancel = new QPushButton(tr("Cancel"), this);
    m_cancel->setObjectName("cancelButton");
    QObject::connect(m_cancel, &QPushButton::clicked, this, [this] { reject(); });

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Recording..."), this), 0, 0, 1, 2);
    grid->addWidget(m_progress, 1, 0, 1, 2);
    grid->addWidget(m_count, 2, 0, 1, 2);
    grid->addWidget(new QLabel(tr("Level:"), this), 3, 0, 1, 2);
    grid->addWidget(m_meter, 4, 0);
    grid->addWidget(m_level, 4, 1);
    grid->addWidget(m_cancel, 5, 1, Qt::AlignRight);
    setMinimumWidth(360);
}

void WorkingDialog::Begin(std::int64_t totalSamples) {
    m_total = totalSamples;
    m_cancelled = false;
    m_cancel->setEnabled(true);
    Update(0, -std::numeric_limits<double>::infinity());
    show();
    raise();
}

void WorkingDialog::Update(std::int64_t samplesSoFar, double levelDbfs) {
    const double fraction =
        m_total > 0 ? std::clamp(static_cast<double>(samplesSoFar) / m_total, 0.0, 1.0) : 0.0;
    m_progress->setValue(static_cast<int>(fraction * kProgressSteps));
    m_count->setText(tr("%1 of %2 samples").arg(samplesSoFar).arg(m_total));
    const double shown = std::isfinite(levelDbfs) ? levelDbfs : kMeterFloorDb;
    m_meter->setValue(static_cast<int>(std::lround(std::clamp<double>(shown, kMeterFloorDb, 0))));
    m_level->setText(QString::fromStdString(LevelText(levelDbfs, m_decimalSeparator)));
}

void WorkingDialog::End() {
    hide();
}

void WorkingDialog::reject() {
    // The recording sees the flag and stops; End hides the window.
    m_cancelled = true;
    m_cancel->setEnabled(false);
}

} // namespace zav
