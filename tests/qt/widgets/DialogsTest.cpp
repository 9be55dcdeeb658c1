// Smaller windows over their real models: what they show and what typing and clicking hand back.
#include "ChildWidgets.h"
#include "measure/CalRxModel.h"
#include "measure/MeasurementSteps.h"
#include "qt/widgets/CalRxDialog.h"
#include "qt/widgets/P372Panel.h"
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/WorkingDialog.h"
#include "qt/widgets/ZoomableChartView.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <QtCharts>
#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;

namespace {

// The calibration dialog over a real model: 2700 Hz, no loss.
struct CalDesk {
    SetupRecord setup = [] {
        SetupRecord s;
        s.Bandwidth = "2700", s.Attenuator = s.Loss = "0.0", s.RxNF = "9.99";
        return s;
    }();
    FakeDialogs dialogs;
    int recalculations = 0;
    CalRxModel model;
    CalRxDialog dialog{model};
    QLineEdit* level = child<QLineEdit>(dialog, "CalLevel");
    QPushButton* apply = child<QPushButton>(dialog, "Apply");

    explicit CalDesk(double yfact = 10.0)
        : model(setup, yfact, dialogs, [this] { ++recalculations; }) {
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        QTest::qWait(20);
    }
    void pick(const char* option) { // on the button's mark: the widget may be wider
        auto* b = child<QRadioButton>(dialog, option);
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
};

} // namespace

TEST(CalRxDialog, FiguresFollowTheLevelAndSourceAndApplyWritesTheNoiseFigure) {
    CalDesk d;
    EXPECT_EQ(text(d.dialog, "lblYFactor"), "10.00");
    EXPECT_FALSE(d.apply->isEnabled());
    d.pick("OptionEnr");
    EXPECT_TRUE(d.level->hasFocus()); // picking a source leaves the focus in the level
    QTest::keyClicks(d.level, "15");
    EXPECT_EQ(text(d.dialog, "lblSystemNF") + text(d.dialog, "lblReceiverNF"), "5.465.46");
    QTest::mouseClick(d.apply, Qt::LeftButton);
    EXPECT_EQ(d.setup.RxNF + " " + std::to_string(d.recalculations), "5.46 1");

    // Leaving a bad level keeps the focus there; the model's refusals disable Apply and say
    // why; Cancel changes nothing.
    CalDesk bad;
    bad.pick("OptionEnr");
    QTest::keyClicks(bad.level, "abc");
    QTest::keyClick(bad.level, Qt::Key_Tab);
    QTest::qWait(20);
    EXPECT_EQ(bad.dialogs.messages.size(), 1u);
    EXPECT_TRUE(bad.level->hasFocus());
    bad.level->selectAll();
    QTest::keyClicks(bad.level, "-4000");
    EXPECT_FALSE(bad.apply->isEnabled());
    EXPECT_EQ(text(bad.dialog, "statusText"), "Result not physical, check attenuator and loss.");
    QTest::mouseClick(child<QPushButton>(bad.dialog, "Cancel"), Qt::LeftButton);
    EXPECT_EQ(bad.setup.RxNF + std::to_string(bad.recalculations), "9.990");
    CalDesk flat(1.0);
    EXPECT_EQ(text(flat.dialog, "statusText"), "Source too weak: no rise over the receiver noise.");
}

// Beside the real calculation, given mean squares for a chosen Fa: with a noiseless receiver
// Y is Text / T0, so Fa = 10·log10(Y).
TEST(P372Panel, ShowsTheObservationAgainstTheCurvesAndEmptiesWithTheResults) {
    SetupRecord setup;
    setup.Frequency = "3.600", setup.Bandwidth = "2700", setup.RxNF = "0.00";
    setup.Environment = "Residential";
    Options options;
    CommandStates commands;
    FakeDialogs dialogs;
    NoDevices devices;
    MeasurementSteps steps{setup, options, commands, {dialogs, devices, devices}};
    P372Panel panel;
    QXYSeries* point = nullptr;
    for (QAbstractSeries* s : panel.chart()->series())
        point = s->name() == "This site" ? static_cast<QXYSeries*>(s) : point;
    auto shown = [&] {
        std::string all;
        for (const char* name : {"lblFa", "lblFam", "lblDelta", "lblPlacement", "lblGalactic"})
            all += text(panel, name) + "|";
        return all + std::to_string(point->count());
    };
    // Residential at 3.6 MHz has its median at 57.09 dB; this site is 8 dB quieter.
    steps.S1.Ms = 1e-8, steps.S2.Ms = 2e-8, steps.S3.Ms = 1e-8 + 1e-8 * std::pow(10.0, 4.909);
    steps.S3.Rms = std::sqrt(steps.S3.Ms);
    steps.recalculate();
    panel.refresh(steps, setup);
    EXPECT_EQ(shown(), "49.1|57.1|-8.0|below the lower decile (51.8 to 67.7 dB)|39.2|1");
    EXPECT_NEAR(point->at(0).x() * 100 + point->at(0).y(), 360 + 49.09, 1e-9);
    steps.resetFromStep3(); // a reset empties the panel as it empties the results grid
    panel.refresh(steps, setup);
    EXPECT_EQ(shown(), "|||||0");
}

TEST(WorkingDialog, ShowsProgressModallyInTheLocalesNumbersAndPassesOnCancel) {
    WorkingDialog dialog(nullptr, ',');
    dialog.Begin(92610);
    EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
    dialog.Update(46305, -12.34);
    EXPECT_EQ(dialog.progressBar()->value(), dialog.progressBar()->maximum() / 2);
    EXPECT_EQ(dialog.countLabel()->text() + " " + dialog.levelLabel()->text(),
              "46305 of 92610 samples -12,3 dBFS");
    QTest::mouseClick(dialog.cancelButton(), Qt::LeftButton);
    EXPECT_TRUE(dialog.CancelRequested() && dialog.isVisible()); // until the recording stops
    dialog.End();
    EXPECT_FALSE(dialog.isVisible());
    dialog.Begin(10); // the next recording starts afresh; Esc (the window's close) cancels too
    EXPECT_FALSE(dialog.CancelRequested());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.CancelRequested());
}

// 256 k samples of a 1 kHz tone at 44.1 kHz, loaded as the Utility menu loads the last
// recording: the series follow the view (the decimation is the report's test).
TEST(PlotWindow, SeriesFollowTheZoom) {
    TempDir dir;
    const auto samples = Sine(8000, 1000, 44100, 262144);
    WriteWave((dir.path / "rec.wav").string(), samples, 44100);
    FakeDialogs dialogs;
    auto plot = LoadWavePlot((dir.path / "rec.wav").string(), "External Noise", "2024", dialogs);
    ASSERT_TRUE(plot);
    PlotWindow window(std::move(*plot), dialogs);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    ZoomableChartView* view = window.waveView();
    const QList<QPointF> all = window.waveSeries()->points();
    EXPECT_LE(all.size(), 2 * view->chart()->plotArea().width() + 2);
    // Zoomed in to 50 samples the series holds exactly those (and one either side).
    qobject_cast<QValueAxis*>(view->chart()->axes(Qt::Horizontal).first())
        ->setRange(1000 / 44100.0, 1049 / 44100.0);
    const QList<QPointF> close = window.waveSeries()->points();
    ASSERT_TRUE(close.size() >= 50 && close.size() <= 54) << close.size();
    for (const QPointF& p : close)
        ASSERT_EQ(p.y(), samples[std::lround(p.x() * 44100)] / 32768.0) << p.x();
    QTest::keyClick(view, Qt::Key_Home);
    EXPECT_EQ(window.waveSeries()->points(), all);
}
