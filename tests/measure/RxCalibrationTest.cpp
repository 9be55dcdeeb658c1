#include "measure/RxCalibration.h"
#include "platform/Conversions.h"

#include "CalibrationOracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace zav;

namespace {

constexpr double kBoltzmann = test::kBoltzmannJPerK, kT0 = test::kT0Kelvin;

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
                test::ExcessTemperature(source, level, in.bandwidthHz) / (kT0 * (in.yfact - 1.0));
            EXPECT_NEAR(*r.systemNfDb, 10 * std::log10(f), 1e-7) << i;
            // A matched passive loss L at T0 ahead of a receiver of factor Fr gives a cascade
            // of L·Fr: in dB, the loss simply comes off.
            EXPECT_NEAR(*r.receiverNfDb, *r.systemNfDb - in.attenuatorDb - in.lossDb, 1e-7) << i;
            EXPECT_NEAR(*r.noiseFloorDbm,
                        10 * std::log10(kBoltzmann * kT0 * in.bandwidthHz * 1000) + *r.receiverNfDb,
                        1e-7)
                << i;
        }
    }
}

TEST(RxCalibration, RefusesNoRiseAndUnphysicalResults) {
    CalibrationInputs in;
    in.bandwidthHz = 2700;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (double y : {1.0, 0.5, 0.0, -2.0, nan}) {
        in.yfact = y;
        const RxCalibration r = CalibrateReceiver(CalSource::ExcessNoiseRatio, 15, in);
        EXPECT_EQ(r.status, CalStatus::TooWeak) << y;
        EXPECT_FALSE(r.systemNfDb || r.receiverNfDb || r.noiseFloorDbm) << y;
        EXPECT_EQ(r.yFactorDb.has_value(), y > 0) << y;
    }
    in.yfact = 0.5;
    EXPECT_NEAR(*CalibrateReceiver(CalSource::Carrier, -90, in).yFactorDb, -3.0103, 1e-4);

    // A source so weak that the system's noise factor underflows to nothing: the receiver
    // would need an absolute temperature of zero or less.
    in.yfact = 2;
    RxCalibration r = CalibrateReceiver(CalSource::ExcessNoiseRatio, -4000, in);
    EXPECT_EQ(r.status, CalStatus::NotPhysical);
    EXPECT_TRUE(r.yFactorDb && r.systemNfDb);
    EXPECT_FALSE(r.receiverNfDb || r.noiseFloorDbm);
    // An infinite loss leaves nothing to say about the receiver behind it.
    in.attenuatorDb = 4000;
    r = CalibrateReceiver(CalSource::ExcessNoiseRatio, 15, in);
    EXPECT_EQ(r.status, CalStatus::NotPhysical);
    EXPECT_FALSE(r.receiverNfDb);
    // A carrier needs a bandwidth to be spread over.
    in.attenuatorDb = 0;
    in.bandwidthHz = 0;
    EXPECT_EQ(CalibrateReceiver(CalSource::Carrier, -90, in).status, CalStatus::NotPhysical);
}
