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

// The Y-factor method from first principles: a source whose excess temperature over T0 is Tc
// raises the noise power by Y = (T0 + Tsys + Tc) / (T0 + Tsys), so F = Tc / (T0·(Y − 1)).
// Tc from a carrier of P watts in B Hz is P / (k·B).
double excessTemperature(CalSource source, double level, double bandwidthHz) {
    const double watts = std::pow(10.0, level / 10.0) / 1000.0;
    switch (source) {
    case CalSource::Carrier:
        return watts / (kBoltzmann * bandwidthHz);
    case CalSource::NoiseDensity:
        return watts / kBoltzmann;
    case CalSource::ExcessNoiseRatio:
        break;
    }
    return std::pow(10.0, level / 10.0) * kT0;
}

// The real steps and calculation, fed with the mean squares a receiver of known noise figure
// behind a known loss gives with the source on its input (any gain, sound card noise on top).
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
    void measure(double excessK, double trueNfDb, double lossDb) {
        const double L = std::pow(10.0, lossDb / 10.0);
        const double Te = L * (std::pow(10.0, trueNfDb / 10.0) - 1.0) * kT0 + (L - 1.0) * kT0;
        const double gain = 3.7e-9, soundCard = 2.5e-7;
        steps.S1.Ms = soundCard;
        steps.S2.Ms = soundCard + gain * (kT0 + Te);
        steps.S3.Ms = soundCard + gain * (kT0 + excessK + Te);
        for (Measurement* m : {&steps.S1, &steps.S2, &steps.S3})
            m->Rms = std::sqrt(m->Ms);
        steps.CalcCalc();
    }
};

} // namespace

TEST(RxCalibration, AgreesWithFirstPrinciplesAndTheFriisCascade) {
    std::mt19937 rng(372);
    std::uniform_real_distribution<double> y(1.02, 3000), b(100, 200000), att(0, 20), loss(0, 10),
        pc(-140, -50), dens(-175, -120), enr(0, 35);
    for (int i = 0; i < 300; ++i) {
        CalibrationInputs in;
        in.yfact = y(rng);
        in.bandwidthHz = b(rng);
        in.attenuatorDb = att(rng);
        in.lossDb = loss(rng);
        const std::pair<CalSource, double> cases[] = {{CalSource::Carrier, pc(rng)},
                                                      {CalSource::NoiseDensity, dens(rng)},
                                                      {CalSource::ExcessNoiseRatio, enr(rng)}};
        for (const auto& [source, level] : cases) {
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
    CalibrationInputs in;
    in.bandwidthHz = 2700;
    for (double y : {1.0, 0.5, 0.0, -2.0, std::numeric_limits<double>::quiet_NaN()}) {
        in.yfact = y;
        const RxCalibration r = CalibrateReceiver(CalSource::ExcessNoiseRatio, 15, in);
        EXPECT_EQ(r.status, CalStatus::TooWeak) << y;
        EXPECT_FALSE(r.systemNfDb || r.receiverNfDb || r.noiseFloorDbm) << y;
        EXPECT_EQ(r.yFactorDb.has_value(), y > 0) << y;
    }
    in.yfact = 1.001; // the least rise still counts
    EXPECT_EQ(CalibrateReceiver(CalSource::ExcessNoiseRatio, 15, in).status, CalStatus::Done);
    // So weak that the system's noise factor underflows: a temperature of zero or less.
    in.yfact = 2;
    RxCalibration r = CalibrateReceiver(CalSource::ExcessNoiseRatio, -4000, in);
    EXPECT_EQ(r.status, CalStatus::NotPhysical);
    EXPECT_TRUE(r.yFactorDb && r.systemNfDb);
    EXPECT_FALSE(r.receiverNfDb || r.noiseFloorDbm);
    in.attenuatorDb = 4000; // an infinite loss hides the receiver
    EXPECT_EQ(CalibrateReceiver(CalSource::ExcessNoiseRatio, 15, in).status,
              CalStatus::NotPhysical);
    in.attenuatorDb = 0; // a carrier needs a bandwidth to be spread over
    in.bandwidthHz = 0;
    EXPECT_EQ(CalibrateReceiver(CalSource::Carrier, -90, in).status, CalStatus::NotPhysical);
}

TEST(CalRxModel, CalibrateApplyRecalculateRoundTrip) {
    std::mt19937 rng(290);
    std::uniform_real_distribution<double> nf(0.5, 20), att(0, 20), loss(0, 6), bw(200, 200000),
        pc(-135, -60), dens(-170, -125), enr(5, 30);
    int checked = 0;
    for (int i = 0; i < 20; ++i) {
        const std::pair<CalSource, double> cases[] = {{CalSource::Carrier, pc(rng)},
                                                      {CalSource::NoiseDensity, dens(rng)},
                                                      {CalSource::ExcessNoiseRatio, enr(rng)}};
        for (const auto& [source, level] : cases) {
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
            ASSERT_TRUE(b.commands.MenuCalRx) << i;
            CalRxModel m(b.setup, b.steps.yfact, b.dialogs, [&b] { b.steps.CalcCalc(); });
            m.Form_Load();
            m.Source_Click(source);
            m.CalLevel = Format(level, "0.000000");
            m.CalLevel_Change();
            ASSERT_TRUE(m.ApplyEnabled) << i << " " << m.lblStatus;
            m.Apply_Click();
            EXPECT_TRUE(m.CloseRequested);
            EXPECT_EQ(b.setup.RxNF, Format(trueNf, "0.00")) << i;
            // The recalculated RMS power is the source plus its own thermal noise, to within
            // what two decimals of the noise figure can hold.
            const double expected = 10 * std::log10((excess + kT0) * kBoltzmann * B * 1000);
            EXPECT_NEAR(Number(b.steps.gridCalc.Text(9)), expected, 0.0101) << i;
            ++checked;
        }
    }
    EXPECT_GT(checked, 50);
}

TEST(CalRxModel, BadLevelsAreRefusedAndCancelChangesNothing) {
    Bench b;
    b.measure(10 * kT0, 6.0, 0.0);
    int recalculated = 0;
    CalRxModel m(b.setup, b.steps.yfact, b.dialogs, [&] { ++recalculated; });
    m.Form_Load();
    // A 6 dB receiver has F = 3.98: Y = 1 + 10 / F.
    EXPECT_EQ(m.lblYFactor, Format(10 * std::log10(1 + 10 / std::pow(10.0, 0.6)), "0.00"));
    for (const char* bad : {"", "abc", "12dB"}) {
        m.CalLevel = bad;
        m.CalLevel_Change();
        EXPECT_FALSE(m.ApplyEnabled) << bad;
        EXPECT_EQ(m.lblReceiverNF, "") << bad;
        EXPECT_TRUE(b.dialogs.messages.empty()); // typing never brings up a box
        bool cancel = false;
        m.CalLevel_Validate(cancel);
        EXPECT_TRUE(cancel && m.CalLevelFocus) << bad;
        m.CalLevelFocus = false;
        m.Apply_Click(); // refuses the same way and changes nothing
        EXPECT_EQ(b.dialogs.texts(), std::vector<std::string>(2, "Level must be a number"));
        EXPECT_FALSE(m.CloseRequested);
        b.dialogs.messages.clear();
    }
    m.Source_Click(CalSource::ExcessNoiseRatio);
    m.CalLevel = "-4000"; // the system would need a temperature below absolute zero
    m.CalLevel_Change();
    EXPECT_EQ(m.lblStatus, CalRxModel::kNotPhysical);
    EXPECT_FALSE(m.ApplyEnabled);
    m.CalLevel = " 1e1 ";
    m.CalLevel_Change();
    EXPECT_EQ(m.lblStatus + "|" + m.lblReceiverNF, "|6.00");
    m.Cancel_Click();
    EXPECT_TRUE(m.CloseRequested);
    EXPECT_EQ(b.setup.RxNF, "0.00");
    EXPECT_EQ(recalculated, 0);

    // Step 3 below step 2: results, but the source made no rise.
    Bench weak;
    weak.measure(-0.2 * kT0 * std::pow(10.0, 0.6), 6.0, 0.0);
    CalRxModel w(weak.setup, weak.steps.yfact, weak.dialogs, [] {});
    w.Form_Load();
    EXPECT_EQ(w.lblStatus, CalRxModel::kTooWeak); // before any level is typed
    EXPECT_EQ(w.lblYFactor, "-0.97");

    // The window's decimal separator, in what it reads and what it writes back.
    Bench c;
    c.setup.Frequency = "7,000";
    c.setup.Attenuator = "2,5";
    c.setup.Loss = "0,5";
    c.steps.decimalSeparator = ',';
    c.measure(20 * kT0, 7.25, 3.0);
    CalRxModel comma(
        c.setup, c.steps.yfact, c.dialogs, [] {}, ',');
    comma.Source_Click(CalSource::ExcessNoiseRatio);
    comma.CalLevel = Format(10 * std::log10(20.0), "0.000000", ',');
    comma.CalLevel_Change();
    comma.Apply_Click();
    EXPECT_EQ(comma.lblReceiverNF + "|" + c.setup.RxNF, "7,25|7,25");
}
