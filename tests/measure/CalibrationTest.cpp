#include "measure/CalRxModel.h"
#include "measure/MeasurementSteps.h"
#include "measure/RxCalibration.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace zav;

namespace {

constexpr double kBoltzmann = 1.3806504e-23, kT0 = 290.0;

// A source whose excess temperature over T0 is Tc raises the noise power by
// Y = (T0 + Tsys + Tc) / (T0 + Tsys), so F = Tc / (T0·(Y − 1)); a carrier of P W in B Hz is
// P/(k·B).
double excessTemperature(CalSource source, double level, double bandwidthHz) {
    const double ratio = std::pow(10.0, level / 10.0);
    return source == CalSource::Carrier        ? ratio / 1000 / (kBoltzmann * bandwidthHz)
           : source == CalSource::NoiseDensity ? ratio / 1000 / kBoltzmann
                                               : ratio * kT0;
}

std::vector<std::pair<CalSource, double>> sources(std::mt19937& rng) {
    std::uniform_real_distribution<double> pc(-135, -60), dens(-170, -125), enr(5, 30);
    return {{CalSource::Carrier, pc(rng)},
            {CalSource::NoiseDensity, dens(rng)},
            {CalSource::ExcessNoiseRatio, enr(rng)}};
}

// The real steps and calculation, fed the mean squares a receiver of known noise figure behind
// a known loss gives with the source on its input (any gain, sound card noise on top).
struct Bench {
    SetupRecord setup;
    Options options;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::NoDevices devices;
    MeasurementSteps steps{setup, options, commands, {dialogs, devices, devices}};

    Bench() {
        setup.Frequency = "7.000", setup.Bandwidth = "2700", setup.RxNF = setup.AntGain = "0.00";
        setup.Attenuator = setup.Loss = "0.0";
    }
    void measure(double excessK, double trueNfDb, double lossDb) {
        const double L = std::pow(10.0, lossDb / 10.0);
        const double Te = L * (std::pow(10.0, trueNfDb / 10.0) - 1.0) * kT0 + (L - 1.0) * kT0;
        steps.S1.Ms = 2.5e-7;
        steps.S2.Ms = 2.5e-7 + 3.7e-9 * (kT0 + Te);
        steps.S3.Ms = 2.5e-7 + 3.7e-9 * (kT0 + excessK + Te);
        for (Measurement* m : {&steps.S1, &steps.S2, &steps.S3})
            m->Rms = std::sqrt(m->Ms);
        steps.recalculate();
    }
};

} // namespace

TEST(RxCalibration, AgreesWithFirstPrinciplesAndTheFriisCascade) {
    std::mt19937 rng(372);
    std::uniform_real_distribution<double> y(1.02, 3000), b(100, 200000), att(0, 20), loss(0, 10);
    for (int i = 0; i < 300; ++i) {
        CalibrationInputs in;
        in.yfact = y(rng), in.bandwidthHz = b(rng), in.attenuatorDb = att(rng);
        in.lossDb = loss(rng);
        for (const auto& [source, level] : sources(rng)) {
            const RxCalibration r = CalibrateReceiver(source, level, in);
            ASSERT_EQ(r.status, CalStatus::Done) << i;
            const double f =
                excessTemperature(source, level, in.bandwidthHz) / (kT0 * (in.yfact - 1.0));
            EXPECT_NEAR(*r.systemNfDb, 10 * std::log10(f), 1e-7) << i;
            // A matched loss L at T0 ahead of a receiver of factor Fr cascades to L·Fr.
            EXPECT_NEAR(*r.receiverNfDb, *r.systemNfDb - in.attenuatorDb - in.lossDb, 1e-7) << i;
            EXPECT_NEAR(*r.noiseFloorDbm,
                        10 * std::log10(kBoltzmann * kT0 * in.bandwidthHz * 1000) + *r.receiverNfDb,
                        1e-7);
        }
    }
}

TEST(RxCalibration, RefusesNoRiseAndUnphysicalResults) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        CalSource source;
        double level, yfact, bandwidth, attenuator;
        CalStatus status;
    };
    const auto enr = CalSource::ExcessNoiseRatio;
    const Case cases[] = {
        {enr, 15, 1.0, 2700, 0, CalStatus::TooWeak},
        {enr, 15, 0.5, 2700, 0, CalStatus::TooWeak},
        {enr, 15, -2, 2700, 0, CalStatus::TooWeak},
        {enr, 15, nan, 2700, 0, CalStatus::TooWeak},
        {enr, 15, 1.001, 2700, 0, CalStatus::Done},       // the least rise still counts
        {enr, -4000, 2, 2700, 0, CalStatus::NotPhysical}, // a system temperature of zero
        {enr, 15, 2, 2700, 4000, CalStatus::NotPhysical}, // an infinite loss hides the receiver
        {CalSource::Carrier, -90, 2, 0, 0, CalStatus::NotPhysical}, // spread over no bandwidth
    };
    for (const Case& c : cases) {
        CalibrationInputs in;
        in.yfact = c.yfact, in.bandwidthHz = c.bandwidth, in.attenuatorDb = c.attenuator;
        const RxCalibration r = CalibrateReceiver(c.source, c.level, in);
        SCOPED_TRACE(testing::Message() << c.yfact << " " << c.level);
        EXPECT_EQ(r.status, c.status);
        EXPECT_EQ(r.receiverNfDb.has_value() && r.noiseFloorDbm.has_value(),
                  c.status == CalStatus::Done);
        if (c.status == CalStatus::TooWeak) {
            EXPECT_TRUE(!r.systemNfDb && r.yFactorDb.has_value() == (c.yfact > 0));
        }
    }
}

TEST(CalRxModel, CalibrateApplyRecalculateRoundTrip) {
    std::mt19937 rng(290);
    std::uniform_real_distribution<double> nf(0.5, 20), att(0, 20), loss(0, 6), bw(200, 200000);
    int checked = 0;
    for (int i = 0; i < 20; ++i) {
        for (const auto& [source, level] : sources(rng)) {
            Bench b;
            b.setup.Bandwidth = Format(bw(rng), "0");
            b.setup.Attenuator = Format(att(rng), "0.0");
            b.setup.Loss = Format(loss(rng), "0.0");
            b.setup.RxNF = "3.00"; // whatever the set-up said before the calibration
            const double B = Number(b.setup.Bandwidth), trueNf = nf(rng);
            const double excess = excessTemperature(source, level, B);
            b.measure(excess, trueNf, Number(b.setup.Attenuator) + Number(b.setup.Loss));
            if (b.steps.yfact < 1.001) // a source lost in the noise: nothing to calibrate
                continue;
            ASSERT_TRUE(b.commands.calibrateRxEnabled) << i;
            CalRxModel m(b.setup, b.steps.yfact, b.dialogs, [&b] { b.steps.recalculate(); });
            m.open();
            m.chooseSource(source);
            m.CalLevel = Format(level, "0.000000");
            m.calibrationLevelChanged();
            ASSERT_TRUE(m.ApplyEnabled) << i << " " << m.statusText;
            m.applyCalibration();
            EXPECT_TRUE(m.CloseRequested);
            EXPECT_EQ(b.setup.RxNF, Format(trueNf, "0.00")) << i;
            // The recalculated RMS power is the source plus its own thermal noise, to within
            // what two decimals of the noise figure can hold.
            EXPECT_NEAR(Number(b.steps.gridCalc.Text(9)),
                        10 * std::log10((excess + kT0) * kBoltzmann * B * 1000), 0.0101)
                << i;
            ++checked;
        }
    }
    EXPECT_GT(checked, 50);
}

// Refusals, focus and Cancel through the real dialog: tests/qt/widgets/CalRxDialogTest.cpp.
TEST(CalRxModel, ApplyRefusesABadLevelAndWorksInTheWindowsSeparator) {
    Bench c;
    c.setup.Frequency = "7,000", c.setup.Attenuator = "2,5", c.setup.Loss = "0,5";
    c.steps.decimalSeparator = ',';
    c.measure(20 * kT0, 7.25, 3.0);
    CalRxModel comma(
        c.setup, c.steps.yfact, c.dialogs, [] {}, ',');
    comma.chooseSource(CalSource::ExcessNoiseRatio);
    comma.CalLevel = "12dB";
    comma.calibrationLevelChanged();
    comma.applyCalibration();
    EXPECT_EQ(c.dialogs.texts(), std::vector<std::string>{"Level must be a number"});
    EXPECT_FALSE(comma.CloseRequested || comma.ApplyEnabled);
    comma.CalLevel = Format(10 * std::log10(20.0), "0.000000", ',');
    comma.calibrationLevelChanged();
    comma.applyCalibration();
    EXPECT_EQ(comma.receiverNfText + "|" + c.setup.RxNF, "7,25|7,25");
}
