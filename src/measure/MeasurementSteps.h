#pragma once

#include "config/CommandStates.h"
#include "config/FocusTarget.h"
#include "config/Options.h"
#include "config/ResultGrid.h"
#include "config/SetupRecord.h"
#include "measure/FieldStrength.h"
#include "measure/Measurement.h"
#include "measure/Observation.h"
#include "measure/StepJudgement.h"
#include "platform/AudioInput.h"
#include "platform/Beeper.h"
#include "platform/Dialogs.h"

#include <functional>
#include <string>

namespace zav {

// The three measurement steps, their judgements, the reset cascade and the field-strength
// calculation that fills the results grid. A later step never stands on an earlier one that
// has since been repeated or changed: every reset clears everything after it.
class MeasurementSteps {
public:
    struct Ports {
        Dialogs& dialogs;
        AudioInput& input;
        Beeper& beeper;
    };

    MeasurementSteps(SetupRecord& setup, Options& options, CommandStates& commands, Ports ports);

    void Step1();
    void Step2();
    void Step3();
    void resetFromStep1();
    void resetFromStep2();
    void resetFromStep3();
    void resetResults();
    void recalculate();

    // Base path of the step recordings, without extension (".wav", ".tmp").
    std::string TempWave;
    // The decimal separator of every number shown.
    char decimalSeparator = '.';
    // Runs after step 3's calculation: the data log's automatic row or the focus move.
    std::function<void()> afterStep3;
    // Runs once a step's values are in its column, before any verdict on them is shown.
    std::function<void()> valuesShown;

    Measurement S1, S2, S3;
    ResultGrid gridMeas = ResultGrid::MakeMeasGrid();
    ResultGrid gridCalc = ResultGrid::MakeCalcGrid();
    Observation observation;
    std::string shownTitle; // the title of the step last measured
    // The last step's judgement in words; also the note on the cell it coloured.
    std::string verdict;
    FocusTarget focus = FocusTarget::Unchanged;

    // Kept from the last calculation that got that far; a reset does not clear them.
    double yfact = 0;
    double Fa = 0; // external noise factor, dB above k·T0·b
    double NumAntGain = 0;
    double NumAntFact = 0;
    FieldStrength lastCalculation;

private:
    bool prompt(const char* text);
    // Records and analyses one step into `measured`; false when nothing usable was recorded.
    bool measureWave(Measurement& measured);
    // Runs `reset` and fills the column only once the recording was analysed.
    bool takeStep(int column, Measurement& m, void (MeasurementSteps::*reset)());
    void writeColumn(int column, const Measurement& m);
    void resetColumn(int column, Measurement& m);
    void say(const char* text, MessageIcon icon);
    void judgeClipping(int column, const Measurement& m);
    void explain(int row, int column, const StepJudgement& judgement);

    SetupRecord& m_setup;
    Options& m_options;
    CommandStates& m_commands;
    Ports m_ports;
};

} // namespace zav
