#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/ZoomableChartView.h"
#include "report/WavePlot.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QChart>
#include <QFile>
#include <QImage>
#include <QLineSeries>
#include <QMouseEvent>
#include <QTabWidget>
#include <QTest>
#include <QValueAxis>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace zav;
namespace fs = std::filesystem;

namespace {

fs::path scratch() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const auto dir = fs::path(ZAV_BINARY_DIR) / "test-scratch" / "widgets" / info->name();
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

// 256 k samples of a 1 kHz tone at 44.1 kHz with one full-scale spike, loaded as the
// Utility menu loads the last recording.
WavePlot loadRecording(const fs::path& dir, std::vector<std::int16_t>* samplesOut = nullptr) {
    auto samples = test::Sine(8000, 1000, 44100, 262144);
    samples[150001] = 32767;
    const fs::path wav = dir / "rec.wav";
    test::WriteWave(wav.string(), samples, 44100);
    test::FakeDialogs dialogs;
    auto plot = LoadWavePlot(wav.string(), "External Noise", "20240501120000", dialogs);
    EXPECT_TRUE(plot.has_value());
    if (samplesOut)
        *samplesOut = samples;
    return std::move(*plot);
}

QValueAxis* axisOf(QChart* chart, Qt::Orientation o) {
    return qobject_cast<QValueAxis*>(chart->axes(o).first());
}

void showAndSettle(QWidget& w) {
    w.resize(1000, 650);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    QApplication::processEvents();
}

} // namespace

TEST(PlotWindow, WaveformDecimatedPerPixelExactWhenZoomedAndTheSpectrumPeaksAtTheTone) {
    std::vector<std::int16_t> samples;
    test::FakeDialogs dialogs;
    PlotWindow window(loadRecording(scratch(), &samples), dialogs);
    showAndSettle(window);
    EXPECT_EQ(window.windowTitle().toStdString(), "ZAV: External Noise 20240501120000");
    QChart* chart = window.waveView()->chart();
    QValueAxis* x = axisOf(chart, Qt::Horizontal);
    QValueAxis* y = axisOf(chart, Qt::Vertical);
    EXPECT_EQ(x->titleText() + "|" + y->titleText(), "Time (s)|Normalised voltage (V)");
    EXPECT_DOUBLE_EQ(x->max(), 262144 / 44100.0);

    // Two points at most per pixel column of the plot, and the spike among them.
    const auto columns = static_cast<qsizetype>(std::ceil(chart->plotArea().width()));
    const QList<QPointF> points = window.waveSeries()->points();
    EXPECT_GT(columns, 500);
    EXPECT_LE(points.size(), 2 * columns);
    EXPECT_GE(points.size(), columns);
    const auto top = std::max_element(points.begin(), points.end(),
                                      [](QPointF a, QPointF b) { return a.y() < b.y(); });
    EXPECT_DOUBLE_EQ(top->y(), 32767 / 32768.0);
    EXPECT_NEAR(top->x(), 150001 / 44100.0, 1e-9);

    // Zoomed in to 50 samples the series holds exactly those (and one either side), with
    // round ticks; Home shows the whole recording again.
    x->setRange(1000 / 44100.0, 1049 / 44100.0);
    const QList<QPointF> close = window.waveSeries()->points();
    ASSERT_GE(close.size(), 50);
    ASSERT_LE(close.size(), 54);
    for (const QPointF& p : close) {
        const auto i = static_cast<std::size_t>(std::lround(p.x() * 44100));
        ASSERT_EQ(p.y(), samples[i] / 32768.0) << i;
    }
    EXPECT_DOUBLE_EQ(x->tickInterval(), 0.0002);
    EXPECT_EQ(x->labelFormat().toStdString(), "%.4f");
    window.waveView()->home();
    EXPECT_EQ(window.waveSeries()->points().size(), points.size());
    EXPECT_DOUBLE_EQ(x->tickInterval(), 1.0);

    ASSERT_EQ(window.tabs()->count(), 2);
    const QList<QPointF> bins = window.spectrumSeries()->points();
    ASSERT_EQ(bins.size(), 2049);
    const auto peak = std::max_element(bins.begin(), bins.end(),
                                       [](QPointF a, QPointF b) { return a.y() < b.y(); });
    EXPECT_NEAR(peak->x(), 1000.0, 44100.0 / 4096 / 2);
}

TEST(PlotWindow, MouseZoomsAndPansAndImagesSaveAsPngOrSvg) {
    const fs::path dir = scratch();
    test::FakeDialogs dialogs;
    PlotWindow window(loadRecording(dir), dialogs);
    showAndSettle(window);
    ZoomableChartView* view = window.waveView();
    QValueAxis* x = axisOf(view->chart(), Qt::Horizontal);
    const double fullSpan = x->max() - x->min();
    const QPointF centre = view->chart()->plotArea().center();
    QWheelEvent wheel(centre, view->mapToGlobal(centre), QPoint(), QPoint(0, 240), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view->viewport(), &wheel);
    EXPECT_NEAR(x->max() - x->min(), fullSpan * 0.64, 1e-9);
    const double zoomedMin = x->min();
    EXPECT_GT(zoomedMin, 0.0);
    // Right-drag 100 pixels to the left moves later samples into view.
    auto mouse = [&](QEvent::Type type, QPointF at, Qt::MouseButton button,
                     Qt::MouseButtons buttons) {
        QMouseEvent e(type, at, view->mapToGlobal(at), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(view->viewport(), &e);
    };
    mouse(QEvent::MouseButtonPress, centre, Qt::RightButton, Qt::RightButton);
    mouse(QEvent::MouseMove, centre - QPointF(100, 0), Qt::NoButton, Qt::RightButton);
    mouse(QEvent::MouseButtonRelease, centre - QPointF(100, 0), Qt::RightButton, Qt::NoButton);
    EXPECT_GT(x->min(), zoomedMin);
    EXPECT_NEAR(x->max() - x->min(), fullSpan * 0.64, 1e-9);
    QTest::keyClick(view, Qt::Key_Home);
    EXPECT_NEAR(x->max() - x->min(), fullSpan, 1e-12);

    dialogs.files.push_back((dir / "wave").string()); // no ending: PNG
    window.saveImage();
    EXPECT_EQ(dialogs.fileRequests.at(0).fileName, "20240501120000");
    const QImage png(QString::fromStdString((dir / "wave.png").string()));
    EXPECT_EQ(png.size(), window.waveView()->size() * window.devicePixelRatio());
    window.tabs()->setCurrentIndex(1);
    dialogs.files.push_back((dir / "spectrum.SVG").string());
    window.saveImage();
    QFile svg(QString::fromStdString((dir / "spectrum.SVG").string()));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    EXPECT_TRUE(svg.readAll().contains("Magnitude (dBFS)"));
    dialogs.files.push_back(std::nullopt); // cancel
    window.saveImage();
    dialogs.files.push_back((dir / "none" / "x.png").string());
    window.saveImage();
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text.rfind("Error: saving image: ", 0), 0u);
}
