#include "qt/widgets/MainWindow.h"

#include "app/GetPosition.h"
#include "app/MainModel.h"
#include "platform/SettingsStore.h"
#include "platform/Version.h"
#include "qt/widgets/GetPositionDialog.h"
#include "qt/widgets/P372Panel.h"
#include "qt/widgets/ResultTable.h"
#include "qt/widgets/SetupPanel.h"

#include <QAction>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <ctime>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

// The window's place and size, in a section of its own that the profile commands leave alone.
constexpr const char* kWindowSection = "window";
constexpr const char* kGeometryKey = "geometry";

} // namespace

MainWindow::MainWindow(MainModel& model, Dialogs& dialogs, SettingsStore& settings,
                       DesktopPorts desktop, std::function<std::vector<std::string>()> inputNames,
                       QWidget* parent)
    : QMainWindow(parent), m_model(model), m_dialogs(dialogs), m_settings(settings),
      m_desktop(desktop), m_inputNames(std::move(inputNames)) {
    // The content scrolls, so that a small screen or a large scaling still reaches every
    // part, and the status bar with the verdicts stays in sight below it.
    m_scroll = new QScrollArea(this);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setAccessibleName("Main window content");
    auto* central = new QWidget(m_scroll);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(12, 12, 12, 8);
    layout->setSpacing(10);

    auto* setupBox = new QGroupBox("Set-up", central);
    auto* setupLayout = new QVBoxLayout(setupBox);
    m_setup = new SetupPanel(
        model, [this] { refresh(); }, setupBox);
    setupLayout->addWidget(m_setup);
    layout->addWidget(setupBox);

    auto* stepRow = new QHBoxLayout;
    const char* captions[] = {"Step &1: measure sound card noise",
                              "Step &2: measure receiver noise", "Step &3: measure external noise"};
    const std::function<void()> handlers[] = {
        [this] { m_model.Step1(); }, [this] { m_model.Step2(); }, [this] { m_model.Step3(); }};
    const char* tips[] = {"Records the sound card's own noise with the receiver off",
                          "Records the receiver's own noise with its antenna input terminated",
                          "Records the noise the antenna brings; then the results are worked out"};
    for (int i = 0; i < 3; ++i) {
        m_steps[i] = new QPushButton(captions[i], central);
        m_steps[i]->setToolTip(tips[i]);
        auto handler = handlers[i];
        QObject::connect(m_steps[i], &QPushButton::clicked, this, [this, handler] {
            run([this, handler] {
                handler();
                m_status = m_model.steps.verdict;
            });
        });
        stepRow->addWidget(m_steps[i]);
    }
    m_getPos = new QPushButton("Get &position", central);
    m_getPos->setObjectName("getPositionButton");
    QObject::connect(m_getPos, &QPushButton::clicked, this, [this] {
        run([this] {
            MainModel& m = m_model;
            m.GetPosition([this, &m](SetupRecord& setup) {
                GetPositionDialog::Capture(setup, m.state.gps, m_desktop.beeper, m.options.Beep,
                                           m.form.decimalSeparator, this);
            });
        });
    });
    stepRow->addWidget(m_getPos);
    m_rtsvb = new QPushButton("Record TS&V", central);
    m_rtsvb->setToolTip("Appends this observation's row to the data log");
    QObject::connect(m_rtsvb, &QPushButton::clicked, this, [this] {
        run([this] {
            m_model.recordTsv();
            m_status = m_model.outputs.status;
        });
    });
    stepRow->addWidget(m_rtsvb);
    layout->addLayout(stepRow);
    layout->addWidget(buildResults());
    m_p372 = new P372Panel(central);
    layout->addWidget(m_p372);
    layout->addStretch();
    m_scroll->setWidget(central);
    setCentralWidget(m_scroll);

    m_stepTitle = new QLabel(this);
    m_stepTitle->setAccessibleName("Step last measured");
    m_message = new QLabel(this);
    m_message->setAccessibleName("Last result");
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_clock = new QLabel(this);
    m_clock->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    statusBar()->addWidget(m_stepTitle);
    statusBar()->addWidget(m_message, 1);
    statusBar()->addPermanentWidget(m_clock);

    buildMenus();

    auto* timer = new QTimer(this);
    QObject::connect(timer, &QTimer::timeout, this, [this] {
        if (m_model.onClockTick(std::time(nullptr)))
            m_clock->setText(qs(m_model.clockText));
    });
    timer->start(500);
    m_model.onClockTick(std::time(nullptr));
    m_clock->setText(qs(m_model.clockText));

    const std::string geometry = m_settings.GetSetting(kWindowSection, kGeometryKey, "");
    if (!restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(geometry))))
        resize(sizeHint());
    m_model.showState = [this] { refresh(); };
    // Never taller or wider than the screen: a window from a larger screen or a lower scaling
    // would hide its status bar below the edge.
    if (const QScreen* screen = this->screen()) {
        const QRect available = screen->availableGeometry();
        if (!isMaximized() && !isFullScreen())
            resize(size().boundedTo(available.size()));
    }
    refresh();
}

QWidget* MainWindow::buildResults() {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* measBox = new QGroupBox("Measurements", row);
    auto* measLayout = new QVBoxLayout(measBox);
    auto copied = [this](const std::string&) {
        m_message->setText("Selected cells copied to the clipboard");
    };
    m_gridMeas =
        new ResultTable(ResultGrid::MakeMeasGrid(), "Measurements", m_desktop.clipboard, measBox);
    m_gridMeas->copied = copied;
    measLayout->addWidget(m_gridMeas);
    auto* calcBox = new QGroupBox("Calculated results", row);
    auto* calcLayout = new QVBoxLayout(calcBox);
    m_gridCalc = new ResultTable(ResultGrid::MakeCalcGrid(), "Calculated results",
                                 m_desktop.clipboard, calcBox);
    m_gridCalc->copied = copied;
    calcLayout->addWidget(m_gridCalc);
    calcLayout->addStretch();
    layout->addWidget(measBox, 1);
    layout->addWidget(calcBox, 1);
    return row;
}

void MainWindow::refresh() {
    MainModel& m = m_model;
    setWindowTitle(qs(m.Caption));
    m_setup->refresh();
    m_gridMeas->showGrid(m.steps.gridMeas);
    m_gridCalc->showGrid(m.steps.gridCalc);
    m_stepTitle->setText(qs(m.steps.shownTitle));
    m_p372->refresh(m.steps, m.setup);

    const CommandStates& c = m.commands;
    m_steps[0]->setEnabled(!m_monitorRunning);
    m_steps[1]->setEnabled(c.Step2 && !m_monitorRunning);
    m_steps[2]->setEnabled(c.Step3 && !m_monitorRunning);
    m_rtsvb->setEnabled(c.recordTsvButtonEnabled);
    const std::pair<const char*, bool> enabled[] = {
        {"&Save text file", c.saveTextEnabled},
        {"&Copy text results to Clipboard", c.copyTextEnabled},
        {"S&end text file", c.sendTextEnabled},
        {"&Record TSV", c.recordTsvEnabled},
        {"Ca&librateRx", c.calibrateRxEnabled},
        {"&Transfer results", c.transferEnabled},
        {"Save &wave file", m.waveExports.saveWaveEnabled},
        {"Export to &Gnuplot file", c.exportGnuplotEnabled},
        {"Copy WAVE samples to &clipboard", m.waveExports.copyWaveEnabled},
        {"&Plot wave", m.waveExports.plotWaveEnabled},
        {"Play Wave &samples", m.waveExports.playWaveEnabled},
        {"Sound Card Control - Pla&yback", m.playbackMixerEnabled},
        {"Sound Card Control - &Record", m.recordingMixerEnabled},
        {"&Unload antenna file", m.antenna.unloadAntennaEnabled},
        {"Antenna&Factor", m.controls.antennaFactorEnabled},
    };
    for (const auto& [caption, on] : enabled)
        action(caption)->setEnabled(on);
    const std::pair<const char*, bool> checked[] = {
        {"&Beep", m.options.Beep},
        {"&Verbose", m.options.Verbose},
        {"Antenna&Factor", m.options.AntFact},
        {"&Measurement interval as samples", m.options.Samples},
        {"Measurement &limits enabled", m.options.Limits},
        {"Auto save &TSV ", m.options.AutoTsv},
    };
    for (const auto& [caption, on] : checked)
        action(caption)->setChecked(on);
    for (int i = 1; i <= MaxMru; ++i) {
        QAction* entry = m_recent[static_cast<std::size_t>(i - 1)];
        entry->setText(QString("&%1 %2").arg(i).arg(qs(m.state.recent.Caption[i])));
        entry->setVisible(m.state.recent.Visible[i]);
    }

    switch (std::exchange(m.focus, FocusTarget::Unchanged)) {
    case FocusTarget::Step1:
        m_steps[0]->setFocus();
        break;
    case FocusTarget::Step2:
        m_steps[1]->setFocus();
        break;
    case FocusTarget::Step3:
        m_steps[2]->setFocus();
        break;
    case FocusTarget::recordTsvButtonEnabled:
        m_rtsvb->setFocus();
        break;
    case FocusTarget::SetupBox:
        m_setup->fieldWidget(m.focusField)->setFocus();
        break;
    case FocusTarget::Unchanged:
        break;
    }
}

QSize MainWindow::sizeHint() const {
    // Everything without scrolling: the content's own size and the bars around it.
    const QSize content = m_scroll->widget()->sizeHint();
    const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    return {content.width() + scrollBar,
            content.height() + menuBar()->sizeHint().height() + statusBar()->sizeHint().height()};
}

QString MainWindow::statusMessage() const {
    return m_message->text();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    std::string error;
    if (!m_model.close(&error))
        m_dialogs.ShowMessage("Error: the profile could not be saved: " + error, kAppTitle,
                              MessageIcon::Critical);
    m_settings.SaveSetting(kWindowSection, kGeometryKey, saveGeometry().toBase64().toStdString());
    if (!m_settings.WriteError().empty())
        m_dialogs.ShowMessage("Error: the settings could not be saved: " + m_settings.WriteError(),
                              kAppTitle, MessageIcon::Critical);
    event->accept();
}

} // namespace zav
