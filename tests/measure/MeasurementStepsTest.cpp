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
    bool fail = false, unusable = false; // unusable: "records" a file the analysis refuses
    RecordingStatus failure = RecordingStatus::Failed;
    Recording RecordWave(const RecordingRequest& request) override {
        requests.push_back(request);
        if (unusable)
            std::ofstream(request.wavefile, std::ios::binary) << "RIFF....WAVEnothing";
        else if (fail || signals.empty())
            return {failure, 0, 0, 0};
        else
            test::WriteWave(request.wavefile, signals.front(), kRate);
        const auto n = unusable ? 8000 : static_cast<std::int64_t>(signals.front().size());
        if (!unusable)
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

    explicit Bench(bool verbose = false) {
        options.Verbose = verbose;
        steps.TempWave = (dir.path / "~0000ABCD").string();
        steps.afterStep3 = [this] { ++afterStep3Calls; };
        setup.Frequency = "7.000";
        setup.Bandwidth = "2700";
        setup.RxNF = setup.AntGain = "0.00";
        setup.Attenuator = setup.Loss = "0.0";
        setup.AGC = "30";
        setup.Interval = "8";
    }
    // A level of 0 queues silence, one above full scale a clipping sine.
    void queue(double rmsCounts, unsigned seed) {
        input.signals.push_back(rmsCounts > 32767 ? test::Sine(32767, 1000, kRate, kCount)
                                : rmsCounts == 0  ? std::vector<std::int16_t>(kCount, 0)
                                                  : test::Noise(rmsCounts, kCount, seed));
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
    bool resultsEmpty() const {
        for (int i = 5; i < 20; ++i)
            if (i % 4 != 0 && !steps.gridCalc.Text(i).empty())
                return false;
        return true;
    }
    bool anyOutput() const {
        const CommandStates& c = commands;
        return c.RTSVB || c.MenuSaveTsv || c.MenuSaveText || c.MenuTransfer || c.MenuCopyTextClip ||
               c.MenuSendText || c.MenuCalRx || c.MenuExportGnuplot;
    }
};

// Everything a step may change, as one comparable text.
std::string snapshot(const Bench& b) {
    std::ostringstream out;
    for (const ResultGrid* g : {&b.steps.gridMeas, &b.steps.gridCalc})
        for (int i = 0; i < g->Rows() * g->Columns(); ++i)
            out << g->Text(i) << '/' << static_cast<int>(g->Colour(i)) << ' ';
    const CommandStates& c = b.commands;
    out << c.Step2 << c.Step3 << b.anyOutput() << c.MenuSaveText << c.MenuCalRx;
    const Observation& o = b.steps.observation;
    out << o.ObsTime << o.ObsLat << o.ObsLon << o.durationSeconds << b.steps.shownTitle;
    for (const Measurement* m : {&b.steps.S1, &b.steps.S2, &b.steps.S3})
        out << ' ' << m->Ms << m->Pk << m->OverThreshold;
    return out.str();
}

} // namespace

TEST(MeasurementSteps, GoodObservationFillsBothGridsAndEnablesOutputsUntilAReset) {
    Bench b;
    b.runAllSteps();
    EXPECT_TRUE(b.commands.Step2 && b.commands.Step3 && b.dialogs.messages.empty());
    EXPECT_EQ(b.afterStep3Calls, 1);
    EXPECT_EQ(b.beeper.beeps, 3);
    EXPECT_EQ(b.steps.shownTitle, "External Noise");
    EXPECT_EQ(b.steps.gridMeas.Text(2, 3).size(), 7u); // five decimals: 0.0xxxx
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 3), CellColour::WindowText);
    // With NF 0 dB and no loss, Text = Y·T0: the RMS power against Y directly, and the
    // half-wave-dipole relation E = Fa + 20·log f + 10·log b − 99.0 dB(µV/m) through the
    // whole chain (gain 0 dBi here, 2.15 dB more than a dipole's).
    const double y = (b.steps.S3.Ms - b.steps.S1.Ms) / (b.steps.S2.Ms - b.steps.S1.Ms);
    EXPECT_DOUBLE_EQ(b.steps.yfact, y);
    EXPECT_NEAR(std::stod(b.steps.gridCalc.Text(9)),
                10 * std::log10(1.3806504e-23 * 290 * y * 2700) + 30, 0.005);
    EXPECT_EQ(b.steps.gridCalc.Text(10), Format(std::stod(b.steps.gridCalc.Text(10)), "0.0"));
    EXPECT_NEAR(std::stod(b.steps.gridCalc.Text(10)),
                10 * std::log10(y) + 20 * std::log10(7.0) + 10 * std::log10(2700.0) - 99.0 + 2.15,
                0.15);
    EXPECT_FALSE(b.steps.gridCalc.Text(19).empty());
    EXPECT_TRUE(b.commands.RTSVB && b.commands.MenuSaveTsv && b.commands.MenuTransfer &&
                b.commands.MenuCalRx && b.commands.MenuExportGnuplot);
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
    EXPECT_TRUE(b.resultsEmpty() && b.commands.Step2);
    EXPECT_FALSE(b.commands.Step3 || b.anyOutput());
    EXPECT_EQ(b.steps.S3.Ms, 0.0);
    // So does every other reset.
    for (auto reset :
         {&MeasurementSteps::Reset2, &MeasurementSteps::Reset3, &MeasurementSteps::ResetCalc}) {
        Bench r;
        r.runAllSteps();
        (r.steps.*reset)();
        EXPECT_FALSE(r.anyOutput());
        EXPECT_TRUE(r.resultsEmpty());
    }
}

TEST(MeasurementSteps, VerbosePromptsAndClippingHoldTheNextStepUnlessLimitsAreOff) {
    for (bool limits : {true, false}) {
        Bench b(true);
        b.options.Limits = limits;
        b.queue(40000, 1);
        // The view shows the values when told to; the verdict's box must come after that.
        std::size_t messagesWhenShown = 0;
        b.steps.valuesShown = [&] { messagesWhenShown = b.dialogs.messages.size(); };
        b.steps.Step1();
        EXPECT_EQ(messagesWhenShown, 1u); // only the prompt so far
        EXPECT_EQ(b.steps.gridMeas.Colour(4, 1), CellColour::Red);
        ASSERT_EQ(b.dialogs.messages.size(), 2u);
        EXPECT_EQ(b.dialogs.messages[0].text,
                  "Power off receiver, connect to sound card and hit OK..");
        EXPECT_EQ(b.dialogs.messages[0].buttons, MessageButtons::OkCancel);
        EXPECT_EQ(b.dialogs.messages[1].text, "Clipping detected.");
        EXPECT_EQ(b.dialogs.messages[1].icon, MessageIcon::Critical);
        EXPECT_EQ(b.commands.Step2, !limits);
    }
    // Rare large pulses on silence: a crest factor above 20 dB.
    Bench b(true);
    std::vector<std::int16_t> pulses(kCount, 0);
    for (std::size_t i = 0; i < kCount; i += 2000)
        pulses[i] = 3000;
    b.input.signals.push_back(pulses);
    b.steps.Step1();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 1), CellColour::Orange);
    EXPECT_EQ(b.dialogs.messages.back().text, "Check voltage range.");
    // Cancelling the prompt records nothing.
    b.dialogs.answers.push_back(MessageResult::Cancel);
    b.steps.Step2();
    EXPECT_EQ(b.input.requests.size(), 1u);
}

TEST(MeasurementSteps, JudgementsHoldTheNextStepOrTheResults) {
    Bench b;
    b.queue(30, 1);
    b.queue(0, 2); // the receiver adds no noise at all
    b.steps.Step1();
    b.steps.Step2();
    EXPECT_EQ(b.steps.gridMeas.Colour(2, 2), CellColour::Red);
    EXPECT_FALSE(b.commands.Step3);
    EXPECT_EQ(b.steps.gridMeas.Text(5, 2), ""); // no ratios without an RMS

    Bench agc; // external noise above the AGC threshold
    agc.setup.AGC = "20";
    agc.runAllSteps(100 * 15);
    EXPECT_TRUE(agc.steps.S3.OverThreshold);
    EXPECT_TRUE(agc.resultsEmpty());
    EXPECT_FALSE(agc.anyOutput());
    Bench rx; // the receiver far above the external reading marks the receiver's instead
    rx.setup.AGC = "10";
    rx.runAllSteps(300, 2000);
    EXPECT_TRUE(rx.steps.S2.OverThreshold && !rx.steps.S3.OverThreshold);

    Bench off; // limits off: results in red, outputs off
    off.options.Limits = false;
    off.runAllSteps();
    EXPECT_FALSE(off.steps.gridCalc.Text(9).empty());
    EXPECT_EQ(off.steps.gridCalc.Colour(9), CellColour::Red);
    EXPECT_FALSE(off.anyOutput());

    Bench bad; // arithmetic failure in the calculation
    bad.runAllSteps();
    bad.setup.RxNF = "5000";
    bad.steps.CalcCalc();
    ASSERT_EQ(bad.dialogs.messages.size(), 1u);
    EXPECT_EQ(bad.dialogs.messages[0].text, "Value error:");
    EXPECT_EQ(bad.dialogs.messages[0].title, "Calculation error, check input values on form");
    EXPECT_TRUE(bad.resultsEmpty());
    EXPECT_FALSE(bad.anyOutput());
}

TEST(MeasurementSteps, AStepThatRecordsNothingChangesNothing) {
    enum class Way { Cancelled, Failed, Unusable };
    for (Way way : {Way::Cancelled, Way::Failed, Way::Unusable}) {
        for (int step = 0; step <= 3; ++step) { // 0: step 1 on a fresh window
            SCOPED_TRACE(testing::Message() << "way " << static_cast<int>(way) << " step " << step);
            Bench b;
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

// Every judgement also in words, on the coloured cell and as the step's verdict, with the
// figures worked out here from the readings and the separator of the shown numbers.
TEST(MeasurementSteps, VerdictsInWordsCarryTheFiguresAndWhatToDo) {
    struct Case {
        double soundCard, receiver, external, agcDb;
        int row, column;
        bool coloured;
        std::string start, end;
    };
    for (char sep : {'.', ','}) {
        auto db = [sep](const Measurement& a, const Measurement& b) {
            return Format(20 * std::log10(a.Rms / b.Rms), "0.0", sep);
        };
        const std::string s(1, sep);
        const Case cases[] = {
            {3, 100, 1000, 30, 2, 3, false, "External noise ",
             " dB above the receiver's noise: good"},
            {100, -1, -1, 30, 2, 1, true, "Sound card noise ",
             " dBFS, above the -60 dBFS limit: turn the recording level down or choose a quieter "
             "input"},
            {30, 60, -1, 30, 2, 2, true, "Receiver noise only ",
             " dB above the sound card's noise (at least 14 dB): turn the receiver's audio gain "
             "up"},
            {30, 0, -1, 30, 2, 2, true, "Receiver adds no noise", "reaches the chosen input"},
            {3, 100, 120, 30, 2, 3, false, "External noise only ",
             " dB above the receiver's noise: use a better antenna or less attenuation"},
            {3, 100, 1500, 20, 2, 3, true, "External noise ",
             " dB above the receiver's noise, more than the AGC threshold of 20" + s +
                 "0 dB: add attenuation or turn the AGC off"},
            {3, 2000, 300, 10, 2, 3, true, "Receiver noise ",
             " dB above the external noise, more than the AGC threshold of 10" + s +
                 "0 dB: repeat step 2 with the AGC off"},
            {3, 100, 10, 30, 2, 3, true, "External noise only ",
             " dB above the sound card's noise (at least 14 dB): turn the receiver's audio gain "
             "up"},
            {40000, -1, -1, 30, 4, 1, true, "Sound card reading clips (peak ",
             " V, limit 0" + s +
                 "700 V): turn the receiver's audio gain or the recording level "
                 "down"},
        };
        for (const Case& c : cases) {
            Bench t;
            t.options.Limits = false; // every step runs whatever the one before found
            t.steps.decimalSeparator = sep;
            t.setup.AGC = std::to_string(static_cast<int>(c.agcDb));
            t.queue(c.soundCard, 1);
            t.steps.Step1();
            if (c.receiver >= 0) {
                t.queue(c.receiver, 2);
                t.steps.Step2();
            }
            if (c.external >= 0) {
                t.queue(c.external, 3);
                t.steps.Step3();
            }
            const std::string& v = t.steps.verdict;
            EXPECT_EQ(v.rfind(c.start, 0), 0u) << v;
            EXPECT_TRUE(v.size() > c.end.size() &&
                        v.compare(v.size() - c.end.size(), c.end.size(), c.end) == 0)
                << v;
            EXPECT_EQ(t.steps.gridMeas.Note(c.row, c.column), v);
            EXPECT_TRUE(t.dialogs.messages.empty()) << v; // quiet: verdicts without boxes
            // The weak-antenna advice is in words only.
            EXPECT_EQ(t.steps.gridMeas.Colour(c.row, c.column) != CellColour::WindowText,
                      c.coloured)
                << v;
            // The figure between the words is the one the readings give.
            const auto& st = t.steps;
            if (c.start == "Receiver noise only ") {
                EXPECT_EQ(v, c.start + db(st.S2, st.S1) + c.end);
            }
            if (c.external == 120 || c.external == 1000) {
                EXPECT_EQ(v, c.start + db(st.S3, st.S2) + c.end);
            }
            if (c.external == 1000) { // and the receiver's, kept until a new step 1
                EXPECT_EQ(st.gridMeas.Note(2, 2), "Receiver noise " + db(st.S2, st.S1) +
                                                      " dB above the sound card's noise: good");
                t.queue(3, 9);
                t.steps.Step1();
                EXPECT_EQ(t.steps.gridMeas.Note(2, 3), "");
                EXPECT_EQ(t.steps.verdict.rfind("Sound card noise ", 0), 0u);
            }
        }
    }
}
