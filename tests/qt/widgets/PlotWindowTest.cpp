#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/ZoomableChartView.h"
#include "report/WavePlot.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
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

using namespace zav;

namespace {

QValueAxis* axisOf(QChart* chart, Qt::Orientation o) {
    return qobject_cast<QValueAxis*>(chart->axes(o).first());
}

} // namespace

// 256 k samples of a 1 kHz tone at 44.1 kHz with one full-scale spike, loaded as the Utility
// menu loads the last recording. (Decimation and spectrum are the report's own tests: here the
// series follow the view.)
TEST(PlotWindow, SeriesFollowTheZoomTheMouseZoomsAndPansAndImagesSave) {
    test::TempDir dir;
    auto samples = test::Sine(8000, 1000, 44100, 262144);
    samples[150001] = 32767;
    const std::string wav = (dir.path / "rec.wav").string();
    test::WriteWave(wav, samples, 44100);
    test::FakeDialogs dialogs;
    auto plot = LoadWavePlot(wav, "External Noise", "20240501120000", dialogs);
    ASSERT_TRUE(plot);
    PlotWindow window(std::move(*plot), dialogs);
    window.resize(1000, 650);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QApplication::processEvents();
    ZoomableChartView* view = window.waveView();
    QValueAxis* x = axisOf(view->chart(), Qt::Horizontal);
    EXPECT_DOUBLE_EQ(x->max(), 262144 / 44100.0);

    // Two points at most per pixel column of the plot, and the spike among them.
    const auto columns = static_cast<qsizetype>(std::ceil(view->chart()->plotArea().width()));
    const QList<QPointF> points = window.waveSeries()->points();
    EXPECT_GT(columns, 500);
    EXPECT_LE(points.size(), 2 * columns);
    EXPECT_GE(points.size(), columns);
    const auto top = std::max_element(points.begin(), points.end(),
                                      [](QPointF a, QPointF b) { return a.y() < b.y(); });
    EXPECT_NEAR(top->x(), 150001 / 44100.0, 1e-9);
    EXPECT_DOUBLE_EQ(top->y(), 32767 / 32768.0);

    // Zoomed in to 50 samples the series holds exactly those (and one either side).
    x->setRange(1000 / 44100.0, 1049 / 44100.0);
    const QList<QPointF> close = window.waveSeries()->points();
    ASSERT_GE(close.size(), 50);
    ASSERT_LE(close.size(), 54);
    for (const QPointF& p : close) {
        const auto i = static_cast<std::size_t>(std::lround(p.x() * 44100));
        ASSERT_EQ(p.y(), samples[i] / 32768.0) << i;
    }
    window.waveView()->home();
    EXPECT_EQ(window.waveSeries()->points().size(), points.size());

    // The wheel zooms about the pointer, a right-drag to the left moves later samples into
    // view, Home shows everything again.
    const double fullSpan = x->max() - x->min();
    const QPointF centre = view->chart()->plotArea().center();
    QWheelEvent wheel(centre, view->mapToGlobal(centre), QPoint(), QPoint(0, 240), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view->viewport(), &wheel);
    EXPECT_NEAR(x->max() - x->min(), fullSpan * 0.64, 1e-9);
    const double zoomedMin = x->min();
    EXPECT_GT(zoomedMin, 0.0);
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

    // PNG without an ending, SVG of the spectrum tab, and an unwritable place said in words.
    dialogs.files.push_back((dir.path / "wave").string());
    window.saveImage();
    EXPECT_EQ(dialogs.fileRequests.at(0).fileName, "20240501120000");
    const QImage png(QString::fromStdString((dir.path / "wave.png").string()));
    EXPECT_EQ(png.size(), window.waveView()->size() * window.devicePixelRatio());
    window.tabs()->setCurrentIndex(1);
    dialogs.files.push_back((dir.path / "spectrum.SVG").string());
    window.saveImage();
    QFile svg(QString::fromStdString((dir.path / "spectrum.SVG").string()));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    EXPECT_TRUE(svg.readAll().contains("Magnitude (dBFS)"));
    dialogs.files.push_back(std::nullopt); // cancel
    window.saveImage();
    dialogs.files.push_back((dir.path / "none" / "x.png").string());
    window.saveImage();
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text.rfind("Error: saving image: ", 0), 0u);
}
