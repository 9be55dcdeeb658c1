#pragma once

#include "measure/CaptureProgress.h"

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace zav {

// The progress window of a recording: how many samples are in, the level of
// the latest 100 ms, and Cancel. It is application-modal while shown, so no other command can
// start; the recording's local event loop keeps it painted. Closing it counts as Cancel.
class WorkingDialog : public QDialog, public CaptureProgress {
public:
    explicit WorkingDialog(QWidget* parent = nullptr, char decimalSeparator = '.');

    void Begin(std::int64_t totalSamples) override;
    void Update(std::int64_t samplesSoFar, double levelDbfs) override;
    bool CancelRequested() override { return m_cancelled; }
    void End() override;

    QProgressBar* progressBar() const { return m_progress; }
    QProgressBar* levelMeter() const { return m_meter; }
    QLabel* countLabel() const { return m_count; }
    QLabel* levelLabel() const { return m_level; }
    QPushButton* cancelButton() const { return m_cancel; }

    // Esc, the window's close button and Cancel all give up the recording.
    void reject() override;

private:
    char m_decimalSeparator;
    std::int64_t m_total = 0;
    bool m_cancelled = false;
    QLabel* m_count;
    QProgressBar* m_progress;
    QProgressBar* m_meter;
    QLabel* m_level;
    QPushButton* m_cancel;
};

} // namespace zav
