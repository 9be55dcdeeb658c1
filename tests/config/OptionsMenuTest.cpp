#include "config/OptionsMenu.h"
#include "platform/Conversions.h"

#include "RecordingEvents.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;
using Calls = std::vector<std::string>;

namespace {

class OptionsMenuTest : public ::testing::Test {
protected:
    Options options;
    SetupRecord record;
    SetupControls controls;
    CommandStates commands;
    test::RecordingEvents events;
    OptionsMenu menu{options, record, controls, commands, events};
};

} // namespace

TEST_F(OptionsMenuTest, GainAndFactorFlipBackAndForth) {
    // Two-decimal values survive the flips (the factor itself: the conversions' test).
    for (const auto& [gain, f] : {std::pair{"-29.99", 0.1}, {"0.00", 7.05}, {"39.99", 2999.9}}) {
        record.AntGain = gain, record.Frequency = std::to_string(f);
        menu.toggleAntennaFactor();
        EXPECT_TRUE(options.AntFact);
        EXPECT_EQ(controls.antGainLabel, "Factor (d&B/m)");
        EXPECT_NEAR(std::stod(record.AntGain), GainToFactor(std::stod(gain), f), 0.005 + 1e-9);
        menu.toggleAntennaFactor();
        EXPECT_EQ(controls.antGainLabel + record.AntGain, std::string("Gain (d&Bi)") + gain);
    }
    EXPECT_TRUE(events.calls.empty()) << "a unit change alone recalculates nothing";
    // The label is a shortcut only while no antenna file holds the box.
    controls.AntGainEnabled = false;
    menu.antGainLabelDoubleClicked();
    EXPECT_FALSE(options.AntFact);
    controls.AntGainEnabled = true;
    menu.antGainLabelDoubleClicked();
    EXPECT_TRUE(options.AntFact);
}

TEST_F(OptionsMenuTest, LimitsOffKeepsResultsVisibleButUnusable) {
    commands.Step2 = commands.Step3 = commands.recordTsvButtonEnabled = true;
    commands.enableOutputCommands(true);
    menu.toggleLimits();
    EXPECT_FALSE(options.Limits);
    EXPECT_EQ(events.calls, (Calls{"recalculate", "Focus Step3"}));
    for (bool enabled :
         {commands.recordTsvButtonEnabled, commands.calibrateRxEnabled, commands.saveTextEnabled,
          commands.recordTsvEnabled, commands.sendTextEnabled, commands.transferEnabled,
          commands.copyTextEnabled})
        EXPECT_FALSE(enabled);
    EXPECT_TRUE(commands.exportGnuplotEnabled && commands.Step2 && commands.Step3);
    events.calls.clear();
    menu.toggleLimits();
    EXPECT_TRUE(options.Limits);
    EXPECT_EQ(events.calls, (Calls{"resetFromStep1", "Focus Step1"}));
    commands.Step3 = false;
    events.calls.clear();
    menu.toggleLimits();
    EXPECT_EQ(events.calls, Calls{"recalculate"}) << "without step 3 the focus stays";
}

TEST_F(OptionsMenuTest, SamplesTogglesTheIntervalBetweenSampleCountAndMilliseconds) {
    record.Interval = record.IntervalTag = "64";
    for (const auto& [samples, interval, label] :
         {std::tuple{false, "500", "Interval (ms)"}, {true, "8", "Samples (k)"}}) {
        menu.intervalLabelDoubleClicked();
        EXPECT_EQ(options.Samples, samples);
        EXPECT_EQ(record.Interval + record.IntervalTag + controls.intervalLabel,
                  std::string(interval) + interval + label);
    }
}
