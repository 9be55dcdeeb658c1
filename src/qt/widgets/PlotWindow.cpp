#include "qt/widgets/PlotWindow.h"

#include "platform/AtomicFile.h"
#include "platform/Version.h"
#include "qt/widgets/ZoomableChartView.h"
#include "report/MinMaxDecimation.h"

#include <QApplication>
#include <QBuffer>
#include <QChart>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QSvgGenerator>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QValueAxis>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

QValueAxis* addAxis(QChart* chart, QLineSeries* series, Qt::Alignment side, const char* title) {
    auto* axis = new QValueAxis;
    axis->setTitleText(QString::fromUtf8(title));
    chart->addAxis(axis, side);
    series->attachAxis(axis);
    return axis;
}

QChart* makeChart(const std::string& title, QLineSeries* series) {
    auto* chart = new QChart;
    // A dark desktop gets the dark chart; set before the series, whose own colours stay.
    if (QApplication::palette().color(QPalette::Window).lightness() < 128)
        chart->setTheme(QChart::ChartThemeDark);
    chart->setTitle(qs(title));
    chart->legend()->hide();
    chart->addSeries(series);
    return chart;
}

bool endsWithNoCase(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() && std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                                                      [](unsigned char a, unsigned char b) {
                                                          return std::tolower(a) == std::tolower(b);
                                                      });
}

QString describeSpectrum(const WavePlot& plot) {
    const Spectrum& s = plot.spectrum;
    if (s.blocks == 0)
        return QStringLiteral("Too few samples for a spectrum.");
    return QStringLiteral("Spectrum: Hann window, %1-sample blocks overlapping by half, %2 "
                          "averaged, %3 Hz per bin.")
        .arg(s.blockSize)
        .arg(s.blocks)
        .arg(static_cast<double>(plot.sampleRate) / static_cast<double>(s.blockSize), 0, 'f', 2);
}

} // namespace

PlotWindow::PlotWindow(WavePlot plot, Dialogs& dialogs, QWidget* parent)
    : QWidget(parent, Qt::Window), m_plot(std::move(plot)), m_dialogs(dialogs) {
    setWindowTitle(qs(m_plot.title));
    auto* layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    layout->addWidget(m_tabs, 1);
    buildWaveChart();
    buildSpectrumChart();

    auto* bottom = new QHBoxLayout;
    QString note = QStringLiteral("Drag to zoom, wheel zooms time, right-drag pans, double-click "
                                  "shows all. ") +
                   describeSpectrum(m_plot);
    if (m_plot.samplesInFile > static_cast<std::int64_t>(m_plot.samples.size()))
        note += QStringLiteral(" Only the first %1 s of the recording are shown.")
                    .arg(m_plot.DurationSeconds(), 0, 'f', 1);
    m_status = new QLabel(note, this);
    m_status->setWordWrap(true);
    bottom->addWidget(m_status, 1);
    auto* save = new QPushButton(QStringLiteral("&Save image..."), this);
    auto* close = new QPushButton(QStringLiteral("&Close"), this);
    bottom->addWidget(save);
    bottom->addWidget(close);
    layout->addLayout(bottom);
    QObject::connect(save, &QPushButton::clicked, this, [this] { saveImage(); });
    QObject::connect(close, &QPushButton::clicked, this, [this] { this->close(); });
    resize(900, 600);
}

void PlotWindow::buildWaveChart() {
    m_waveSeries = new QLineSeries;
    m_waveSeries->setColor(Qt::red);
    QChart* chart = makeChart(m_plot.title, m_waveSeries);
    m_timeAxis = addAxis(chart, m_waveSeries, Qt::AlignBottom, kPlotTimeLabel);
    QValueAxis* voltage = addAxis(chart, m_waveSeries, Qt::AlignLeft, kPlotVoltageLabel);
    m_waveView = new ZoomableChartView(chart, m_tabs);
    m_waveView->setAccessibleName(QStringLiteral("Waveform chart"));
    m_tabs->addTab(m_waveView, QStringLiteral("Waveform"));
    // Every change of the time range or of the chart's size draws the samples in view again.
    QObject::connect(m_timeAxis, &QValueAxis::rangeChanged, this, [this] { redrawWave(); });
    QObject::connect(chart, &QChart::plotAreaChanged, this, [this] { redrawWave(); });
    m_waveView->setHomeRanges(0, std::max(m_plot.DurationSeconds(), 1e-6), -1, 1);
    m_waveView->setNiceTicks(m_timeAxis, 8);
    m_waveView->setNiceTicks(voltage, 8);
}

void PlotWindow::buildSpectrumChart() {
    m_spectrumSeries = new QLineSeries;
    m_spectrumSeries->setColor(QColor(0, 90, 180));
    const Spectrum& s = m_plot.spectrum;
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(s.frequencyHz.size()));
    double top = kSpectrumFloorDbfs;
    for (std::size_t k = 0; k < s.frequencyHz.size(); ++k) {
        points.append(QPointF(s.frequencyHz[k], s.levelDbfs[k]));
        top = std::max(top, s.levelDbfs[k]);
    }
    m_spectrumSeries->replace(points);
    QChart* chart = makeChart(m_plot.title, m_spectrumSeries);
    QValueAxis* frequency = addAxis(chart, m_spectrumSeries, Qt::AlignBottom, kPlotFrequencyLabel);
    QValueAxis* level = addAxis(chart, m_spectrumSeries, Qt::AlignLeft, kPlotLevelLabel);
    m_spectrumView = new ZoomableChartView(chart, m_tabs);
    m_spectrumView->setAccessibleName(QStringLiteral("Spectrum chart"));
    m_tabs->addTab(m_spectrumView, QStringLiteral("Spectrum"));
    // Full scale at the top (or the loudest bin, rounded up to 10 dB), 140 dB below it.
    const double yMax = std::max(0.0, std::ceil(top / 10) * 10);
    m_spectrumView->setHomeRanges(0, std::max(m_plot.sampleRate / 2.0, 1.0), yMax - 140, yMax);
    m_spectrumView->setNiceTicks(frequency, 10);
    m_spectrumView->setNiceTicks(level, 7);
}

void PlotWindow::redrawWave() {
    if (!m_waveSeries || m_plot.sampleRate <= 0)
        return;
    const double rate = m_plot.sampleRate;
    const double count = static_cast<double>(m_plot.samples.size());
    // One sample beyond each edge, so the line runs on out of view instead of stopping short.
    const double from = std::clamp(std::floor(m_timeAxis->min() * rate) - 1, 0.0, count);
    const double to = std::clamp(std::ceil(m_timeAxis->max() * rate) + 2, 0.0, count);
    const auto columns =
        static_cast<std::size_t>(std::max(1.0, std::ceil(m_waveView->chart()->plotArea().width())));
    const auto points = DecimateMinMax(m_plot.samples, static_cast<std::size_t>(from),
                                       static_cast<std::size_t>(to), columns, 1.0 / rate);
    QList<QPointF> list;
    list.reserve(static_cast<qsizetype>(points.size()));
    for (const PlotPoint& p : points)
        list.append(QPointF(p.x, p.y));
    m_waveSeries->replace(list);
}

bool PlotWindow::SaveImage(const std::string& path, std::string* error) {
    QWidget* view = m_tabs->currentWidget();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (endsWithNoCase(path, ".svg")) {
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(view->size());
        svg.setViewBox(QRect(QPoint(0, 0), view->size()));
        svg.setTitle(qs(m_plot.title));
        QPainter painter(&svg);
        view->render(&painter);
        painter.end();
    } else if (!view->grab().save(&buffer, "PNG")) {
        if (error)
            *error = "cannot draw the image";
        return false;
    }
    return WriteFileAtomically(path, std::string_view(bytes.constData(), bytes.size()), error);
}

void PlotWindow::saveImage() {
    FileDialogRequest request;
    request.title = "Save image";
    request.filter = "PNG image (*.png)|*.png|SVG image (*.svg)|*.svg";
    request.filterIndex = 1;
    request.fileName = m_plot.obsTime;
    auto path = m_dialogs.SaveFileName(request);
    if (!path)
        return;
    if (!endsWithNoCase(*path, ".png") && !endsWithNoCase(*path, ".svg"))
        *path += ".png";
    std::string error;
    if (!SaveImage(*path, &error))
        m_dialogs.ShowMessage("Error: saving image: " + error, kAppTitle, MessageIcon::Critical);
}

} // namespace zav
