#include "measure/MeasurementSteps.h"
#include "measure/CalRxModel.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

using namespace zav;

namespace {

constexpr int kRate = 8000;
constexpr std::size_t kCount = 8000;
constexpr double kBoltzmann = 1.3806504e-23, kT0 = 290.0;

// A source Tc above T0 gives Y = (T0 + Tsys + Tc) / (T0 + Tsys), so F = Tc / (T0·(Y − 1)).
double excessTemperature(CalSource source, double level, double bandwidthHz) {
    const double ratio = std::pow(10.0, level / 10.0);
    return source == CalSource::Carrier        ? ratio / 1000 / (kBoltzmann * bandwidthHz)
           : source == CalSource::NoiseDensity ? ratio / 1000 / kBoltzmann
                                               : ratio * kT0;
}

// The sound card and beeper: each step records the next queued signal, fails, or writes junk.
struct QueuedInput : AudioInput, Beeper {
    std::deque<std::vector<std::int16_t>> signals;
    std::vector<RecordingRequest> requests;
    bool fail = false, unusable = false;
    RecordingStatus failure = RecordingStatus::Failed;
    int beeps = 0;
    void Beep(int, int) override { ++beeps; }
    Recording RecordWave(const RecordingRequest& request) override {
        requests.push_back(request);
        if (unusable)
            std::ofstream(request.wavefile, std::ios::binary) << "RIFF....WAVEnothing";
        else if (fail || signals.empty())
            return {failure, 0, 0, 0};
        else
            test::WriteWave(request.wavefile, signals.front(), kRate), signals.pop_front();
        return {RecordingStatus::Recorded, std::int64_t{kCount}, kRate, 1790000000};
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
        options.Verbose = verbose, options.Limits = limits;
        steps.TempWave = (dir.path / "~0000ABCD").string();
        steps.afterStep3 = [this] { ++afterStep3Calls; };
        setup.Frequency = "7.000", setup.Bandwidth = "2700", setup.AGC = "30", setup.Interval = "8";
        setup.RxNF = setup.AntGain = "0.00", setup.Attenuator = setup.Loss = "0.0";
    }
    void queue(double rms, unsigned seed) {
        input.signals.push_back(rms > 32767 ? test::Sine(32767, 1000, kRate, kCount)
                                : rms == 0  ? std::vector<std::int16_t>(kCount, 0)
                                            : test::Noise(rms, kCount, seed));
    }
    void step(int i) {
        void (MeasurementSteps::*all[])() = {&MeasurementSteps::Step1, &MeasurementSteps::Step2,
                                             &MeasurementSteps::Step3};
        (steps.*all[std::max(i, 1) - 1])();
    }
    // Levels of the three steps; a negative one stops before that step.
    void run(double soundCard = 3, double receiver = 100, double external = 1000) {
        const double levels[] = {soundCard, receiver, external};
        for (int i = 0; i < 3 && levels[i] >= 0; ++i)
            queue(levels[i], static_cast<unsigned>(i + 1)), step(i + 1);
    }
    void measure(double excessK, double trueNfDb, double lossDb) {
        const double L = std::pow(10.0, lossDb / 10.0);
        const double Te = L * (std::pow(10.0, trueNfDb / 10.0) - 1.0) * kT0 + (L - 1.0) * kT0;
        const double kelvin[] = {0, kT0 + Te, kT0 + excessK + Te}; // sound card noise, gain
        Measurement* m[] = {&steps.S1, &steps.S2, &steps.S3};
        for (int i = 0; i < 3; ++i)
            m[i]->Ms = 2.5e-7 + 3.7e-9 * kelvin[i], m[i]->Rms = std::sqrt(m[i]->Ms);
        steps.recalculate();
    }
    bool resultsEmpty() const {
        for (int i = 5; i < 20; ++i)
            if (i % 4 != 0 && !steps.gridCalc.Text(i).empty())
                return false;
        return true;
    }
    bool anyOutput() const {
        const CommandStates& c = commands;
        return c.recordTsvButtonEnabled || c.recordTsvEnabled || c.saveTextEnabled ||
               c.transferEnabled || c.copyTextEnabled || c.sendTextEnabled ||
               c.calibrateRxEnabled || c.exportGnuplotEnabled;
    }
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
    const auto& s = b.steps;
    EXPECT_TRUE(b.commands.Step3 && b.dialogs.messages.empty());
    EXPECT_EQ(std::make_tuple(b.afterStep3Calls, b.input.beeps, s.shownTitle),
              std::make_tuple(1, 3, std::string("External Noise")));
    // NF 0 dB, no loss: Text = Y·T0, and E = Fa + 20·log f + 10·log b − 99.0 + 2.15 (dipole).
    const double y = (s.S3.Ms - s.S1.Ms) / (s.S2.Ms - s.S1.Ms);
    EXPECT_DOUBLE_EQ(s.yfact, y);
    EXPECT_NEAR(std::stod(s.gridCalc.Text(9)), 10 * std::log10(kBoltzmann * 290 * y * 2700) + 30,
                0.005);
    const std::string fs = s.gridCalc.Text(10);
    EXPECT_EQ(fs, Format(std::stod(fs), "0.0"));
    EXPECT_NEAR(std::stod(fs), 10 * std::log10(y * 49 * 2700) - 99.0 + 2.15, 0.15);
    EXPECT_NEAR(std::stod(s.gridCalc.Text(11)), std::stod(fs) - 10 * std::log10(2700), 0.1001);
    EXPECT_TRUE(b.commands.recordTsvButtonEnabled && b.commands.recordTsvEnabled &&
                b.commands.transferEnabled && b.commands.calibrateRxEnabled &&
                b.commands.exportGnuplotEnabled);
    EXPECT_EQ(b.input.requests.back().wavefile + std::to_string(b.input.requests.back().interval),
              s.TempWave + ".wav8");
    EXPECT_EQ(s.observation.ObsTime.size(), 14u);
    EXPECT_NE(s.gridMeas.Note(2, 2).find(": good"), std::string::npos); // kept beside step 3's
    b.queue(3, 9);
    b.steps.Step1();
    EXPECT_EQ(b.steps.focus, FocusTarget::Step2);
    EXPECT_EQ(s.gridMeas.Note(2, 3) + s.gridMeas.Note(2, 2), "");
    for (int row = 1; row <= 6; ++row)
        EXPECT_EQ(s.gridMeas.Text(row, 2) + s.gridMeas.Text(row, 3), "");
    EXPECT_TRUE(b.resultsEmpty() && b.commands.Step2 && !b.commands.Step3 && !b.anyOutput());
    for (auto reset : {&MeasurementSteps::resetFromStep2, &MeasurementSteps::resetFromStep3,
                       &MeasurementSteps::resetResults}) {
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
        std::size_t shownAfter = 0; // the verdict's box comes after the values are shown
        b.steps.valuesShown = [&] { shownAfter = b.dialogs.messages.size(); };
        b.steps.Step1();
        EXPECT_TRUE(shownAfter == 1 && b.steps.gridMeas.Colour(4, 1) == CellColour::Red);
        ASSERT_EQ(b.dialogs.texts(), (std::vector<std::string>{
                                         "Power off receiver, connect to sound card and hit OK..",
                                         "Clipping detected."}));
        EXPECT_TRUE(b.dialogs.messages[0].buttons == MessageButtons::OkCancel &&
                    b.dialogs.messages[1].icon == MessageIcon::Critical);
        EXPECT_EQ(b.commands.Step2, !limits);
        b.dialogs.answers.push_back(MessageResult::Cancel); // cancelling records nothing
        b.steps.Step2();
        EXPECT_EQ(b.input.requests.size(), 1u);
    }
    Bench p(true); // rare large pulses on silence: a crest factor above 20 dB
    p.input.signals.emplace_back(kCount, 0);
    for (std::size_t i = 0; i < kCount; i += 2000)
        p.input.signals[0][i] = 3000;
    p.steps.Step1();
    EXPECT_EQ(p.steps.gridMeas.Colour(2, 1), CellColour::Orange);
    EXPECT_EQ(p.dialogs.messages.back().text, "Check voltage range.");
    Bench off(false, false), bad; // limits off: results in red, outputs off
    off.run(), bad.run();
    EXPECT_EQ(off.steps.gridCalc.Colour(9), CellColour::Red);
    EXPECT_FALSE(off.steps.gridCalc.Text(9).empty() || off.anyOutput());
    bad.setup.RxNF = "5000", bad.steps.recalculate();
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
            b.input.fail = way != 2, b.input.unusable = way == 2;
            b.input.failure = way == 0 ? RecordingStatus::Cancelled : RecordingStatus::Failed;
            b.step(step);
            EXPECT_EQ(b.snapshot(), before);
        }
    }
}

// Each verdict on its coloured cell, its figure worked out from the readings. Quiet: no boxes.
TEST(MeasurementSteps, VerdictsInWordsCarryTheFiguresAndWhatToDo) {
    const std::string rx = " dB above the receiver's noise", sc = " dB above the sound card's "
                                                                  "noise (at least 14 dB): turn "
                                                                  "the receiver's audio gain up";
    struct Case {
        double soundCard, receiver, external;
        int agc, figure; // figure: 2 receiver over sound card, 3 external over receiver
        bool coloured;
        std::string start, end; // the end in full where the figure is checked
    };
    for (char sep : {'.', ','}) {
        const std::string s(1, sep);
        const Case cases[] = {
            {3, 100, 1000, 30, 3, false, "External noise ", rx + ": good"},
            {3, 100, -1, 30, 2, false, "Receiver noise ", " dB above the sound card's noise: good"},
            {100, -1, -1, 30, 0, true, "Sound card noise ", " dBFS, above the -60 dBFS limit"},
            {0, -1, -1, 30, 0, false, "Sound card noise below the resolution", ": good"},
            {3, -1, -1, 30, 0, false, "Sound card noise -", " dBFS: good"},
            {30, 60, -1, 30, 2, true, "Receiver noise only ", sc},
            {30, 0, -1, 30, 0, true, "Receiver adds no noise", "reaches the chosen input"},
            {3, 100, 120, 30, 3, false, "External noise only ",
             rx + ": use a better antenna or less attenuation"},
            {3, 100, 1500, 20, 0, true, "External noise ", "AGC threshold of 20" + s + "0 dB"},
            {3, 2000, 300, 10, 0, true, "Receiver noise ", "AGC threshold of 10" + s + "0 dB"},
            {3, 100, 10, 30, 0, true, "External noise only ", sc},
            {40000, -1, -1, 30, 0, true, "Sound card reading clips (peak ", "limit 0" + s + "700"},
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
            const int column = c.external >= 0 ? 3 : c.receiver >= 0 ? 2 : 1;
            const auto& [a, b] = c.figure == 2 ? std::tie(st.S2, st.S1) : std::tie(st.S3, st.S2);
            const std::string figure = Format(20 * std::log10(a.Rms / b.Rms), "0.0", sep);
            EXPECT_TRUE(v.rfind(c.start, 0) == 0 && v.find(c.end) != std::string::npos) << v;
            EXPECT_TRUE(!c.figure || v == c.start + figure + c.end) << v;
            EXPECT_TRUE(st.gridMeas.Note(row, column) == v && t.dialogs.messages.empty());
            EXPECT_EQ(st.gridMeas.Colour(row, column) != CellColour::WindowText, c.coloured);
        }
    }
}

TEST(RxCalibration, RefusesNoRiseAndUnphysicalResults) {
    auto calibrate = [](CalSource source, double level, double y, double bw, double att) {
        CalibrationInputs in;
        in.yfact = y, in.bandwidthHz = bw, in.attenuatorDb = att;
        return CalibrateReceiver(source, level, in);
    };
    const auto enr = CalSource::ExcessNoiseRatio;
    for (double y : {1.0, 0.5, -2.0, std::numeric_limits<double>::quiet_NaN(), 1.001}) {
        const RxCalibration r = calibrate(enr, 15, y, 2700, 0);
        EXPECT_EQ(r.status, y == 1.001 ? CalStatus::Done : CalStatus::TooWeak) << y;
        EXPECT_EQ(r.yFactorDb.has_value(), y > 0) << y;
        EXPECT_EQ(r.systemNfDb && r.receiverNfDb && r.noiseFloorDbm, y == 1.001) << y;
    }
    // Zero system temperature, an infinite loss hiding the receiver, a carrier over no bandwidth.
    for (const RxCalibration& r :
         {calibrate(enr, -4000, 2, 2700, 0), calibrate(enr, 15, 2, 2700, 4000),
          calibrate(CalSource::Carrier, -90, 2, 0, 0)})
        EXPECT_TRUE(r.status == CalStatus::NotPhysical && !r.receiverNfDb && !r.noiseFloorDbm);
}

TEST(CalRxModel, CalibrateApplyRecalculateRoundTripInEitherSeparator) {
    std::mt19937 rng(290);
    std::uniform_real_distribution<double> nf(0.5, 20), att(0, 20), loss(0, 6), bw(200, 200000),
        carrier(-135, -60), density(-170, -125), enr(5, 30);
    const CalSource sources[] = {CalSource::Carrier, CalSource::NoiseDensity,
                                 CalSource::ExcessNoiseRatio};
    int checked = 0;
    for (int i = 0; i < 60; ++i) {
        const char sep = i % 2 ? ',' : '.';
        const CalSource source = sources[i % 3];
        const double level = i % 3 == 0 ? carrier(rng) : i % 3 == 1 ? density(rng) : enr(rng);
        const double B = std::round(bw(rng)), A = std::round(att(rng) * 10) / 10,
                     L = std::round(loss(rng) * 10) / 10, trueNf = nf(rng);
        Bench b;
        b.steps.decimalSeparator = sep;
        b.setup.Frequency = Format(7, "0.000", sep), b.setup.Bandwidth = Format(B, "0", sep);
        b.setup.Attenuator = Format(A, "0.0", sep), b.setup.Loss = Format(L, "0.0", sep);
        b.setup.RxNF = "3.00"; // whatever the set-up said before the calibration
        const double excess = excessTemperature(source, level, B);
        b.measure(excess, trueNf, A + L);
        if (b.steps.yfact < 1.001) // a source lost in the noise: nothing to calibrate
            continue;
        ASSERT_TRUE(b.commands.calibrateRxEnabled) << i;
        CalRxModel m(
            b.setup, b.steps.yfact, b.dialogs, [&b] { b.steps.recalculate(); }, sep);
        m.open();
        m.chooseSource(source);
        m.CalLevel = Format(level, "0.000000", sep);
        m.calibrationLevelChanged();
        ASSERT_TRUE(m.ApplyEnabled) << i << " " << m.statusText;
        m.applyCalibration();
        EXPECT_TRUE(m.CloseRequested);
        EXPECT_EQ(m.receiverNfText + "|" + b.setup.RxNF,
                  Format(trueNf, "0.00", sep) + "|" + Format(trueNf, "0.00", sep))
            << i;
        // The source plus its own thermal noise, within what two decimals of the NF hold.
        EXPECT_NEAR(Number(b.steps.gridCalc.Text(9), sep),
                    10 * std::log10((excess + kT0) * kBoltzmann * B * 1000), 0.0101)
            << i;
        ++checked;
    }
    EXPECT_GT(checked, 50);
}
