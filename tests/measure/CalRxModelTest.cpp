#include "measure/CalRxModel.h"
#include "measure/MeasurementSteps.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include "CalibrationOracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace zav;

namespace {

constexpr double kBoltzmann = test::kBoltzmannJPerK, kT0 = test::kT0Kelvin;

// The real steps and calculation, fed with mean squares that a receiver of known noise figure
// behind a known loss would give with the calibration source on its input.
struct Bench {
    SetupRecord setup;
    Options options;
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::NoDevices devices;
    MeasurementSteps steps{setup, options, commands, {dialogs, devices, devices}};

    Bench() {
        setup.Frequency = "7.000";
        setup.Bandwidth = "2700";
        setup.RxNF = "0.00";
        setup.AntGain = "0.00";
        setup.Attenuator = "0.0";
        setup.Loss = "0.0";
    }

    // Tc: the source's excess temperature over T0; the receiver's true figure and the loss
    // ahead of it decide what steps 2 and 3 read (arbitrary gain, sound card noise on top).
    void measure(double excessK, double trueNfDb, double lossDb) {
        const double L = std::pow(10.0, lossDb / 10.0);
        const double Tr = (std::pow(10.0, trueNfDb / 10.0) - 1.0) * kT0;
        const double Te = L * Tr + (L - 1.0) * kT0; // referred to the injection point
        const double gain = 3.7e-9, soundCard = 2.5e-7;
        steps.S1.Ms = soundCard;
        steps.S2.Ms = soundCard + gain * (kT0 + Te);
        steps.S3.Ms = soundCard + gain * (kT0 + excessK + Te);
        for (Measurement* m : {&steps.S1, &steps.S2, &steps.S3})
            m->Rms = std::sqrt(m->Ms);
        steps.recalculate();
    }

    CalRxModel model() {
        return CalRxModel(setup, steps.yfact, dialogs, [this] { steps.recalculate(); });
    }
};

} // namespace

TEST(CalRxModel, CalibrateApplyRecalculateRoundTrip) {
    std::mt19937 rng(290);
    std::uniform_real_distribution<double> nf(0.5, 20), att(0, 20), loss(0, 6), bw(200, 200000),
        pc(-135, -60), dens(-170, -125), enr(5, 30);
    int checked = 0;
    for (int i = 0; i < 150; ++i) {
        const std::pair<CalSource, double> cases[] = {{CalSource::Carrier, pc(rng)},
                                                      {CalSource::NoiseDensity, dens(rng)},
                                                      {CalSource::ExcessNoiseRatio, enr(rng)}};
        for (const auto& [source, level] : cases) {
            Bench b;
            b.setup.Bandwidth = Format(bw(rng), "0");
            b.setup.Attenuator = Format(att(rng), "0.0");
            b.setup.Loss = Format(loss(rng), "0.0");
            b.setup.RxNF = "3.00"; // whatever the set-up said before the calibration
            const double B = Number(b.setup.Bandwidth);
            const double lossDb = Number(b.setup.Attenuator) + Number(b.setup.Loss);
            const double trueNf = nf(rng);
            const double excess = test::ExcessTemperature(source, level, B);
            b.measure(excess, trueNf, lossDb);
            if (b.steps.yfact < 1.001) // a source lost in the noise: nothing to calibrate
                continue;
            ASSERT_TRUE(b.commands.calibrateRxEnabled) << i;

            CalRxModel m = b.model();
            m.open();
            m.chooseSource(source);
            m.CalLevel = Format(level, "0.000000");
            m.calibrationLevelChanged();
            ASSERT_TRUE(m.ApplyEnabled) << i << " " << m.statusText;
            EXPECT_NEAR(*m.result.receiverNfDb, trueNf, 1e-6) << i;
            m.applyCalibration();
            EXPECT_TRUE(m.CloseRequested);
            EXPECT_EQ(b.setup.RxNF, Format(trueNf, "0.00")) << i;

            // The recalculated RMS power is the source plus its own thermal noise, to within
            // what two decimals of the noise figure can hold (0.005 dB of system temperature).
            const double expected =
                10 * std::log10(excess * kBoltzmann * B * 1000 + kBoltzmann * kT0 * B * 1000);
            ASSERT_TRUE(b.steps.lastCalculation.rows[1]) << i;
            EXPECT_NEAR(b.steps.lastCalculation.rows[1]->rxDbm, expected, 0.0051) << i;
            EXPECT_NEAR(Number(b.steps.gridCalc.Text(9)), expected, 0.0101) << i;
            ++checked;
        }
    }
    EXPECT_GT(checked, 400);
}

TEST(CalRxModel, LevelChecksRefusalsApplyAndCancel) {
    Bench b;
    b.measure(10 * kT0, 6.0, 0.0);
    int recalculated = 0;
    CalRxModel m(b.setup, b.steps.yfact, b.dialogs, [&] { ++recalculated; });
    m.open();
    // A 6 dB receiver has F = 3.98: Y = 1 + 10 / F.
    EXPECT_EQ(m.yFactorText, Format(10 * std::log10(1 + 10 / std::pow(10.0, 0.6)), "0.00"));
    for (const char* bad : {"", "abc", "12dB", "-"}) {
        m.CalLevel = bad;
        m.calibrationLevelChanged();
        EXPECT_FALSE(m.ApplyEnabled) << bad;
        EXPECT_EQ(m.receiverNfText, "") << bad;
        EXPECT_TRUE(b.dialogs.messages.empty()); // typing never brings up a box
        bool cancel = false;
        m.calibrationLevelLeft(cancel);
        EXPECT_TRUE(cancel && m.CalLevelFocus) << bad;
        m.CalLevelFocus = false;
        EXPECT_EQ(b.dialogs.texts(), std::vector<std::string>{"Level must be a number"});
        EXPECT_EQ(b.dialogs.messages.back().title, "Value error:");
        m.applyCalibration(); // refuses the same way and changes nothing
        EXPECT_EQ(b.dialogs.messages.size(), 2u);
        EXPECT_FALSE(m.CloseRequested);
        b.dialogs.messages.clear();
    }

    // A level so low that the system would need a temperature below absolute zero.
    m.chooseSource(CalSource::ExcessNoiseRatio);
    m.CalLevel = "-4000";
    m.calibrationLevelChanged();
    EXPECT_EQ(m.statusText, CalRxModel::kNotPhysical);
    EXPECT_FALSE(m.ApplyEnabled);
    m.applyCalibration();
    m.CalLevel = " 1e1 ";
    m.calibrationLevelChanged();
    EXPECT_EQ(m.statusText, "");
    EXPECT_EQ(m.receiverNfText, "6.00");
    m.cancelPressed();
    EXPECT_TRUE(m.CloseRequested);
    EXPECT_EQ(b.setup.RxNF, "0.00");
    EXPECT_EQ(recalculated, 0);

    // Step 3 below step 2: the calculation still gives results, but the source made no rise.
    Bench weak;
    weak.measure(-0.2 * kT0 * std::pow(10.0, 0.6), 6.0, 0.0);
    ASSERT_TRUE(weak.commands.calibrateRxEnabled);
    CalRxModel w = weak.model();
    w.open();
    EXPECT_EQ(w.statusText, CalRxModel::kTooWeak); // before any level is typed
    EXPECT_EQ(w.yFactorText, "-0.97");
    w.CalLevel = "-80";
    w.calibrationLevelChanged();
    EXPECT_FALSE(w.ApplyEnabled);
    EXPECT_EQ(w.receiverNfText, "");
}

TEST(CalRxModel, UsesTheDecimalSeparator) {
    Bench b;
    b.steps.decimalSeparator = ',';
    b.setup.Frequency = "7,000";
    b.setup.Attenuator = "2,5";
    b.setup.Loss = "0,5";
    b.measure(20 * kT0, 7.25, 3.0);
    CalRxModel m(
        b.setup, b.steps.yfact, b.dialogs, [&] { b.steps.recalculate(); }, ',');
    m.chooseSource(CalSource::ExcessNoiseRatio);
    m.CalLevel = Format(10 * std::log10(20.0), "0.000000", ',');
    m.calibrationLevelChanged();
    EXPECT_EQ(m.receiverNfText, "7,25");
    m.applyCalibration();
    EXPECT_EQ(b.setup.RxNF, "7,25");
}
