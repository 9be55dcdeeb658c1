#include "measure/MeasurementSteps.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <fstream>
#include <sstream>

using namespace zav;

namespace {

constexpr int kRate = 8000;
constexpr std::size_t kCount = 8000;

// Plays the part of the sound card: each step "records" the next queued signal.
struct QueuedInput : AudioInput {
    std::deque<std::vector<std::int16_t>> signals;
    std::vector<RecordingRequest> requests;
    bool fail = false;
    RecordingStatus failure = RecordingStatus::Failed;
    bool unusable = false; // "records" a file the analysis refuses
    Recording RecordWave(const RecordingRequest& request) override {
        requests.push_back(request);
        if (unusable) {
            std::ofstream(request.wavefile, std::ios::binary) << "RIFF....WAVEnothing";
            return {RecordingStatus::Recorded, 8000, kRate, 1790000000};
        }
        if (fail || signals.empty())
            return {failure, 0, 0, 0};
        test::WriteWave(request.wavefile, signals.front(), kRate);
        const auto n = static_cast<std::int64_t>(signals.front().size());
        signals.pop_front();
        return {RecordingStatus::Recorded, n, kRate, 1790000000};
    }
};

struct CountingBeeper : Beeper {
    int beeps = 0;
    void Beep(int, int) override { ++beeps; }
};

struct Bench {
    SetupRecord setup;
    Options options;
    CommandStates commands;
    test::FakeDialogs dialogs;
    QueuedInput input;
    CountingBeeper beeper;
    MeasurementSteps steps{setup, options, commands, {dialogs, input, beeper}};
    test::TempDir dir;
    int afterStep3Calls = 0;

    Bench() {
        steps.TempWave = (dir.path / "~0000ABCD").string();
        steps.afterStep3 = [this] { ++afterStep3Calls; };
        setup.Frequency = "7.000";
        setup.Bandwidth = "2700";
        setup.RxNF = "0.00";
        setup.AntGain = "0.00";
        setup.Attenuator = "0.0";
        setup.Loss = "0.0";
        setup.AGC = "30";
        setup.Interval = "8";
    }

    void queue(double rmsCounts, unsigned seed) {
        input.signals.push_back(test::Noise(rmsCounts, kCount, seed));
    }
    // By default a quiet sound card, a receiver well above it and an external reading 20 dB
    // higher.
    void runAllSteps(double externalRms = 1000, double receiverRms = 100) {
        queue(3, 1);
        queue(receiverRms, 2);
        queue(externalRms, 3);
        steps.Step1();
        steps.Step2();
        steps.Step3();
    }
};

bool gridCalcEmpty(const MeasurementSteps& s) {
    for (int i = 5; i < 20; ++i)
        if (i % 4 != 0 && !s.gridCalc.Text(i).empty())
            return false;
    return true;
}

} // namespace

TEST(MeasurementSteps, GoodObservationFillsBothGridsAndEnablesOutputs) {
    Bench b;
    b.options.Verbose = false;
    b.runAllSteps();
    EXPECT_TRUE(b.commands.Step2 && b.commands.Step3);
    EXPECT_TRUE(b.dialogs.messages.empty());
    EXPECT_EQ(b.afterStep3Calls, 1);
    EXPECT_EQ(b.beeper.beeps, 3);
    EXPECT_EQ(b.steps.shownTitle, "External Noise");

    EXPECT_EQ(b.steps.gridMeas.Text(2, 3).size(), 7u); // five decimals: 0.0xxxx
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 3), CellColour::WindowText);

    // With NF 0 dB and no loss, Text = Y·T0: check the RMS power against Y directly.
    const double y = (b.steps.S3.Ms - b.steps.S1.Ms) / (b.steps.S2.Ms - b.steps.S1.Ms);
    EXPECT_DOUBLE_EQ(b.steps.yfact, y);
    const double p = 10 * std::log10(1.3806504e-23 * 290 * y * 2700) + 30;
    EXPECT_NEAR(std::stod(b.steps.gridCalc.Text(9)), p, 0.005);
    // The textbook half-wave-dipole relation E = Fa + 20·log f + 10·log b − 99.0 dB(µV/m),
    // through the whole chain (gain 0 dBi here, so 2.15 dB more than a dipole's).
    const double fa = 10 * std::log10(y);
    EXPECT_NEAR(std::stod(b.steps.gridCalc.Text(10)),
                fa + 20 * std::log10(7.0) + 10 * std::log10(2700.0) - 99.0 + 2.15, 0.15);
    EXPECT_FALSE(b.steps.gridCalc.Text(19).empty());
    EXPECT_TRUE(b.commands.recordTsvButtonEnabled && b.commands.recordTsvEnabled &&
                b.commands.transferEnabled && b.commands.calibrateRxEnabled &&
                b.commands.exportGnuplotEnabled);

    // The observation is stamped by the recording.
    EXPECT_EQ(b.steps.observation.ObsTime.size(), 14u);
    EXPECT_EQ(b.steps.observation.durationSeconds, 1.0);
    EXPECT_EQ(b.input.requests.back().wavefile, b.steps.TempWave + ".wav");
    EXPECT_EQ(b.input.requests.back().interval, 8);

    // Repeating step 1 clears everything after it.
    b.queue(3, 9);
    b.steps.Step1();
    EXPECT_EQ(b.steps.focus, FocusTarget::Step2);
    for (int row = 1; row <= 6; ++row)
        EXPECT_EQ(b.steps.gridMeas.Text(row, 2) + b.steps.gridMeas.Text(row, 3), "");
    EXPECT_TRUE(gridCalcEmpty(b.steps));
    EXPECT_TRUE(b.commands.Step2);
    EXPECT_FALSE(b.commands.Step3 || b.commands.copyTextEnabled);
    EXPECT_EQ(b.steps.S3.Ms, 0.0);
}

TEST(MeasurementSteps, EveryResetDisablesEveryOutputOfResults) {
    for (auto reset : {&MeasurementSteps::resetFromStep1, &MeasurementSteps::resetFromStep2,
                       &MeasurementSteps::resetFromStep3, &MeasurementSteps::resetResults}) {
        Bench b;
        b.options.Verbose = false;
        b.runAllSteps();
        ASSERT_TRUE(b.commands.recordTsvButtonEnabled && b.commands.recordTsvEnabled);
        (b.steps.*reset)();
        const CommandStates& c = b.commands;
        EXPECT_FALSE(c.recordTsvButtonEnabled || c.recordTsvEnabled || c.saveTextEnabled ||
                     c.transferEnabled || c.copyTextEnabled || c.sendTextEnabled ||
                     c.calibrateRxEnabled || c.exportGnuplotEnabled);
        EXPECT_TRUE(gridCalcEmpty(b.steps));
    }
}

TEST(MeasurementSteps, ClippingHoldsTheNextStepUnlessLimitsAreOff) {
    for (bool limits : {true, false}) {
        Bench b;
        b.options.Limits = limits;
        b.input.signals.push_back(test::Sine(32767, 1000, kRate, kCount));
        // The view shows the values when told to; the verdict's box must come after that.
        std::size_t messagesWhenShown = 0;
        std::string pkWhenShown;
        b.steps.valuesShown = [&] {
            messagesWhenShown = b.dialogs.messages.size();
            pkWhenShown = b.steps.gridMeas.Text(4, 1);
        };
        b.steps.Step1();
        EXPECT_EQ(messagesWhenShown, 1u); // only the prompt so far
        EXPECT_EQ(pkWhenShown, b.steps.gridMeas.Text(4, 1));
        EXPECT_FALSE(pkWhenShown.empty());
        EXPECT_EQ(b.steps.gridMeas.Colour(4, 1), CellColour::Red);
        ASSERT_EQ(b.dialogs.messages.size(), 2u); // the prompt, then the verdict
        EXPECT_EQ(b.dialogs.messages[0].text,
                  "Power off receiver, connect to sound card and hit OK..");
        EXPECT_EQ(b.dialogs.messages[0].buttons, MessageButtons::OkCancel);
        EXPECT_EQ(b.dialogs.messages[1].text, "Clipping detected.");
        EXPECT_EQ(b.dialogs.messages[1].icon, MessageIcon::Critical);
        EXPECT_EQ(b.commands.Step2, !limits);
    }
}

TEST(MeasurementSteps, SoundCardWarnings) {
    Bench b;
    b.options.Verbose = false;
    b.queue(100, 4); // 0.003 of full scale: above −60 dB
    b.steps.Step1();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 1), CellColour::Orange);
    EXPECT_TRUE(b.commands.Step2);
    EXPECT_EQ(b.steps.focus, FocusTarget::Unchanged);

    // Rare large pulses on silence: crest factor above 20 dB.
    std::vector<std::int16_t> pulses(kCount, 0);
    for (std::size_t i = 0; i < kCount; i += 2000)
        pulses[i] = 3000;
    b.input.signals.push_back(pulses);
    b.options.Verbose = true;
    b.steps.Step1();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 1), CellColour::Orange);
    EXPECT_EQ(b.dialogs.messages.back().text, "Check voltage range.");
    EXPECT_EQ(b.dialogs.messages.back().icon, MessageIcon::Exclamation);
}

TEST(MeasurementSteps, ReceiverJudgements) {
    Bench b;
    b.options.Verbose = false;
    b.queue(30, 1);
    b.steps.Step1();
    b.queue(60, 2); // less than 14 dB above the sound card
    b.steps.Step2();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 2), CellColour::Orange);
    EXPECT_TRUE(b.commands.Step3);

    b.input.signals.push_back(std::vector<std::int16_t>(kCount, 0)); // adds no noise at all
    b.steps.Step2();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 2), CellColour::Red);
    EXPECT_FALSE(b.commands.Step3);
    EXPECT_EQ(b.steps.gridMeas.Text(5, 2), ""); // no ratios without an RMS
}

TEST(MeasurementSteps, AgcThresholdExceededMarksTheReadingAndLeavesNoResults) {
    Bench b;
    b.setup.AGC = "20";
    b.options.Verbose = false;
    b.runAllSteps(100 * 15); // 23.5 dB above the receiver
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 3), CellColour::Red);
    EXPECT_TRUE(b.steps.S3.OverThreshold);
    EXPECT_TRUE(gridCalcEmpty(b.steps));
    EXPECT_FALSE(b.commands.recordTsvButtonEnabled || b.commands.recordTsvEnabled);

    // The receiver reading far above the external one marks the receiver's instead.
    Bench c;
    c.setup.AGC = "10";
    c.options.Verbose = false;
    c.runAllSteps(300, 2000);
    EXPECT_TRUE(c.steps.S2.OverThreshold);
    EXPECT_FALSE(c.steps.S3.OverThreshold);
    EXPECT_EQ(c.steps.gridMeas.Colour(2, 3), CellColour::Red);
}

TEST(MeasurementSteps, VerbosePromptsCancelAndVerdictsWithoutMessages) {
    Bench b;
    b.dialogs.answers.push_back(MessageResult::Cancel);
    b.queue(3, 1);
    b.steps.Step1();
    EXPECT_TRUE(b.input.requests.empty()); // cancelled before recording
    EXPECT_EQ(b.steps.gridMeas.Text(2, 1), "");

    Bench quiet;
    quiet.options.Verbose = false;
    quiet.input.signals.push_back(test::Sine(32767, 1000, kRate, kCount));
    quiet.steps.Step1();
    EXPECT_TRUE(quiet.dialogs.messages.empty());
    EXPECT_EQ(quiet.steps.gridMeas.Colour(4, 1), CellColour::Red);
}

TEST(MeasurementSteps, LimitsOffShowsResultsInRedAndKeepsOutputsDisabled) {
    Bench b;
    b.options.Verbose = false;
    b.options.Limits = false;
    b.runAllSteps();
    EXPECT_FALSE(b.steps.gridCalc.Text(9).empty());
    EXPECT_EQ(b.steps.gridCalc.Colour(9), CellColour::Red);
    EXPECT_FALSE(b.commands.recordTsvButtonEnabled);
    EXPECT_FALSE(b.commands.saveTextEnabled);
}

// Everything a step may change, as one comparable text.
std::string snapshot(const Bench& b) {
    std::ostringstream out;
    for (const ResultGrid* g : {&b.steps.gridMeas, &b.steps.gridCalc})
        for (int i = 0; i < g->Rows() * g->Columns(); ++i)
            out << g->Text(i) << '/' << static_cast<int>(g->Colour(i)) << ' ';
    const CommandStates& c = b.commands;
    out << c.Step2 << c.Step3 << c.calibrateRxEnabled << c.saveTextEnabled << c.exportGnuplotEnabled
        << c.recordTsvEnabled << c.sendTextEnabled << c.transferEnabled << c.copyTextEnabled
        << c.recordTsvButtonEnabled;
    const Observation& o = b.steps.observation;
    out << o.ObsTime << o.ObsLat << o.ObsLon << o.durationSeconds << b.steps.shownTitle;
    for (const Measurement* m : {&b.steps.S1, &b.steps.S2, &b.steps.S3})
        out << ' ' << m->Ms << m->Pk << m->OverThreshold;
    return out.str();
}

TEST(MeasurementSteps, AStepThatRecordsNothingChangesNothing) {
    enum class Way { Cancelled, Failed, Unusable };
    for (Way way : {Way::Cancelled, Way::Failed, Way::Unusable}) {
        for (int step = 0; step <= 3; ++step) { // 0: step 1 on a fresh window
            SCOPED_TRACE(testing::Message() << "way " << static_cast<int>(way) << " step " << step);
            Bench b;
            b.options.Verbose = false;
            b.setup.lat = "48.1";
            if (step > 0)
                b.runAllSteps();
            b.setup.lat = "12.5"; // a position taken since must not stamp a failed attempt
            const std::string before = snapshot(b);
            b.input.fail = way != Way::Unusable;
            b.input.unusable = way == Way::Unusable;
            b.input.failure =
                way == Way::Cancelled ? RecordingStatus::Cancelled : RecordingStatus::Failed;
            const int beeps = b.beeper.beeps;
            (b.steps.*(step <= 1   ? &MeasurementSteps::Step1
                       : step == 2 ? &MeasurementSteps::Step2
                                   : &MeasurementSteps::Step3))();
            EXPECT_EQ(snapshot(b), before);
            EXPECT_EQ(b.beeper.beeps, beeps);
            EXPECT_EQ(b.afterStep3Calls, step > 0 ? 1 : 0);
        }
    }
}

TEST(MeasurementSteps, ArithmeticFailureShowsTheCalculationError) {
    Bench b;
    b.options.Verbose = false;
    b.runAllSteps();
    b.setup.RxNF = "5000";
    b.steps.recalculate();
    ASSERT_EQ(b.dialogs.messages.size(), 1u);
    EXPECT_EQ(b.dialogs.messages[0].text, "Value error:");
    EXPECT_EQ(b.dialogs.messages[0].title, "Calculation error, check input values on form");
    EXPECT_TRUE(gridCalcEmpty(b.steps));
    EXPECT_FALSE(b.commands.recordTsvButtonEnabled);
}

// Every judgement also in words, on the coloured cell and as the step's verdict, with the
// figures worked out here from the readings and the separator of the shown numbers.
TEST(MeasurementSteps, VerdictsInWordsCarryTheFiguresAndWhatToDo) {
    auto db = [](double a, double b, char sep) {
        return Format(20 * std::log10(a / b), "0.0", sep);
    };
    for (char sep : {'.', ','}) {
        Bench b;
        b.options.Verbose = false;
        b.steps.decimalSeparator = sep;
        b.runAllSteps();
        const auto& s = b.steps;
        EXPECT_EQ(s.verdict, "External noise " + db(s.S3.Rms, s.S2.Rms, sep) +
                                 " dB above the receiver's noise: good");
        EXPECT_EQ(s.gridMeas.Note(2, 3), s.verdict);
        EXPECT_EQ(s.gridMeas.Note(2, 2), "Receiver noise " + db(s.S2.Rms, s.S1.Rms, sep) +
                                             " dB above the sound card's noise: good");

        // A new step 1 clears every word with the readings.
        b.queue(3, 9);
        b.steps.Step1();
        EXPECT_EQ(b.steps.gridMeas.Note(2, 3), "");
        EXPECT_EQ(b.steps.verdict.rfind("Sound card noise ", 0), 0u);

        struct Case {
            double soundCard, receiver, external, agcDb;
            int row, column;
            bool coloured;
            std::string start, end;
        };
        const Case cases[] = {
            {100, 0, 0, 30, 2, 1, true, "Sound card noise ",
             " dBFS, above the -60 dBFS limit: turn the recording level down or choose a quieter "
             "input"},
            {30, 60, 0, 30, 2, 2, true, "Receiver noise only ",
             " dB above the sound card's noise (at least 14 dB): turn the receiver's audio gain "
             "up"},
            {30, -1, 0, 30, 2, 2, true, "Receiver adds no noise", "reaches the chosen input"},
            {3, 100, 120, 30, 2, 3, false, "External noise only ",
             " dB above the receiver's noise: use a better antenna or less attenuation"},
            {3, 100, 1500, 20, 2, 3, true, "External noise ",
             " dB above the receiver's noise, more than the AGC threshold of 20" +
                 std::string(1, sep) + "0 dB: add attenuation or turn the AGC off"},
            {3, 2000, 300, 10, 2, 3, true, "Receiver noise ",
             " dB above the external noise, more than the AGC threshold of 10" +
                 std::string(1, sep) + "0 dB: repeat step 2 with the AGC off"},
            {3, 100, 10, 30, 2, 3, true, "External noise only ",
             " dB above the sound card's noise (at least 14 dB): turn the receiver's audio gain "
             "up"},
            {40000, 0, 0, 30, 4, 1, true, "Sound card reading clips (peak ",
             " V, limit 0" + std::string(1, sep) +
                 "700 V): turn the receiver's audio gain or the recording level down"},
        };
        for (const Case& c : cases) {
            Bench t;
            t.options.Verbose = false;
            t.options.Limits = false; // every step runs whatever the one before found
            t.steps.decimalSeparator = sep;
            t.setup.AGC = std::to_string(static_cast<int>(c.agcDb));
            if (c.soundCard > 32767)
                t.input.signals.push_back(test::Sine(32767, 1000, kRate, kCount));
            else
                t.queue(c.soundCard, 1);
            t.steps.Step1();
            if (c.receiver != 0) {
                if (c.receiver < 0)
                    t.input.signals.push_back(std::vector<std::int16_t>(kCount, 0));
                else
                    t.queue(c.receiver, 2);
                t.steps.Step2();
            }
            if (c.external != 0) {
                t.queue(c.external, 3);
                t.steps.Step3();
            }
            const std::string& v = t.steps.verdict;
            EXPECT_EQ(v.rfind(c.start, 0), 0u) << v;
            EXPECT_TRUE(v.size() > c.end.size() &&
                        v.compare(v.size() - c.end.size(), c.end.size(), c.end) == 0)
                << v;
            EXPECT_EQ(t.steps.gridMeas.Note(c.row, c.column), v);
            // The weak-antenna advice is in words only.
            EXPECT_EQ(t.steps.gridMeas.Colour(c.row, c.column) != CellColour::WindowText,
                      c.coloured)
                << v;
            // The figure between the words is the one the readings give.
            if (c.start == "Receiver noise only ") {
                EXPECT_EQ(v, c.start + db(t.steps.S2.Rms, t.steps.S1.Rms, sep) + c.end);
            }
            if (c.external == 120) {
                EXPECT_EQ(v, c.start + db(t.steps.S3.Rms, t.steps.S2.Rms, sep) + c.end);
            }
        }
    }
}
