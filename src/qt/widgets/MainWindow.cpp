#include "qt/widgets/MainWindow.h"

#include "app/GetPosition.h"
#include "app/MainModel.h"
#include "measure/CalRxModel.h"
#include "platform/Associate.h"
#include "platform/ResourceFolder.h"
#include "platform/SettingsStore.h"
#include "platform/Version.h"
#include "qt/widgets/AboutDialog.h"
#include "qt/widgets/CalRxDialog.h"
#include "qt/widgets/MonitorWindow.h"
#include "qt/widgets/P372Panel.h"
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/SetupPanel.h"
#include "qt/widgets/TransferDialog.h"
#include "qt/widgets/UpdateDialog.h"
#include "qt/widgets/frmGetPosition.h"
#include "qt/widgets/frmGpsSetup.h"
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
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
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

QTableWidget* makeGrid(int rows, int columns, QWidget* parent) {
    auto* table = new QTableWidget(rows - 1, columns - 1, parent);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setFocusPolicy(Qt::NoFocus);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setMinimumWidth(columns * 120);
    for (int r = 0; r < rows - 1; ++r)
        for (int c = 0; c < columns - 1; ++c) {
            auto* item = new QTableWidgetItem;
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table->setItem(r, c, item);
        }
    // Tall enough for every row without a scroll bar.
    const int height = table->horizontalHeader()->sizeHint().height() +
                       (rows - 1) * table->verticalHeader()->defaultSectionSize() + 4;
    table->setFixedHeight(height);
    return table;
}

} // namespace

MainWindow::MainWindow(MainModel& model, Dialogs& dialogs, SettingsStore& settings,
                       DesktopPorts desktop, std::function<std::vector<std::string>()> inputNames,
                       QWidget* parent)
    : QMainWindow(parent), m_model(model), m_dialogs(dialogs), m_settings(settings),
      m_desktop(desktop), m_inputNames(std::move(inputNames)) {
    auto* central = new QWidget(this);
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
    for (int i = 0; i < 3; ++i) {
        m_steps[i] = new QPushButton(captions[i], central);
        auto handler = handlers[i];
        QObject::connect(m_steps[i], &QPushButton::clicked, this,
                         [this, handler] { run(handler); });
        stepRow->addWidget(m_steps[i]);
    }
    m_getPos = new QPushButton("Get &position", central);
    m_getPos->setObjectName("btnGetPos");
    QObject::connect(m_getPos, &QPushButton::clicked, this, [this] {
        run([this] {
            MainModel& m = m_model;
            m.focus = btnGetPos_Click(m.setup, m.commands, [this, &m](SetupRecord& setup) {
                frmGetPosition::Capture(setup, m.state.gps, m_desktop.beeper, m.options.Beep,
                                        m.form.decimalSeparator, this);
            });
        });
    });
    stepRow->addWidget(m_getPos);
    m_rtsvb = new QPushButton("Record TS&V", central);
    QObject::connect(m_rtsvb, &QPushButton::clicked, this,
                     [this] { run([this] { m_model.RTSVB_Click(); }); });
    stepRow->addWidget(m_rtsvb);
    layout->addLayout(stepRow);
    layout->addWidget(buildResults());
    m_p372 = new P372Panel(central);
    layout->addWidget(m_p372);
    setCentralWidget(central);

    m_stepTitle = new QLabel(this);
    m_clock = new QLabel(this);
    m_clock->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    statusBar()->addWidget(m_stepTitle, 1);
    statusBar()->addPermanentWidget(m_clock);

    buildMenus();

    auto* timer = new QTimer(this);
    QObject::connect(timer, &QTimer::timeout, this, [this] {
        if (m_model.Timer1_Timer(std::time(nullptr)))
            m_clock->setText(qs(m_model.lblTime));
    });
    timer->start(500);
    m_model.Timer1_Timer(std::time(nullptr));
    m_clock->setText(qs(m_model.lblTime));

    const std::string geometry = m_settings.GetSetting(kWindowSection, kGeometryKey, "");
    if (!restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(geometry))))
        resize(sizeHint());
    refresh();
}

QWidget* MainWindow::buildResults() {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* measBox = new QGroupBox("Measurements", row);
    auto* measLayout = new QVBoxLayout(measBox);
    const ResultGrid meas = ResultGrid::MakeMeasGrid();
    m_gridMeas = makeGrid(meas.Rows(), meas.Columns(), measBox);
    measLayout->addWidget(m_gridMeas);
    auto* calcBox = new QGroupBox("Calculated results", row);
    auto* calcLayout = new QVBoxLayout(calcBox);
    const ResultGrid calc = ResultGrid::MakeCalcGrid();
    m_gridCalc = makeGrid(calc.Rows(), calc.Columns(), calcBox);
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
    for (QAction* a : m_actions)
        if (a->text() == caption)
            return a;
    return nullptr;
}

void MainWindow::run(const std::function<void()>& handler) {
    handler();
    refresh();
}

void MainWindow::buildMenus() {
    MainModel& m = m_model;
    QMenu* file = menuBar()->addMenu("&File");
    addCommand(file, "&Open profile", [&m] { m.profiles.MenuOpenProfile_Click(); });
    addCommand(file, "Save &profile", [&m] { m.profiles.MenuSaveProfile_Click(); });
    file->addSeparator();
    for (int i = 1; i <= MaxMru; ++i) {
        m_recent.push_back(addCommand(file, QString("&%1").arg(i),
                                      [&m, i] { m.profiles.MenuRecentFile_Click(i); }));
    }
    file->addSeparator();
    addCommand(file, "&Import antenna file",
               [&m] { m.antenna.MenuImportAntenna_Click(m.state.CurrentDir); });
    addCommand(file, "&Unload antenna file", [&m] { m.antenna.MenuAntUnl_Click(); });
    file->addSeparator();
    addCommand(file, "&Save text file", [&m] { m.outputs.MenuSaveText_Click(); });
    addCommand(file, "&Copy text results to Clipboard",
               [&m] { m.outputs.MenuCopyTextClip_Click(); });
    addCommand(file, "S&end text file", [&m] { m.outputs.MenuSendText_Click(); });
    addCommand(file, "&Record TSV", [&m] { m.MenuSaveTsv_Click(); });
    addCommand(file, "&Transfer results", [this, &m] {
        const DesktopPorts& d = m_desktop;
        TransferModel transfer(m.reportSource(), m.state.transfer, m.transferHistory,
                               {d.http, d.xml, d.mailer, d.clipboard, m_dialogs});
        TransferDialog dialog(transfer, this);
        dialog.exec();
    });
    file->addSeparator();
    addCommand(file, "&CalibrateRx", [this, &m] {
        CalRxModel calibration(
            m.setup, m.steps.yfact, m_dialogs, [&m] { m.steps.CalcCalc(); },
            m.form.decimalSeparator);
        CalRxDialog dialog(calibration, this);
        dialog.exec();
    });
    file->addSeparator();
    addCommand(file, "Associate .zav files", [this] {
        MenuAssociate_Click(QCoreApplication::applicationFilePath().toStdString(), m_desktop.shell);
    });
    file->addSeparator();
    addCommand(file, "E&xit", [this] { close(); });

    QMenu* options = menuBar()->addMenu("&Options");
    const std::pair<const char*, std::function<void()>> checks[] = {
        {"&Beep", [&m] { m.optionsMenu.MenuOptionsBeep_Click(); }},
        {"&Verbose", [&m] { m.optionsMenu.MenuOptionsVerbose_Click(); }},
        {"Antenna&Factor", [&m] { m.optionsMenu.MenuOptionsAntFact_Click(); }},
        {"&Measurement interval as samples", [&m] { m.optionsMenu.MenuOptionsSamples_Click(); }},
        {"Measurement &limits enabled", [&m] { m.optionsMenu.MenuOptionsLimits_Click(); }},
        {"Auto save &TSV ", [&m] { m.optionsMenu.MenuOptionsAutoTsv_Click(); }},
    };
    for (const auto& [caption, handler] : checks)
        addCommand(options, caption, handler)->setCheckable(true);
    options->addSeparator();
    addCommand(options, "GPS &setup...",
               [this, &m] { frmGpsSetup::Edit(m.state.gps, m_dialogs, this); });
    m_audioInputMenu = options->addMenu("Audio &input");
    m_audioInputs = new QActionGroup(this);
    QObject::connect(m_audioInputMenu, &QMenu::aboutToShow, this, [this] { fillAudioInputMenu(); });
    fillAudioInputMenu();

    QMenu* utility = menuBar()->addMenu("&Utility");
    addCommand(utility, "Save &wave file", [&m] { m.waveExports.MenuSaveWave_Click(); });
    addCommand(utility, "Export to &Gnuplot file",
               [&m] { m.waveExports.MenuExportGnuplot_Click(); });
    addCommand(utility, "Copy &WAVE samples to clipboard",
               [&m] { m.waveExports.MenuCopyWaveClip_Click(); });
    addCommand(utility, "&Plot wave", [&m] { m.waveExports.MenuPlotWave_Click(); });
    addCommand(utility, "Play Wave samples", [&m] { m.waveExports.MenuPlayWave_Click(); });
    utility->addSeparator();
    addCommand(utility, "Sound Card Control - &Playback",
               [&m] { m.soundControls.MenuSCCP_Click(); });
    addCommand(utility, "Sound Card Control - &Record", [&m] { m.soundControls.MenuSCCR_Click(); });
    addCommand(utility, "&Audio properties", [&m] { m.soundControls.mnuMMSYS_Click(); });
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
    addCommand(help, "&Manual", [this, programDir] {
        HelpMenu(m_desktop.shell, m_dialogs)
            .MenuHelpHelp_Click(ResourceFolder(programDir, "ZAV.pdf"));
    });
    addCommand(help, "&Home page", [this, &m] {
        HelpMenu(m_desktop.shell, m_dialogs).MenuHome_Click(m.state.BaseUrl);
    });
    addCommand(help, "&FAQ",
               [this, &m] { HelpMenu(m_desktop.shell, m_dialogs).MenuFaq_Click(m.state.BaseUrl); });
    addCommand(help, "&Support", [this, &m] {
        HelpMenu(m_desktop.shell, m_dialogs).MenuSupport_Click(m.state.BaseUrl);
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

void MainWindow::showGrid(QTableWidget* table, const ResultGrid& grid) {
    QStringList columns, rows;
    for (int c = 1; c < grid.Columns(); ++c)
        columns << qs(grid.Text(0, c));
    for (int r = 1; r < grid.Rows(); ++r)
        rows << qs(grid.Text(r, 0));
    table->setHorizontalHeaderLabels(columns);
    table->setVerticalHeaderLabels(rows);
    const QColor normal = palette().color(QPalette::Text);
    for (int r = 1; r < grid.Rows(); ++r) {
        for (int c = 1; c < grid.Columns(); ++c) {
            QTableWidgetItem* item = table->item(r - 1, c - 1);
            item->setText(qs(grid.Text(r, c)));
            switch (grid.Colour(r, c)) {
            case CellColour::Red:
                item->setForeground(QColor(255, 0, 0));
                break;
            case CellColour::Orange:
                item->setForeground(QColor(255, 128, 0));
                break;
            case CellColour::WindowText:
                item->setForeground(normal);
                break;
            }
        }
    }
}

void MainWindow::refresh() {
    MainModel& m = m_model;
    setWindowTitle(qs(m.Caption));
    m_setup->refresh();
    showGrid(m_gridMeas, m.steps.gridMeas);
    showGrid(m_gridCalc, m.steps.gridCalc);
    m_stepTitle->setText(qs(m.steps.shownTitle));
    m_p372->refresh(m.steps, m.setup);

    const CommandStates& c = m.commands;
    m_steps[0]->setEnabled(!m_monitorRunning);
    m_steps[1]->setEnabled(c.Step2 && !m_monitorRunning);
    m_steps[2]->setEnabled(c.Step3 && !m_monitorRunning);
    m_rtsvb->setEnabled(c.RTSVB);
    const std::pair<const char*, bool> enabled[] = {
        {"&Save text file", c.MenuSaveText},
        {"&Copy text results to Clipboard", c.MenuCopyTextClip},
        {"S&end text file", c.MenuSendText},
        {"&Record TSV", c.MenuSaveTsv},
        {"&CalibrateRx", c.MenuCalRx},
        {"&Transfer results", c.MenuTransfer},
        {"Save &wave file", m.waveExports.MenuSaveWave},
        {"Export to &Gnuplot file", c.MenuExportGnuplot},
        {"Copy &WAVE samples to clipboard", m.waveExports.MenuCopyWaveClip},
        {"&Plot wave", m.waveExports.MenuPlotWave},
        {"Play Wave samples", m.waveExports.MenuPlayWave},
        {"Sound Card Control - &Playback", m.MenuSCCPEnabled},
        {"Sound Card Control - &Record", m.MenuSCCREnabled},
        {"&Unload antenna file", m.antenna.MenuAntUnlEnabled},
        {"Antenna&Factor", m.controls.MenuOptionsAntFactEnabled},
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
    case FocusTarget::RTSVB:
        m_rtsvb->setFocus();
        break;
    case FocusTarget::Unchanged:
        break;
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    std::string error;
    if (!m_model.Form_Unload(&error))
        m_dialogs.ShowMessage("Error: the profile could not be saved: " + error, kAppTitle,
                              MessageIcon::Critical);
    m_settings.SaveSetting(kWindowSection, kGeometryKey, saveGeometry().toBase64().toStdString());
    event->accept();
}

} // namespace zav
