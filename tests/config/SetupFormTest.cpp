#include "config/SetupForm.h"
#include "config/OptionsMenu.h"
#include "platform/Conversions.h"

#include "RecordingEvents.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;
using zav::test::FakeDialogs;
using zav::test::RecordingEvents;
using Calls = std::vector<std::string>;
using F = SetupField;

namespace {

// The set-up boxes and the options menu of one window.
class SetupFormTest : public ::testing::Test {
protected:
    SetupRecord record;
    Options options;
    SetupControls controls;
    CommandStates commands;
    FakeDialogs dialogs;
    RecordingEvents events;
    SetupForm form{record, options, dialogs, events};
    OptionsMenu menu{options, record, controls, commands, events};

    // Types `text` into the box and leaves it; true when the box keeps the focus.
    bool leave(F field, const std::string& text) {
        bool cancel = false;
        form.fieldLeft(type(field, text), cancel);
        return cancel;
    }
    // Types `text` and presses Enter; returns what became of the key.
    KeyOutcome enter(F field, const std::string& text, Key key = Key::Enter) {
        return form.keyPressed(type(field, text), key);
    }
    F type(F field, const std::string& text) {
        dialogs.messages.clear(), events.calls.clear();
        return FieldText(record, field) = text, field;
    }
    // The one "Value error:" box shown, or "" when none was.
    std::string shown() const {
        if (dialogs.messages.empty())
            return "";
        EXPECT_EQ(dialogs.messages.size(), 1u);
        const auto& m = dialogs.messages[0];
        EXPECT_TRUE(m.title == "Value error:" && m.icon == MessageIcon::None);
        return m.text;
    }
};

const char* const kBandwidth = "Bandwidth must be > 0 and  <= 200000";
const char* const kFrequency = "Frequency must be >= 0.1 and <= 10000";
const char* const kSamples = "Samples must be 8, 16, 32, 64, 128, or 256";

using OptionsMenuTest = SetupFormTest;

} // namespace

TEST_F(SetupFormTest, LeavingABoxTidiesChecksAndActs) {
    struct Case {
        F field;
        const char* typed;
        const char* after; // the box's text afterwards
        const char* message;
        Calls calls;
    };
    const Calls calc{"recalculate"}, none{}, reset1{"resetFromStep1"}, reset3{"resetFromStep3"};
    record.AGCTag = "20", record.IntervalTag = "8", options.Samples = true;
    const Case cases[] = {{F::Bandwidth, "2700.6", "2701", "", calc},
                          {F::Bandwidth, "0", "0", kBandwidth, none},
                          {F::Frequency, "10000", "10000.000", "", calc},
                          {F::Frequency, "0.0996", "0.100", "", calc},
                          {F::Frequency, "0.09", "0.090", kFrequency, none},
                          {F::Frequency, "10000.001", "10000.001", kFrequency, none},
                          {F::RxNF, "-3", "0.00", "", calc},
                          {F::RxNF, "3.456", "3.46", "", calc},
                          {F::Attenuator, "abc", "0.0", "", calc},
                          {F::Loss, "12.25", "12.3", "", calc},
                          {F::AntGain, "&h10", "16.00", "", calc},
                          {F::lat, "abc", "", "", none},
                          {F::lon, "149.1234567", "149.123457", "", none},
                          {F::AGC, "9", "9", "AGC threshold must be >= 10", none},
                          {F::AGC, "30", "30", "", reset3},
                          {F::AGC, "30", "30", "", none},
                          {F::AGC, "29.6", "30", "", none},
                          {F::AGC, "9.5", "10", "", reset3},
                          {F::Interval, "  32  ", "32", "", reset1},
                          {F::Interval, "32 ", "32", "", none},
                          {F::Interval, "12", "12", kSamples, none},
                          {F::Interval, "32.0", "32.0", kSamples, none},
                          {F::Interval, "256", "256", "", reset1},
                          {F::Interval, "512", "512", kSamples, none}};
    for (const Case& c : cases) {
        const bool cancel = leave(c.field, c.typed);
        const std::string where = std::to_string(static_cast<int>(c.field)) + " " + c.typed;
        EXPECT_EQ(FieldText(record, c.field), c.after) << where;
        EXPECT_EQ(shown(), c.message) << where;
        EXPECT_EQ(cancel, *c.message != '\0') << where;
        EXPECT_EQ(events.calls, c.calls) << where;
    }
    EXPECT_EQ(record.AGCTag + record.IntervalTag, "10256");

    options.Samples = false;
    for (const char* bad : {"499.99", "10001"}) {
        EXPECT_TRUE(leave(F::Interval, bad));
        EXPECT_EQ(shown(), "Interval must be >= 500 and <= 10,0000");
    }
    EXPECT_FALSE(leave(F::Interval, "10000"));
    EXPECT_FALSE(leave(F::Interval, " 500 ")); // no clean-up in this mode: a new text
    EXPECT_EQ(record.IntervalTag + events.calls.at(0), " 500 resetFromStep1");
}

TEST_F(SetupFormTest, FrequencyFetchesTheAntennaFactorWhileAFileIsLoaded) {
    double askedAt = 0;
    events.antenna = [&](double f) { return 10 + (askedAt = f) / 3; };
    record.AntGain = "1.00";
    EXPECT_FALSE(leave(F::Frequency, "14.2"));
    EXPECT_DOUBLE_EQ(askedAt, 14.2);
    EXPECT_EQ(record.AntGain, "14.73");
    EXPECT_EQ(events.calls, (Calls{"AntennaValueAt", "recalculate"}));
    EXPECT_TRUE(leave(F::Frequency, "20000"));
    EXPECT_EQ(record.AntGain, "14.73");
}

TEST_F(SetupFormTest, EnterChecksSwallowsTheKeyAndSelectsAgain) {
    const std::pair<F, const char*> checked[] = {{F::RxNF, "12.35"},       {F::Bandwidth, "12"},
                                                 {F::Frequency, "12.345"}, {F::Attenuator, "12.3"},
                                                 {F::lat, "12.345000"},    {F::AGC, "12"},
                                                 {F::Loss, "12.3"},        {F::AntGain, "12.35"}};
    for (const auto& [f, after] : checked) {
        form.SelectText(f, 0, 0);
        EXPECT_EQ(enter(f, "12.345"), KeyOutcome::Swallowed);
        EXPECT_EQ(FieldText(record, f), after);
        const auto selected = form.Selection(f);
        EXPECT_EQ(std::pair(selected.SelStart, selected.SelLength),
                  std::pair(0, int(strlen(after))));
    }
    // Nothing is filtered while typing; boxes without checks leave Enter alone.
    EXPECT_EQ(enter(F::Frequency, "7", Key::Other), KeyOutcome::PassedOn);
    EXPECT_EQ(enter(F::Tester, "x"), KeyOutcome::PassedOn);
    EXPECT_TRUE(events.calls.empty() && dialogs.messages.empty());

    // Enter in the interval box warns in its own words and takes a new length only on leaving.
    options.Samples = true, record.IntervalTag = "8";
    EXPECT_EQ(enter(F::Interval, "12"), KeyOutcome::Swallowed);
    EXPECT_EQ(shown(), "Samples must be 8, 16, 32, 64, 128 or 256");
    EXPECT_EQ(enter(F::Interval, " 64 "), KeyOutcome::Swallowed);
    EXPECT_TRUE(shown().empty() && events.calls.empty() && record.IntervalTag == "8");
    options.Samples = false;
    EXPECT_EQ(enter(F::Interval, "499"), KeyOutcome::Swallowed);
    EXPECT_EQ(shown(), "Interval must be >= 500 and <= 10000");
}

TEST_F(SetupFormTest, EnteringABoxSelectsItsTextAndTheLocaleSeparatorIsUsed) {
    // At most 100 characters, counted as characters, not bytes.
    for (const auto& [text, length] :
         {std::pair{std::string(150, 'x'), 100}, {"J\xC3\xBCrgen M\xC3\xBCller", 13}}) {
        form.fieldFocused(type(F::Tester, text));
        EXPECT_EQ(form.Selection(F::Tester).SelLength, length);
    }

    form.decimalSeparator = ',';
    for (const auto& [typed, after] : {std::pair{"2,5", "2,5"}, {"2.5", "0,0"}}) {
        leave(F::Loss, typed);
        EXPECT_EQ(record.Loss, std::string(after));
    }
    EXPECT_FALSE(leave(F::Frequency, "7,1"));
    EXPECT_EQ(record.Frequency, "7,100");
    EXPECT_TRUE(leave(F::Frequency, "0,09"));
}

TEST_F(OptionsMenuTest, GainAndFactorFlipBackAndForth) {
    // Two-decimal values survive the flips (the factor itself: the conversions' test).
    for (const auto& [gain, f] : {std::pair{"-29.99", 0.1}, {"0.00", 7.05}, {"39.99", 2999.9}}) {
        record.AntGain = gain, record.Frequency = std::to_string(f);
        menu.toggleAntennaFactor();
        EXPECT_EQ(controls.antGainLabel + std::to_string(options.AntFact), "Factor (d&B/m)1");
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
    EXPECT_EQ(events.calls, (Calls{"recalculate", "Focus Step3"}));
    for (bool enabled :
         {commands.recordTsvButtonEnabled, commands.calibrateRxEnabled, commands.saveTextEnabled,
          commands.recordTsvEnabled, commands.sendTextEnabled, commands.transferEnabled,
          commands.copyTextEnabled})
        EXPECT_FALSE(enabled);
    EXPECT_TRUE(commands.exportGnuplotEnabled && commands.Step2 && commands.Step3);
    events.calls.clear();
    menu.toggleLimits();
    EXPECT_EQ(events.calls, (Calls{"resetFromStep1", "Focus Step1"}));
    commands.Step3 = false, events.calls.clear();
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
