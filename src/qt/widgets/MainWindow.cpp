#include "qt/widgets/MainWindow.h"

#include "app/GetPosition.h"
#include "app/MainModel.h"
#include "measure/CalRxModel.h"
#include "platform/Associate.h"
#include "platform/ResourceFolder.h"
#include "platform/SettingsStore.h"
#include "platform/Version.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/widgets/AboutDialog.h"
#include "qt/widgets/CalRxDialog.h"
#include "qt/widgets/GetPositionDialog.h"
#include "qt/widgets/GpsSetupDialog.h"
#include "qt/widgets/InputLevelDialog.h"
#include "qt/widgets/MonitorWindow.h"
#include "qt/widgets/P372Panel.h"
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/ResultTable.h"
#include "qt/widgets/SetupPanel.h"
#include "qt/widgets/TransferDialog.h"
#include "qt/widgets/UpdateDialog.h"
#include "report/TransferModel.h"
#include "support/AboutModel.h"
#include "support/HelpMenu.h"
#include "support/UpdateModel.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QCoreApplication>
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

QAction* MainWindow::addCommand(QMenu* menu, const QString& caption,
                                std::function<void()> handler) {
    QAction* action = menu->addAction(caption);
    QObject::connect(action, &QAction::triggered, this,
                     [this, handler = std::move(handler)] { run(handler); });
    m_actions.push_back(action);
    return action;
}

QAction* MainWindow::action(const QString& caption) const {
    // By the words alone: moving an access key does not lose the command.
    const QString words = QString(caption).remove('&');
    for (QAction* a : m_actions)
        if (a->text().remove('&') == words)
            return a;
    return nullptr;
}

void MainWindow::run(const std::function<void()>& handler) {
    m_status.clear();
    handler();
    if (!m_status.empty())
        m_message->setText(qs(m_status));
    refresh();
}

QAction* MainWindow::addShortcutCommand(QMenu* menu, const QString& caption,
                                        QKeySequence::StandardKey key,
                                        std::function<void()> handler) {
    // A shortcut leaves the focus where it is, so the box being typed in is checked first,
    // as leaving it would; a refused value stops the command.
    QAction* action = addCommand(menu, caption, [this, handler = std::move(handler)] {
        if (m_setup->validateFocused())
            handler();
    });
    action->setShortcut(key);
    action->setShortcutContext(Qt::WindowShortcut);
    return action;
}

void MainWindow::buildMenus() {
    MainModel& m = m_model;
    QMenu* file = menuBar()->addMenu("&File");
    addShortcutCommand(file, "&Open profile", QKeySequence::Open,
                       [&m] { m.profiles.openProfile(); });
    addShortcutCommand(file, "Save &profile", QKeySequence::Save,
                       [&m] { m.profiles.saveProfile(); });
    file->addSeparator();
    for (int i = 1; i <= MaxMru; ++i) {
        m_recent.push_back(
            addCommand(file, QString("&%1").arg(i), [&m, i] { m.profiles.openRecentProfile(i); }));
    }
    file->addSeparator();
    addCommand(file, "&Import antenna file",
               [&m] { m.antenna.importAntennaFile(m.state.CurrentDir); });
    addCommand(file, "&Unload antenna file", [&m] { m.antenna.unloadAntennaFile(); });
    file->addSeparator();
    addCommand(file, "&Save text file", [this, &m] {
        m.outputs.saveText();
        m_status = m.outputs.status;
    });
    addCommand(file, "&Copy text results to Clipboard", [this, &m] {
        m.outputs.copyText();
        m_status = m.outputs.status;
    });
    addCommand(file, "S&end text file", [&m] { m.outputs.sendText(); });
    addCommand(file, "&Record TSV", [this, &m] {
        m.recordTsv();
        m_status = m.outputs.status;
    });
    addCommand(file, "&Transfer results", [this, &m] {
        const DesktopPorts& d = m_desktop;
        TransferModel transfer(m.reportSource(), m.state.transfer, m.transferHistory,
                               {d.http, d.xml, d.mailer, d.clipboard, m_dialogs});
        TransferDialog dialog(transfer, this);
        dialog.exec();
        m.steps.observation.positionFrozen = true; // the observation has been offered out
    });
    file->addSeparator();
    addCommand(file, "Ca&librateRx", [this, &m] {
        CalRxModel calibration(
            m.setup, m.steps.yfact, m_dialogs, [&m] { m.steps.recalculate(); },
            m.form.decimalSeparator);
        CalRxDialog dialog(calibration, this);
        dialog.exec();
    });
    file->addSeparator();
    addCommand(file, "&Associate .zav files", [this] {
        const bool done = associateFileTypes(QCoreApplication::applicationFilePath().toStdString(),
                                             m_desktop.shell);
        m_status = AssociationStatus(done, XdgDataHome());
    });
    file->addSeparator();
    addShortcutCommand(file, "E&xit", QKeySequence::Quit, [this] { close(); });

    QMenu* options = menuBar()->addMenu("&Options");
    const std::pair<const char*, std::function<void()>> checks[] = {
        {"&Beep", [&m] { m.optionsMenu.toggleBeep(); }},
        {"&Verbose", [&m] { m.optionsMenu.toggleVerbose(); }},
        {"Antenna&Factor", [&m] { m.optionsMenu.toggleAntennaFactor(); }},
        {"&Measurement interval as samples", [&m] { m.optionsMenu.toggleSamples(); }},
        {"Measurement &limits enabled", [&m] { m.optionsMenu.toggleLimits(); }},
        {"Auto save &TSV ", [&m] { m.optionsMenu.toggleAutoTsv(); }},
    };
    for (const auto& [caption, handler] : checks)
        addCommand(options, caption, handler)->setCheckable(true);
    options->addSeparator();
    addCommand(options, "GPS &setup...",
               [this, &m] { GpsSetupDialog::Edit(m.state.gps, m_dialogs, this); });
    m_audioInputMenu = options->addMenu("Audio &input");
    m_audioInputs = new QActionGroup(this);
    QObject::connect(m_audioInputMenu, &QMenu::aboutToShow, this, [this] { fillAudioInputMenu(); });
    fillAudioInputMenu();

    QMenu* utility = menuBar()->addMenu("&Utility");
    addCommand(utility, "Save &wave file", [this, &m] {
        m.waveExports.saveWave();
        m_status = m.waveExports.status;
    });
    addCommand(utility, "Export to &Gnuplot file", [this, &m] {
        m.waveExports.exportGnuplot();
        m_status = m.waveExports.status;
    });
    addCommand(utility, "Copy WAVE samples to &clipboard", [this, &m] {
        m.waveExports.copyWaveSamples();
        m_status = m.waveExports.status;
    });
    addCommand(utility, "&Plot wave", [&m] { m.waveExports.plotWave(); });
    addCommand(utility, "Play Wave &samples", [&m] { m.waveExports.playWave(); });
    utility->addSeparator();
    addCommand(utility, "Input &level...", [this] { openInputLevel(); });
    addCommand(utility, "Sound Card Control - Pla&yback",
               [&m] { m.soundControls.openPlaybackMixer(); });
    addCommand(utility, "Sound Card Control - &Record",
               [&m] { m.soundControls.openRecordingMixer(); });
    addCommand(utility, "&Audio properties", [&m] { m.soundControls.openSoundDevices(); });
    utility->addSeparator();
    QAction* monitor = utility->addAction("&Monitor...");
    QObject::connect(monitor, &QAction::triggered, this, [this] {
        // MonitorWindow has no meta-object of its own: found by its name.
        auto* window = static_cast<MonitorWindow*>(
            findChild<QWidget*>(MonitorWindow::kObjectName, Qt::FindDirectChildrenOnly));
        if (!window) {
            window = new MonitorWindow(m_model, m_dialogs, this);
            window->runningChanged = [this](bool running) {
                m_monitorRunning = running;
                refresh();
            };
        }
        window->show();
        window->raise();
    });
    m.waveExports.showPlot = [this](WavePlot plot) {
        auto* window = new PlotWindow(std::move(plot), m_dialogs, this);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
    };

    QMenu* help = menuBar()->addMenu("&Help");
    const std::string programDir = QCoreApplication::applicationDirPath().toStdString();
    addShortcutCommand(help, "&Manual", QKeySequence::HelpContents, [this, programDir] {
        HelpMenu(m_desktop.shell, m_dialogs).openHelp(ResourceFolder(programDir, "ZAV.pdf"));
    });
    addCommand(help, "&Home page",
               [this, &m] { HelpMenu(m_desktop.shell, m_dialogs).openHomePage(m.state.BaseUrl); });
    addCommand(help, "&FAQ",
               [this, &m] { HelpMenu(m_desktop.shell, m_dialogs).openFaq(m.state.BaseUrl); });
    addCommand(help, "&Support", [this, &m] {
        HelpMenu(m_desktop.shell, m_dialogs).openSupportPage(m.state.BaseUrl);
    });
    help->addSeparator();
    addCommand(help, "Check for &updates", [this, &m, programDir] {
        const DesktopPorts& d = m_desktop;
        UpdateModel update(m.state.BaseUrl, programDir,
                           {d.http, d.xml, d.updater, d.shell, m_dialogs});
        UpdateDialog dialog(update, this);
        dialog.exec();
    });
    addCommand(help, "&About ZAV", [this, programDir] {
        const DesktopPorts& d = m_desktop;
        AboutModel about(ResourceFolder(programDir, "licence.txt"),
                         {d.shell, m_dialogs, d.systemInfo});
        AboutDialog dialog(about, this);
        dialog.exec();
    });
}

void MainWindow::fillAudioInputMenu() {
    m_audioInputMenu->clear();
    for (QAction* a : m_audioInputs->actions())
        m_audioInputs->removeAction(a);
    auto add = [this](const QString& caption, const std::string& name) {
        QAction* a = m_audioInputMenu->addAction(caption);
        a->setCheckable(true);
        a->setChecked(m_model.state.InputDevice == name);
        m_audioInputs->addAction(a);
        QObject::connect(a, &QAction::triggered, this, [this, name] {
            m_model.state.InputDevice = name;
            refresh();
        });
    };
    add("System default", "");
    for (const std::string& name : m_inputNames ? m_inputNames() : std::vector<std::string>{})
        add(qs(name), name);
    m_audioInputMenu->addSeparator();
    add(kFileInputName, kFileInputName);
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

void MainWindow::openInputLevel() {
    const std::string& input = m_model.state.InputDevice;
    if (input == kFileInputName) {
        m_dialogs.ShowMessage("The chosen input reads recordings from files and has no live "
                              "level: choose a sound card input under Options, Audio input.",
                              kAppTitle, MessageIcon::Information);
        return;
    }
    QtAudioCapture capture;
    InputLevelDialog dialog(capture, input, this, m_model.form.decimalSeparator);
    dialog.exec();
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
