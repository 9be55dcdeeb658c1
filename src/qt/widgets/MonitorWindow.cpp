#include "qt/widgets/MonitorWindow.h"

#include "app/MainModel.h"
#include "measure/FileAudioInput.h"
#include "measure/WaveRecorder.h"
#include "platform/Format.h"
#include "platform/ResourceFolder.h"
#include "platform/Version.h"
#include "qt/services/HamlibRig.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtFormPoster.h"
#include "qt/services/QtXmlLookup.h"

#include <QChart>
#include <QChartView>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateTime>
#include <QDateTimeAxis>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLegendMarker>
#include <QLineEdit>
#include <QLineSeries>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QValueAxis>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

struct WallClock : MonitorClock {
    std::time_t Now() override { return std::time(nullptr); }
    void Sleep(std::chrono::milliseconds d) override { std::this_thread::sleep_for(d); }
};

// The window's message boxes, asked from the run's thread and shown in the window's.
struct WindowDialogs : Dialogs {
    WindowDialogs(Dialogs& inner, QObject* window) : m_inner(inner), m_window(window) {}
    MessageResult ShowMessage(const std::string& text, const std::string& title, MessageIcon icon,
                              MessageButtons buttons) override {
        MessageResult r = MessageResult::Cancel;
        QMetaObject::invokeMethod(
            m_window, [&] { r = m_inner.ShowMessage(text, title, icon, buttons); },
            Qt::BlockingQueuedConnection);
        return r;
    }
    std::optional<std::string> OpenFileName(const FileDialogRequest& request) override {
        std::optional<std::string> r;
        QMetaObject::invokeMethod(
            m_window, [&] { r = m_inner.OpenFileName(request); }, Qt::BlockingQueuedConnection);
        return r;
    }
    std::optional<std::string> SaveFileName(const FileDialogRequest&) override { return {}; }

private:
    Dialogs& m_inner;
    QObject* m_window;
};

const QColor kColours[] = {QColor(0x1f, 0x77, 0xb4), QColor(0xd6, 0x27, 0x28),
                           QColor(0x2c, 0xa0, 0x2c), QColor(0x94, 0x67, 0xbd),
                           QColor(0xff, 0x7f, 0x0e), QColor(0x8c, 0x56, 0x4b)};

} // namespace

MonitorWindow::MonitorWindow(MainModel& model, Dialogs& dialogs, QWidget* parent)
    : QWidget(parent, Qt::Window), m_model(model), m_dialogs(dialogs) {
    setObjectName(kObjectName);
    setWindowTitle(MonitorViewModel::kCaption);
    auto* layout = new QVBoxLayout(this);

    auto* plan = new QFormLayout;
    m_frequencies = new QLineEdit(qs(model.setup.Frequency), this);
    m_frequencies->setToolTip("Frequencies in MHz, separated by commas; several need a rig");
    m_every = new QLineEdit("10m", this);
    m_every->setToolTip("Time between the starts of two cycles: 90s, 10m, 1h");
    m_count = new QLineEdit("500", this);
    m_count->setToolTip("Cycles to run; empty to run until stopped");
    m_rig = new QLineEdit(this);
    m_rig->setToolTip("Hamlib rig model number (2: rigctld over the network); empty for none");
    m_rigPort = new QLineEdit(this);
    m_rigPort->setToolTip("Serial device, or host:port for rigctld");
    plan->addRow("&Frequencies (MHz):", m_frequencies);
    plan->addRow("&Every:", m_every);
    plan->addRow("&Cycles:", m_count);
    plan->addRow("&Rig model:", m_rig);
    plan->addRow("Rig &port:", m_rigPort);
    layout->addLayout(plan);

    auto* buttons = new QHBoxLayout;
    m_start = new QPushButton("&Start", this);
    m_stopButton = new QPushButton("S&top", this);
    buttons->addWidget(m_start);
    buttons->addWidget(m_stopButton);
    buttons->addStretch();
    layout->addLayout(buttons);
    QObject::connect(m_start, &QPushButton::clicked, this, [this] { start(); });
    QObject::connect(m_stopButton, &QPushButton::clicked, this, [this] { stop(); });

    auto* status = new QFormLayout;
    m_state = new QLabel(this);
    m_nextCycle = new QLabel(this);
    m_counts = new QLabel(this);
    status->addRow("State:", m_state);
    status->addRow("Next cycle:", m_nextCycle);
    status->addRow("Observations:", m_counts);
    layout->addLayout(status);

    m_chart = new QChart;
    m_chart->setTitle(MonitorViewModel::kPlotTitle);
    m_chartView = new QChartView(m_chart, this);
    m_chartView->setRenderHint(QPainter::Antialiasing);
    m_chartView->setMinimumHeight(300);

    m_table = new QTableWidget(0, 6, this);
    m_table->setHorizontalHeaderLabels({"Frequency", "Hour", "n", "Min", "Median", "Max"});
    m_table->verticalHeader()->hide();
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_events = new QPlainTextEdit(this);
    m_events->setReadOnly(true);

    auto* split = new QSplitter(Qt::Vertical, this);
    split->addWidget(m_chartView);
    auto* lower = new QSplitter(Qt::Horizontal, split);
    lower->addWidget(m_table);
    lower->addWidget(m_events);
    split->addWidget(lower);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    layout->addWidget(split, 1);
    resize(900, 760);
    refresh();
}

MonitorWindow::~MonitorWindow() {
    m_stop = true;
    if (m_worker.joinable())
        m_worker.join();
}

void MonitorWindow::closeEvent(QCloseEvent* event) {
    if (m_view.running) {
        m_dialogs.ShowMessage("Stop the monitor before closing its window.", kAppTitle,
                              MessageIcon::Exclamation);
        event->ignore();
        return;
    }
    event->accept();
}

void MonitorWindow::start() {
    if (m_view.running)
        return;
    MonitorPlan plan;
    std::string problem;
    const auto list = ParseFrequencyList(m_frequencies->text().toStdString());
    const auto every = ParseDuration(m_every->text().trimmed().toStdString());
    const std::string count = m_count->text().trimmed().toStdString();
    const std::string rig = m_rig->text().trimmed().toStdString();
    if (!list)
        problem = "Frequencies: give MHz values such as 3.5, 5.3, 7.0";
    else if (!every)
        problem = "Every: give a duration such as 10m, 90s or 1h";
    else if (!count.empty() && (count.find_first_not_of("0123456789") != std::string::npos ||
                                count.size() > 7 || std::stoi(count) < 1))
        problem = "Cycles: give a whole number, or leave it empty";
    else if (!rig.empty() &&
             (rig.find_first_not_of("0123456789") != std::string::npos || rig.size() > 7))
        problem = "Rig model: give Hamlib's model number";
    if (problem.empty()) {
        plan.frequenciesMHz = *list;
        plan.intervalSeconds = *every;
        plan.count = count.empty() ? 0 : std::stoi(count);
        plan.rigModel = rig.empty() ? 0 : std::stoi(rig);
        plan.rigPort = m_rigPort->text().trimmed().toStdString();
        problem = CheckMonitorPlan(plan);
        std::string name;
        if (problem.empty() && plan.rigModel != 0 && !HamlibRig::KnownModel(plan.rigModel, &name))
            problem = name;
    }
    if (!problem.empty()) {
        m_dialogs.ShowMessage(problem, kAppTitle, MessageIcon::Exclamation);
        return;
    }

    MainModel& m = m_model;
    MonitorSetup setup;
    setup.setup = m.setup;
    setup.options = m.options;
    setup.transfer = m.state.transfer;
    setup.postEnabled = m.state.transfer.online && !m.state.transfer.URL.empty();
    setup.dataLogPath = m.outputs.TsvFileName;
    setup.tempWave = m.steps.TempWave + "m"; // never the main window's own step files
    setup.decimalSeparator = m.environment().decimalSeparator;
    if (!m.setup.AntFileName.empty()) {
        AntennaFileMode* antenna = &m.antenna; // read only while the run lasts
        setup.antennaValueAt = [antenna](double f) { return antenna->ValueAt(f); };
    }
    const std::string device = m.state.InputDevice;
    const bool fromFiles = device == kFileInputName;
    const std::string templatePath =
        ResourceFolder(QCoreApplication::applicationDirPath().toStdString(), "ZAV.wav") + "ZAV.wav";

    m_stop = false;
    m_view.Started(rig.empty() ? std::vector<double>{plan.frequenciesMHz.front()}
                               : plan.frequenciesMHz);
    if (runningChanged)
        runningChanged(true);
    refresh();
    redrawChart();

    if (m_worker.joinable())
        m_worker.join();
    m_worker = std::thread([this, setup, plan, device, fromFiles, templatePath] {
        // Every adapter lives in the run's own thread.
        WindowDialogs dialogs(m_dialogs, this);
        QtAudioCapture capture;
        WaveRecorder recorder({capture, dialogs, nullptr}, templatePath,
                              [device] { return device; });
        FileAudioInput files(dialogs, [&dialogs]() {
            FileDialogRequest request;
            request.title = "Recording for the monitor";
            request.filter = "WAVE files (*.wav)|*.wav|All Files (*.*)|*.*";
            return dialogs.OpenFileName(request);
        });
        std::unique_ptr<HamlibRig> rig;
        if (plan.rigModel != 0)
            rig = std::make_unique<HamlibRig>(plan.rigModel, plan.rigPort);
        QtFormPoster poster;
        QtXmlLookup xml;
        WallClock clock;
        Monitor monitor(setup, plan,
                        {dialogs, fromFiles ? static_cast<AudioInput&>(files) : recorder, rig.get(),
                         &poster, &xml, clock, m_stop});
        monitor.onEvent = [this](const std::string& text) {
            QMetaObject::invokeMethod(this, [this, text] {
                m_view.Event(text);
                m_events->appendPlainText(qs(text));
            });
        };
        monitor.onStatus = [this](const MonitorStatus& status) {
            QMetaObject::invokeMethod(this, [this, status] {
                m_view.StatusChanged(status);
                refresh();
            });
        };
        monitor.onObservation = [this](const MonitorObservation& o) {
            QMetaObject::invokeMethod(this, [this, o] {
                m_view.Observed(o);
                redrawChart();
                refresh();
            });
        };
        monitor.Run();
        QMetaObject::invokeMethod(this, [this] { finished(); });
    });
}

void MonitorWindow::stop() {
    m_stop = true;
}

void MonitorWindow::finished() {
    if (m_worker.joinable())
        m_worker.join();
    m_view.running = false;
    m_view.startEnabled = true;
    m_view.stopEnabled = false;
    if (runningChanged)
        runningChanged(false);
    refresh();
}

void MonitorWindow::refresh() {
    m_state->setText(qs(m_view.stateText));
    m_nextCycle->setText(qs(m_view.nextCycleText));
    m_counts->setText(qs(m_view.countsText));
    m_start->setEnabled(m_view.startEnabled);
    m_stopButton->setEnabled(m_view.stopEnabled);
    for (QLineEdit* e : {m_frequencies, m_every, m_count, m_rig, m_rigPort})
        e->setEnabled(!m_view.running);
    m_table->setRowCount(static_cast<int>(m_view.table.size()));
    for (int r = 0; r < static_cast<int>(m_view.table.size()); ++r) {
        const auto& row = m_view.table[static_cast<std::size_t>(r)];
        const std::string cells[] = {row.frequency, row.hour, row.n, row.min, row.median, row.max};
        for (int c = 0; c < 6; ++c) {
            auto* item = new QTableWidgetItem(qs(cells[c]));
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(r, c, item);
        }
    }
}

void MonitorWindow::redrawChart() {
    m_chart->removeAllSeries();
    // The chart gives a removed axis back to us: without the delete, every redraw of a run
    // that lasts days would leak two.
    for (QAbstractAxis* axis : m_chart->axes()) {
        m_chart->removeAxis(axis);
        delete axis;
    }
    auto* time = new QDateTimeAxis;
    time->setTitleText("Local time");
    auto* value = new QValueAxis;
    value->setTitleText("Fa, dB above kT0b");
    m_chart->addAxis(time, Qt::AlignBottom);
    m_chart->addAxis(value, Qt::AlignLeft);

    std::time_t first = 0, last = 0;
    for (const auto& s : m_view.series)
        for (const auto& p : s.points) {
            first = first ? std::min(first, p.time) : p.time;
            last = std::max(last, p.time);
        }
    if (!first) {
        first = std::time(nullptr);
        last = first + 3600;
    }
    if (last - first < 60)
        last = first + 60;
    const auto [lo, hi] = m_view.ValueRange();
    value->setRange(lo, hi);
    time->setRange(QDateTime::fromSecsSinceEpoch(first), QDateTime::fromSecsSinceEpoch(last));
    time->setFormat(last - first < 3600        ? "HH:mm:ss"
                    : last - first < 2 * 86400 ? "HH:mm"
                                               : "dd.MM HH:mm");

    int index = 0;
    for (const auto& s : m_view.series) {
        const QColor colour = kColours[index++ % std::size(kColours)];
        auto* line = new QLineSeries;
        line->setName(qs(s.name));
        line->setPen(QPen(colour, 2));
        line->setPointsVisible(true);
        for (const auto& p : s.points)
            line->append(static_cast<double>(p.time) * 1000.0, p.value);
        m_chart->addSeries(line);
        line->attachAxis(time);
        line->attachAxis(value);
        for (const auto& ref : s.references) {
            auto* r = new QLineSeries;
            r->setName(qs(s.name + " " + ref.name));
            QPen pen(colour, 1, Qt::DashLine);
            r->setPen(pen);
            r->append(static_cast<double>(first) * 1000.0, ref.valueDb);
            r->append(static_cast<double>(last) * 1000.0, ref.valueDb);
            m_chart->addSeries(r);
            r->attachAxis(time);
            r->attachAxis(value);
            // The reference lines are named in their tooltips, not in the legend.
            for (QLegendMarker* marker : m_chart->legend()->markers(r))
                marker->setVisible(false);
        }
    }
}

} // namespace zav
