#pragma once

#include "config/CommandStates.h"
#include "platform/AudioOutput.h"
#include "platform/Clipboard.h"
#include "platform/Dialogs.h"
#include "report/WavePlot.h"

#include <functional>
#include <string>

namespace zav {

// What the waveform commands work on: the last step's recording and how it is named.
struct WaveformSource {
    std::string wavePath;   // the working recording (the recording base name + ".wav")
    std::string obsTime;    // default file name and part of every title
    std::string stepTitle;  // the title of the step last measured
    std::string currentDir; // where the save dialogs start
};

// The commands that keep or inspect the last recording: save a copy, a gnuplot script, the
// sample table on the clipboard, the plot window, and playing it back.
class WaveformExports {
public:
    struct Ports {
        Dialogs& dialogs;
        Clipboard& clipboard;
        AudioOutput& output;
    };

    WaveformExports(std::function<WaveformSource()> source, CommandStates& commands, Ports ports)
        : m_source(std::move(source)), m_commands(commands), m_ports(ports) {}

    void saveWave();
    void exportGnuplot();
    void copyWaveSamples();
    void plotWave();
    void playWave();

    // A recording has just been made: every waveform command has something to work on again.
    void enableWaveCommands();

    // Enabled states of the commands the calculation does not govern (the gnuplot export's
    // lives with the others in CommandStates). None has anything to show before a recording.
    bool saveWaveEnabled = false;
    bool copyWaveEnabled = false;
    bool plotWaveEnabled = false;
    bool playWaveEnabled = false;

    // The clipboard table's decimal separator.
    char decimalSeparator = '.';
    // Opens the plot window on a loaded recording; the view sets it.
    std::function<void(WavePlot)> showPlot;
    // What the last command did and where, for the status bar; empty when it was cancelled.
    std::string status;

private:
    std::optional<std::string> askSaveName(const WaveformSource& source, const char* filter);
    void showFailedSave(const std::string& error);

    std::function<WaveformSource()> m_source;
    CommandStates& m_commands;
    Ports m_ports;
};

} // namespace zav
