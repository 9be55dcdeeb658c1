#pragma once

#include "measure/InputLevel.h"

#include <QDialog>

#include <string>

class QLabel;
class QProgressBar;
class QTimer;

namespace zav {

class AudioCapture;

// "Input level": the chosen input's live level while nothing is recorded, for setting the
// receiver's audio gain before step 1. The capture runs in its own local event loop until the
// window closes; nothing is written anywhere.
class InputLevelDialog : public QDialog {
public:
    InputLevelDialog(AudioCapture& capture, std::string device, QWidget* parent = nullptr,
                     char decimalSeparator = '.');

    // Runs the meter until the window is closed.
    int exec() override;
    // Starts the capture; returns when the window closes or the input fails.
    void run();

    QProgressBar* meter() const { return m_meter; }
    QLabel* rmsLabel() const { return m_rms; }
    QLabel* peakLabel() const { return m_peak; }
    QLabel* headroomLabel() const { return m_headroom; }
    QLabel* adviceLabel() const { return m_advice; }
    // Readings taken so far, for tests.
    int readings() const { return m_readings; }

    void reject() override;

private:
    void showReading();

    AudioCapture& m_capture;
    std::string m_device;
    char m_separator;
    InputLevel m_level;
    bool m_stop = false;
    bool m_running = false;
    int m_readings = 0;
    QProgressBar* m_meter;
    QLabel* m_rms;
    QLabel* m_peak;
    QLabel* m_headroom;
    QLabel* m_advice;
    QTimer* m_timer;
};

} // namespace zav
