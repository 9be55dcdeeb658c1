#pragma once

#include "app/MonitorViewModel.h"

#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

class QChart;
class QChartView;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;

namespace zav {

class Dialogs;
class MainModel;

// "ZAV - Monitor": starts and stops an unattended run on the main window's set-up, shows its
// state and next cycle, the external noise of each frequency against time with the P.372
// curves' values as reference lines, and the minimum, median and maximum per hour. The run
// works in a thread of its own, so the window stays responsive; the two prompts come here.
class MonitorWindow : public QWidget {
public:
    static constexpr const char* kObjectName = "monitorWindow";

    MonitorWindow(MainModel& model, Dialogs& dialogs, QWidget* parent = nullptr);
    ~MonitorWindow() override;

    // Called with true when a run starts and false when it ends: the manual steps wait.
    std::function<void(bool)> runningChanged;

    void start();
    void stop();
    // Shows the model's state again.
    void refresh();

    MonitorViewModel& viewModel() { return m_view; }
    QChartView* chartView() const { return m_chartView; }
    QTableWidget* table() const { return m_table; }
    QLineEdit* frequencies() const { return m_frequencies; }
    QLineEdit* every() const { return m_every; }
    QLineEdit* cycles() const { return m_count; }
    QLineEdit* rigModel() const { return m_rig; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void redrawChart();
    void finished();

    MainModel& m_model;
    Dialogs& m_dialogs;
    MonitorViewModel m_view;
    std::atomic<bool> m_stop{false};
    std::thread m_worker;

    QLineEdit* m_frequencies = nullptr;
    QLineEdit* m_every = nullptr;
    QLineEdit* m_count = nullptr;
    QLineEdit* m_rig = nullptr;
    QLineEdit* m_rigPort = nullptr;
    QPushButton* m_start = nullptr;
    QPushButton* m_stopButton = nullptr;
    QLabel* m_state = nullptr;
    QLabel* m_nextCycle = nullptr;
    QLabel* m_counts = nullptr;
    QChart* m_chart = nullptr;
    QChartView* m_chartView = nullptr;
    QTableWidget* m_table = nullptr;
    QPlainTextEdit* m_events = nullptr;
};

} // namespace zav
