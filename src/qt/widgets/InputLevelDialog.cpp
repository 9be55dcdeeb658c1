#include "qt/widgets/InputLevelDialog.h"

#include "measure/AudioCapture.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

namespace zav {
namespace {

constexpr int kRate = 44100;
constexpr double kWindowSeconds = 0.3;
constexpr int kReadingMs = 100;
// The meter's scale, dBFS.
constexpr int kMeterFloorDb = -80;

// Passes the samples to the meter until the window asks to stop.
class MeterSink : public CaptureSink {
public:
    MeterSink(InputLevel& level, const bool& stop) : m_level(level), m_stop(stop) {}
    bool Samples(const std::int16_t* data, std::size_t count) override {
        m_level.Add(data, count);
        return !m_stop;
    }
    bool Continue() override { return !m_stop; }

private:
    InputLevel& m_level;
    const bool& m_stop;
};

} // namespace

InputLevelDialog::InputLevelDialog(AudioCapture& capture, std::string device, QWidget* parent,
                                   char decimalSeparator)
    : QDialog(parent), m_capture(capture), m_device(std::move(device)),
      m_separator(decimalSeparator), m_level(static_cast<std::size_t>(kRate * kWindowSeconds)) {
    setWindowTitle("Input level");
    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(
        "Set the receiver's audio gain here before step 1: the noise should read well above "
        "the floor, with its peaks clear of the clipping limit.",
        this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    m_meter = new QProgressBar(this);
    m_meter->setRange(kMeterFloorDb, 0);
    m_meter->setFormat("%v dBFS");
    m_meter->setAccessibleName("Input level meter");
    m_meter->setToolTip("RMS level of the latest 0.3 s, dB of full scale");
    layout->addWidget(m_meter);
    m_rms = new QLabel(this);
    m_peak = new QLabel(this);
    m_headroom = new QLabel(this);
    m_advice = new QLabel(this);
    m_advice->setWordWrap(true);
    QFont bold = m_advice->font();
    bold.setBold(true);
    m_advice->setFont(bold);
    for (QLabel* label : {m_rms, m_peak, m_headroom, m_advice})
        layout->addWidget(label);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QObject::connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    m_rms->setAccessibleName("RMS level");
    m_peak->setAccessibleName("Peak level");
    m_headroom->setAccessibleName("Headroom");
    m_advice->setAccessibleName("Advice");

    m_timer = new QTimer(this);
    m_timer->setInterval(kReadingMs);
    QObject::connect(m_timer, &QTimer::timeout, this, [this] { showReading(); });
    m_advice->setText("Starting the input...");
    resize(420, sizeHint().height());
}

void InputLevelDialog::showReading() {
    if (!m_level.AnySamples())
        return;
    const InputLevelReading r = m_level.TakeReading();
    ++m_readings;
    const double shown = std::isfinite(r.rmsDbfs) ? r.rmsDbfs : kMeterFloorDb;
    m_meter->setValue(static_cast<int>(std::lround(std::max<double>(shown, kMeterFloorDb))));
    m_rms->setText(QString::fromStdString(RmsLevelText(r, m_separator)));
    m_peak->setText(QString::fromStdString(PeakLevelText(r, m_separator)));
    m_headroom->setText(QString::fromStdString(HeadroomText(r, m_separator)));
    m_advice->setText(QString::fromStdString(LevelAdvice(r)));
    // Red for clipping, and the words say so too.
    m_advice->setStyleSheet(r.clipping ? "color: red" : "");
}

void InputLevelDialog::run() {
    if (m_running)
        return;
    m_running = true;
    m_stop = false;
    m_timer->start();
    MeterSink sink(m_level, m_stop);
    // A day of samples: the window's closing ends it long before.
    const CaptureRequest request{m_device, kRate, std::int64_t{kRate} * 86400};
    const CaptureOutcome outcome = m_capture.Capture(request, sink);
    m_timer->stop();
    m_running = false;
    if (outcome.status == CaptureStatus::Failed) {
        m_advice->setText(
            QString::fromStdString("The input cannot be read: " + outcome.error.text));
        m_advice->setStyleSheet("color: red");
    }
}

int InputLevelDialog::exec() {
    QTimer::singleShot(0, this, [this] { run(); });
    return QDialog::exec();
}

void InputLevelDialog::reject() {
    m_stop = true;
    QDialog::reject();
}

} // namespace zav
