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

// Plays the sound card and its beeper: each step "records" the next queued signal, fails, or writes
// junk.
struct QueuedInput : AudioInput, Beeper {
    std::deque<std::vector<std::int16_t>> signals;
    std::vector<RecordingRequest> requests;
    bool fail = false, unusable = false;
    RecordingStatus failure = RecordingStatus::Failed;
    int beeps = 0;
    void Beep(int, int) override { ++beeps; }
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

struct Bench {
    SetupRecord setup;
    Options options;
    CommandStates commands;
    test::FakeDialogs dialogs;
    QueuedInput input;
    MeasurementSteps steps{setup, options, commands, {dialogs, input, input}};
    test::TempDir dir;
    int afterStep3Calls = 0;

    explicit Bench(bool verbose = false, bool limits = true) {
        options.Verbose = verbose;
        options.Limits = limits;
        steps.TempWave = (dir.path / "~0000ABCD").string();
        steps.afterStep3 = [this] { ++afterStep3Calls; };
        setup.Frequency = "7.000", setup.Bandwidth = "2700", setup.AGC = "30", setup.Interval = "8";
        setup.RxNF = setup.AntGain = "0.00";
        setup.Attenuator = setup.Loss = "0.0";
    }
    // A level of 0 queues silence, one above full scale a clipping sine.
    void queue(double rms, unsigned seed) {
        input.signals.push_back(rms > 32767 ? test::Sine(32767, 1000, kRate, kCount)
                                : rms == 0  ? std::vector<std::int16_t>(kCount, 0)
                                            : test::Noise(rms, kCount, seed));
    }
    // Levels of the three steps; a negative one stops before that step.
    void run(double soundCard = 3, double receiver = 100, double external = 1000) {
        const double levels[] = {soundCard, receiver, external};
        void (MeasurementSteps::*step[])() = {&MeasurementSteps::Step1, &MeasurementSteps::Step2,
                                              &MeasurementSteps::Step3};
        for (int i = 0; i < 3 && levels[i] >= 0; ++i) {
            queue(levels[i], static_cast<unsigned>(i + 1));
            (steps.*step[i])();
        }
    }
    bool resultsEmpty() const {
        for (int i = 5; i < 20; ++i)
            if (i % 4 != 0 && !steps.gridCalc.Text(i).empty())
                return false;
        return true;
    }
    bool anyOutput() const {
        const CommandStates& c = commands;
        return c.recordTsvButtonEnabled || c.recordTsvEnabled || c.saveTextEnabled || c.transferEnabled || c.copyTextEnabled ||
               c.sendTextEnabled || c.calibrateRxEnabled || c.exportGnuplotEnabled;
    }
    // Everything a step may change, as one comparable text.
    std::string snapshot() const {
        std::ostringstream out;
        for (const ResultGrid* g : {&steps.gridMeas, &steps.gridCalc})
            for (int i = 0; i < g->Rows() * g->Columns(); ++i)
                out << g->Text(i) << '/' << static_cast<int>(g->Colour(i)) << ' ';
        const Observation& o = steps.observation;
        out << commands.Step2 << commands.Step3 << anyOutput() << o.ObsTime << o.ObsLat << o.ObsLon
            << o.durationSeconds << steps.shownTitle << input.beeps << afterStep3Calls;
        for (const Measurement* m : {&steps.S1, &steps.S2, &steps.S3})
            out << ' ' << m->Ms << m->Pk << m->OverThreshold;
        return out.str();
    }
};

} // namespace

TEST(MeasurementSteps, GoodObservationFillsBothGridsAndEnablesOutputsUntilAReset) {
    Bench b;
    b.run();
    EXPECT_TRUE(b.commands.Step3 && b.dialogs.messages.empty());
    EXPECT_EQ(std::make_tuple(b.afterStep3Calls, b.input.beeps, b.steps.shownTitle),
              std::make_tuple(1, 3, std::string("External Noise")));
    // With NF 0 dB and no loss, Text = Y·T0: the RMS power from Y directly, and the dipole
    // relation E = Fa + 20·log f + 10·log b − 99.0 dB(µV/m) (0 dBi is 2.15 dB above a dipole).
    const auto& s = b.steps;
    const double y = (s.S3.Ms - s.S1.Ms) / (s.S2.Ms - s.S1.Ms);
    EXPECT_DOUBLE_EQ(s.yfact, y);
    EXPECT_NEAR(std::stod(s.gridCalc.Text(9)), 10 * std::log10(1.3806504e-23 * 290 * y * 2700) + 30,
                0.005);
    const std::string fs = s.gridCalc.Text(10);
    EXPECT_EQ(fs, Format(std::stod(fs), "0.0"));
    EXPECT_NEAR(std::stod(fs), 10 * std::log10(y * 49 * 2700) - 99.0 + 2.15, 0.15);
    EXPECT_TRUE(b.commands.recordTsvButtonEnabled && b.commands.recordTsvEnabled && b.commands.transferEnabled &&
                b.commands.calibrateRxEnabled && b.commands.exportGnuplotEnabled);
    EXPECT_EQ(b.input.requests.back().wavefile + std::to_string(b.input.requests.back().interval),
              s.TempWave + ".wav8");
    EXPECT_EQ(s.observation.ObsTime.size(), 14u);

    // Repeating step 1, or any other reset, clears everything after it.
    b.queue(3, 9);
    b.steps.Step1();
    EXPECT_EQ(b.steps.focus, FocusTarget::Step2);
    for (int row = 1; row <= 6; ++row)
        EXPECT_EQ(b.steps.gridMeas.Text(row, 2) + b.steps.gridMeas.Text(row, 3), "");
    EXPECT_TRUE(b.resultsEmpty() && b.commands.Step2 && !b.commands.Step3 && !b.anyOutput());
    for (auto reset :
         {&MeasurementSteps::resetFromStep2, &MeasurementSteps::resetFromStep3, &MeasurementSteps::resetResults}) {
        Bench r;
        r.run();
        (r.steps.*reset)();
        EXPECT_TRUE(r.resultsEmpty() && !r.anyOutput());
    }
}

TEST(MeasurementSteps, PromptsClippingLimitsAndArithmeticErrors) {
    for (bool limits : {true, false}) {
        Bench b(true, limits);
        b.queue(40000, 1);
        std::size_t messagesWhenShown = 0; // the verdict's box comes after the values are shown
        b.steps.valuesShown = [&] { messagesWhenShown = b.dialogs.messages.size(); };
        b.steps.Step1();
        EXPECT_EQ(messagesWhenShown, 1u);
        EXPECT_EQ(b.steps.gridMeas.Colour(4, 1), CellColour::Red);
        ASSERT_EQ(b.dialogs.texts(), (std::vector<std::string>{
                                         "Power off receiver, connect to sound card and hit OK..",
                                         "Clipping detected."}));
        EXPECT_EQ(b.dialogs.messages[0].buttons, MessageButtons::OkCancel);
        EXPECT_EQ(b.dialogs.messages[1].icon, MessageIcon::Critical);
        EXPECT_EQ(b.commands.Step2, !limits);
        b.dialogs.answers.push_back(MessageResult::Cancel); // cancelling records nothing
        b.steps.Step2();
        EXPECT_EQ(b.input.requests.size(), 1u);
    }
    // Rare large pulses on silence: a crest factor above 20 dB.
    Bench p(true);
    std::vector<std::int16_t> pulses(kCount, 0);
    for (std::size_t i = 0; i < kCount; i += 2000)
        pulses[i] = 3000;
    p.input.signals.push_back(pulses);
    p.steps.Step1();
    EXPECT_EQ(p.steps.gridMeas.Colour(2, 1), CellColour::Orange);
    EXPECT_EQ(p.dialogs.messages.back().text, "Check voltage range.");

    Bench agc; // external noise above the AGC threshold: no results
    agc.setup.AGC = "20";
    agc.run(3, 100, 1500);
    EXPECT_TRUE(agc.steps.S3.OverThreshold && agc.resultsEmpty() && !agc.anyOutput());
    Bench off(false, false); // limits off: results in red, outputs off
    off.run();
    EXPECT_EQ(off.steps.gridCalc.Colour(9), CellColour::Red);
    EXPECT_FALSE(off.steps.gridCalc.Text(9).empty() || off.anyOutput());
    Bench bad;
    bad.run();
    bad.setup.RxNF = "5000";
    bad.steps.recalculate();
    ASSERT_EQ(bad.dialogs.texts(), std::vector<std::string>{"Value error:"});
    EXPECT_EQ(bad.dialogs.messages[0].title, "Calculation error, check input values on form");
    EXPECT_TRUE(bad.resultsEmpty() && !bad.anyOutput());
}

TEST(MeasurementSteps, AStepThatRecordsNothingChangesNothing) {
    for (int way = 0; way < 3; ++way) {         // cancelled, failed, unusable file
        for (int step = 0; step <= 3; ++step) { // 0: step 1 on a fresh window
            SCOPED_TRACE(testing::Message() << "way " << way << " step " << step);
            Bench b;
            b.setup.lat = "48.1";
            if (step > 0)
                b.run();
            b.setup.lat = "12.5"; // a position taken since must not stamp a failed attempt
            const std::string before = b.snapshot();
            b.input.fail = way != 2;
            b.input.unusable = way == 2;
            b.input.failure = way == 0 ? RecordingStatus::Cancelled : RecordingStatus::Failed;
            (b.steps.*(step <= 1   ? &MeasurementSteps::Step1
                       : step == 2 ? &MeasurementSteps::Step2
                                   : &MeasurementSteps::Step3))();
            EXPECT_EQ(b.snapshot(), before);
        }
    }
}

// Every judgement in words, on the coloured cell and as the step's verdict, its figure worked
// out here from the readings, in the separator of the shown numbers. Quiet: no boxes.
TEST(MeasurementSteps, VerdictsInWordsCarryTheFiguresAndWhatToDo) {
    const std::string gainUp = ": turn the receiver's audio gain up";
    struct Case {
        double soundCard, receiver, external;
        int agc, column, figure; // figure: 2 receiver over sound card, 3 external over receiver
        bool coloured;
        std::string start, end;
    };
    for (char sep : {'.', ','}) {
        const std::string s(1, sep);
        const Case cases[] = {
            {3, 100, 1000, 30, 3, 3, false, "External noise ",
             " dB above the receiver's noise: good"},
            {100, -1, -1, 30, 1, 0, true, "Sound card noise ",
             " dBFS, above the -60 dBFS limit: turn the recording level down or choose a "
             "quieter input"},
            {30, 60, -1, 30, 2, 2, true, "Receiver noise only ",
             " dB above the sound card's noise (at least 14 dB)" + gainUp},
            {30, 0, -1, 30, 2, 0, true, "Receiver adds no noise", "reaches the chosen input"},
            {3, 100, 120, 30, 3, 3, false, "External noise only ",
             " dB above the receiver's noise: use a better antenna or less attenuation"},
            {3, 100, 1500, 20, 3, 0, true, "External noise ",
             " dB above the receiver's noise, more than the AGC threshold of 20" + s +
                 "0 dB: add attenuation or turn the AGC off"},
            {3, 2000, 300, 10, 3, 0, true, "Receiver noise ",
             " dB above the external noise, more than the AGC threshold of 10" + s +
                 "0 dB: repeat step 2 with the AGC off"},
            {3, 100, 10, 30, 3, 0, true, "External noise only ",
             " dB above the sound card's noise (at least 14 dB)" + gainUp},
            {40000, -1, -1, 30, 1, 0, true, "Sound card reading clips (peak ",
             " V, limit 0" + s +
                 "700 V): turn the receiver's audio gain or the recording level down"},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(c.start + c.end);
            Bench t(false, false); // every step runs whatever the one before found
            t.steps.decimalSeparator = sep;
            t.setup.AGC = std::to_string(c.agc);
            t.run(c.soundCard, c.receiver, c.external);
            const auto& st = t.steps;
            const std::string& v = st.verdict;
            const int row = c.soundCard > 32767 ? 4 : 2;
            auto db = [sep](const Measurement& a, const Measurement& b) {
                return Format(20 * std::log10(a.Rms / b.Rms), "0.0", sep);
            };
            EXPECT_EQ(v.rfind(c.start, 0), 0u) << v;
            EXPECT_TRUE(v.size() > c.end.size() && v.substr(v.size() - c.end.size()) == c.end) << v;
            const std::string figure = c.figure == 2 ? db(st.S2, st.S1) : db(st.S3, st.S2);
            EXPECT_TRUE(!c.figure || v == c.start + figure + c.end) << v;
            EXPECT_EQ(st.gridMeas.Note(row, c.column), v);
            EXPECT_TRUE(t.dialogs.messages.empty());
            EXPECT_EQ(st.gridMeas.Colour(row, c.column) != CellColour::WindowText, c.coloured);
        }
    }
    // The receiver's verdict is kept beside the external one until a new step 1.
    Bench t;
    t.run();
    EXPECT_EQ(t.steps.gridMeas.Note(2, 2),
              "Receiver noise " + Format(20 * std::log10(t.steps.S2.Rms / t.steps.S1.Rms), "0.0") +
                  " dB above the sound card's noise: good");
    t.run(3, -1, -1);
    EXPECT_EQ(t.steps.gridMeas.Note(2, 3) + t.steps.gridMeas.Note(2, 2), "");
}
