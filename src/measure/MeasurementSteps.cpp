#include "measure/MeasurementSteps.h"

#include "measure/WaveAnalysis.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Version.h"

#include <cmath>

namespace zav {
namespace {

constexpr int kRowAvg = 1, kRowRms = 2, kRowQp = 3, kRowPk = 4, kRowQpRms = 5, kRowPkRms = 6;
constexpr const char* kCheckVoltage = "Check voltage range.";

} // namespace

MeasurementSteps::MeasurementSteps(SetupRecord& setup, Options& options, CommandStates& commands,
                                   Ports ports)
    : m_setup(setup), m_options(options), m_commands(commands), m_ports(ports) {
    S1.Title = "Sound Card Internal Noise";
    S2.Title = "Receiver Internal Noise";
    S3.Title = "External Noise";
}

bool MeasurementSteps::prompt(const char* text) {
    if (!m_options.Verbose)
        return true;
    return m_ports.dialogs.ShowMessage(text, kAppTitle, MessageIcon::None,
                                       MessageButtons::OkCancel) == MessageResult::Ok;
}

void MeasurementSteps::say(const char* text, MessageIcon icon) {
    if (m_options.Verbose)
        m_ports.dialogs.ShowMessage(text, kAppTitle, icon);
}

bool MeasurementSteps::measureWave(Measurement& measured) {
    // The interval box is read as a whole number, rounded half to even.
    const double interval = std::nearbyint(Number(m_setup.Interval, decimalSeparator));
    const RecordingRequest request{TempWave + ".wav", static_cast<std::int32_t>(interval),
                                   m_options.Samples};
    const Recording rec = m_ports.input.RecordWave(request);
    if (rec.status != RecordingStatus::Recorded)
        return false;
    const double frequencyMHz = Number(m_setup.Frequency, decimalSeparator);
    WaveInfo info;
    if (!AnalyseWave(request.wavefile, frequencyMHz, measured, m_ports.dialogs, info))
        return false;
    observation.ObsTime = FormatObsTime(rec.time);
    observation.ObsLat = FormatObsCoordinate(m_setup.lat, decimalSeparator);
    observation.ObsLon = FormatObsCoordinate(m_setup.lon, decimalSeparator);
    observation.positionFrozen = false;
    // The samples analysed, which a file cut short makes fewer than its header claims.
    observation.durationSeconds =
        info.SampleRate > 0 ? static_cast<double>(info.Samples) / info.SampleRate : 0.0;
    shownTitle = measured.Title;
    if (m_options.Beep)
        m_ports.beeper.Beep(2000, 100);
    return true;
}

bool MeasurementSteps::takeStep(int column, Measurement& m, void (MeasurementSteps::*reset)()) {
    // Measured aside: a step that records nothing leaves every column, the results and the
    // enabled steps exactly as they were.
    Measurement measured;
    measured.Title = m.Title;
    if (!measureWave(measured))
        return false;
    (this->*reset)();
    m = measured;
    writeColumn(column, m);
    // The operator sees the values before any verdict about them.
    if (valuesShown)
        valuesShown();
    return true;
}

void MeasurementSteps::writeColumn(int column, const Measurement& m) {
    gridMeas.SetText(kRowAvg, column, Format(m.Avg, "0.00000", decimalSeparator));
    gridMeas.SetText(kRowRms, column, Format(m.Rms, "0.00000", decimalSeparator));
    gridMeas.SetText(kRowQp, column, Format(m.QP, "0.00000", decimalSeparator));
    gridMeas.SetText(kRowPk, column, Format(m.Pk, "0.00000", decimalSeparator));
    if (m.Rms > 0) {
        gridMeas.SetText(kRowQpRms, column, Format(m.QpRms, "0.00", decimalSeparator));
        gridMeas.SetText(kRowPkRms, column, Format(m.PkRms, "0.00", decimalSeparator));
    }
}

void MeasurementSteps::explain(int row, int column, const StepJudgement& judgement) {
    verdict = judgement.text;
    gridMeas.SetNote(row, column, judgement.text);
}

void MeasurementSteps::judgeClipping(int column, const Measurement& m) {
    const char* sources[] = {"", "Sound card", "Receiver", "External"};
    explain(kRowPk, column, ClippingVerdict(sources[column], m, decimalSeparator));
    gridMeas.SetColour(kRowPk, column, CellColour::Red);
    say("Clipping detected.", MessageIcon::Critical);
}

void MeasurementSteps::Step1() {
    if (!prompt("Power off receiver, connect to sound card and hit OK.."))
        return;
    if (!takeStep(1, S1, &MeasurementSteps::resetFromStep1))
        return;
    if (S1.ClipFlag == 0)
        explain(kRowRms, 1, SoundCardVerdict(S1, decimalSeparator));
    if (S1.ClipFlag != 0) {
        judgeClipping(1, S1);
    } else if (S1.Pk > 10 * S1.Rms) { // crest factor above 20 dB
        gridMeas.SetColour(kRowRms, 1, CellColour::Orange);
        say(kCheckVoltage, MessageIcon::Exclamation);
        m_commands.Step2 = true;
    } else if (S1.Rms <= 0.001) {
        m_commands.Step2 = true;
        focus = FocusTarget::Step2;
    } else { // the sound card's own noise above −60 dB of full scale
        gridMeas.SetColour(kRowRms, 1, CellColour::Orange);
        say(kCheckVoltage, MessageIcon::Exclamation);
        m_commands.Step2 = true;
    }
    if (!m_options.Limits)
        m_commands.Step2 = true;
}

void MeasurementSteps::Step2() {
    if (!prompt("Power on receiver, terminate input and hit OK."))
        return;
    if (!takeStep(2, S2, &MeasurementSteps::resetFromStep2))
        return;
    const double r1 = S1.Rms, r2 = S2.Rms;
    if (S2.ClipFlag == 0)
        explain(kRowRms, 2, ReceiverVerdict(S1, S2, decimalSeparator));
    if (S2.ClipFlag != 0) {
        judgeClipping(2, S2);
    } else if (r2 * r2 - r1 * r1 < 0 || r2 == 0) { // the receiver adds no noise power
        gridMeas.SetColour(kRowRms, 2, CellColour::Red);
        say(kCheckVoltage, MessageIcon::Critical);
    } else if (5 * r1 > r2) { // less than 14 dB above the sound card
        gridMeas.SetColour(kRowRms, 2, CellColour::Orange);
        say(kCheckVoltage, MessageIcon::Exclamation);
        m_commands.Step3 = true;
    } else {
        m_commands.Step3 = true;
        focus = FocusTarget::Step3;
    }
    if (!m_options.Limits)
        m_commands.Step3 = true;
}

void MeasurementSteps::Step3() {
    if (!prompt("Connect receiver to source and hit OK."))
        return;
    if (!takeStep(3, S3, &MeasurementSteps::resetFromStep3))
        return;
    if (S3.ClipFlag != 0) {
        judgeClipping(3, S3);
        return;
    }
    const double r1 = S1.Rms, r2 = S2.Rms, r3 = S3.Rms;
    explain(kRowRms, 3,
            ExternalVerdict(S1, S2, S3, Number(m_setup.AGC, decimalSeparator), decimalSeparator));
    if (r3 * r3 - r1 * r1 < 0 || r3 == 0) {
        gridMeas.SetColour(kRowRms, 3, CellColour::Red);
        say(kCheckVoltage, MessageIcon::Critical);
    } else if (5 * r1 > r3) {
        gridMeas.SetColour(kRowRms, 3, CellColour::Orange);
        say(kCheckVoltage, MessageIcon::Exclamation);
    } else {
        // More than AGC dB between receiver and external noise: the receiver's AGC would act
        // on one of the two readings.
        const double agc = std::pow(10.0, Number(m_setup.AGC, decimalSeparator) / 20.0);
        if (agc * r2 < r3) {
            gridMeas.SetColour(kRowRms, 3, CellColour::Red);
            S3.OverThreshold = true;
            say(kCheckVoltage, MessageIcon::Critical);
        } else if (agc * r3 < r2) {
            gridMeas.SetColour(kRowRms, 3, CellColour::Red);
            S2.OverThreshold = true;
            say(kCheckVoltage, MessageIcon::Critical);
        }
    }
    recalculate();
    if (afterStep3)
        afterStep3();
}

void MeasurementSteps::resetColumn(int column, Measurement& m) {
    m.Reset();
    for (int row = kRowAvg; row <= kRowPkRms; ++row) {
        gridMeas.SetText(row, column, "");
        gridMeas.SetColour(row, column, CellColour::WindowText);
        gridMeas.SetNote(row, column, "");
    }
}

void MeasurementSteps::resetFromStep1() {
    verdict.clear();
    resetColumn(1, S1);
    m_commands.Step2 = false;
    resetFromStep2();
}

void MeasurementSteps::resetFromStep2() {
    resetColumn(2, S2);
    m_commands.Step3 = false;
    resetFromStep3();
}

void MeasurementSteps::resetFromStep3() {
    resetColumn(3, S3);
    resetResults();
}

void MeasurementSteps::resetResults() {
    const CellColour colour = m_options.Limits ? CellColour::WindowText : CellColour::Red;
    for (int row = 1; row < gridCalc.Rows(); ++row) {
        for (int column = 1; column < gridCalc.Columns(); ++column) {
            gridCalc.SetText(row, column, "");
            gridCalc.SetColour(row, column, colour);
        }
    }
    m_commands.enableOutputCommands(false);
    m_commands.recordTsvButtonEnabled = false;
}

void MeasurementSteps::recalculate() {
    resetResults();
    FieldStrengthInputs in;
    in.ms1 = S1.Ms;
    in.ms2 = S2.Ms;
    in.ms3 = S3.Ms;
    in.externalOverThreshold = S3.OverThreshold;
    in.rms3 = S3.Rms;
    in.avgRms3 = S3.AvgRms;
    in.qpRms3 = S3.QpRms;
    in.pkRms3 = S3.PkRms;
    in.bandwidthHz = Number(m_setup.Bandwidth, decimalSeparator);
    in.frequencyMHz = Number(m_setup.Frequency, decimalSeparator);
    in.rxNfDb = Number(m_setup.RxNF, decimalSeparator);
    in.attenuatorDb = Number(m_setup.Attenuator, decimalSeparator);
    in.lossDb = Number(m_setup.Loss, decimalSeparator);
    in.antGain = Number(m_setup.AntGain, decimalSeparator);
    in.antFact = m_options.AntFact;

    lastCalculation = ComputeFieldStrength(in);
    const FieldStrength& r = lastCalculation;
    if (r.yfact)
        yfact = *r.yfact;
    if (r.Fa)
        Fa = *r.Fa;
    if (r.NumAntGain)
        NumAntGain = *r.NumAntGain;
    if (r.NumAntFact)
        NumAntFact = *r.NumAntFact;

    switch (r.outcome) {
    case CalcOutcome::NoExternal:
        m_commands.recordTsvButtonEnabled = false;
        return;
    case CalcOutcome::NotComputable:
        return;
    case CalcOutcome::ArithmeticError:
        resetResults();
        m_commands.recordTsvButtonEnabled = false;
        m_ports.dialogs.ShowMessage("Value error:", "Calculation error, check input values on form",
                                    MessageIcon::Critical);
        return;
    case CalcOutcome::Done:
        break;
    }
    for (int row = 1; row <= 4; ++row) {
        if (!r.rows[row - 1])
            continue;
        const DetectorResult& d = *r.rows[row - 1];
        gridCalc.SetText(row, 1, Format(d.rxDbm, "0.00", decimalSeparator));
        gridCalc.SetText(row, 2, Format(d.fsDbuvPerM, "0.0", decimalSeparator));
        gridCalc.SetText(row, 3, Format(d.normFsDbuvPerM, "0.0", decimalSeparator));
    }
    if (m_options.Limits && !gridCalc.Text(15).empty() && !gridCalc.Text(19).empty()) {
        m_commands.enableOutputCommands(true);
        m_commands.recordTsvButtonEnabled = true;
    } else {
        m_commands.recordTsvButtonEnabled = false;
    }
}

} // namespace zav
