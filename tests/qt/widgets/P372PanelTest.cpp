#include "qt/widgets/P372Panel.h"
#include "measure/MeasurementSteps.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QAreaSeries>
#include <QChart>
#include <QLabel>
#include <QLineSeries>
#include <QScatterSeries>

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;

namespace {

// The panel beside the real calculation, which is given mean squares for a chosen Fa.
struct Desk {
    SetupRecord setup;
    Options options;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::NoDevices devices;
    MeasurementSteps steps{setup, options, commands, {dialogs, devices, devices}};
    P372Panel panel;

    Desk() {
        setup.Frequency = "3.600";
        setup.Bandwidth = "2700";
        setup.RxNF = "0.00";
        setup.Environment = "Residential";
    }
    // With a noiseless receiver Y is Text / T0, so Fa = 10·log10(Y).
    void observe(double faDb) {
        steps.S1.Ms = 1e-8;
        steps.S2.Ms = 2e-8;
        steps.S3.Ms = 1e-8 + 1e-8 * std::pow(10.0, faDb / 10.0);
        steps.S3.Rms = std::sqrt(steps.S3.Ms);
        steps.recalculate();
        panel.refresh(steps, setup);
    }
    std::string text(const char* name) const {
        auto* label = panel.findChild<QLabel*>(QString::fromLatin1(name));
        EXPECT_NE(label, nullptr) << name;
        return label ? label->text().toStdString() : std::string();
    }
    QScatterSeries* point() const {
        for (QAbstractSeries* s : panel.chart()->series())
            if (auto* scatter = qobject_cast<QScatterSeries*>(s))
                return scatter;
        return nullptr;
    }
    QLineSeries* curve(const char* name) const {
        for (QAbstractSeries* s : panel.chart()->series())
            if (auto* line = qobject_cast<QLineSeries*>(s); line && line->name() == name)
                return line;
        return nullptr;
    }
};

} // namespace

// The figures come from the model (its own tests check the curves' numbers); the panel shows
// them, marks the site on the chart and stands out the environment's curve.
TEST(P372Panel, ShowsTheObservationAgainstTheCurvesAndEmptiesWithTheResults) {
    Desk d;
    d.panel.refresh(d.steps, d.setup);
    EXPECT_EQ(d.text("lblFa"), "");
    ASSERT_NE(d.point(), nullptr);
    EXPECT_EQ(d.point()->count(), 0);
    for (const char* name : {"Business", "Residential", "Rural", "Quiet rural", "Galactic"})
        ASSERT_NE(d.curve(name), nullptr) << name;

    // Residential at 3.6 MHz has its median at 57.09 dB; this site is 8 dB quieter.
    d.observe(49.09);
    EXPECT_EQ(d.text("lblFa") + "|" + d.text("lblFam") + "|" + d.text("lblDelta") + "|" +
                  d.text("lblPlacement") + "|" + d.text("lblGalactic") + "|" + d.text("lblNote"),
              "49.1|57.1|-8.0|below the lower decile (51.8 to 67.7 dB)|39.2|");
    ASSERT_EQ(d.point()->count(), 1);
    EXPECT_NEAR(d.point()->at(0).x(), 3.6, 1e-12);
    EXPECT_NEAR(d.point()->at(0).y(), 49.09, 1e-9);
    EXPECT_GT(d.curve("Residential")->pen().widthF(), d.curve("Business")->pen().widthF());

    d.steps.resetFromStep3(); // a reset empties the panel as it empties the results grid
    d.panel.refresh(d.steps, d.setup);
    EXPECT_EQ(d.text("lblFa") + d.text("lblPlacement"), "");
    EXPECT_EQ(d.point()->count(), 0);
    EXPECT_EQ(d.curve("Residential")->pen().widthF(), d.curve("Business")->pen().widthF());
}
