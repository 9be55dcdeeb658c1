// The main window's menu bar: its commands, each run the same way as the step buttons.
#include "qt/widgets/MainWindow.h"

#include "app/MainModel.h"
#include "measure/CalRxModel.h"
#include "platform/Associate.h"
#include "platform/ResourceFolder.h"
#include "platform/Version.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/widgets/AboutDialog.h"
#include "qt/widgets/CalRxDialog.h"
#include "qt/widgets/GpsSetupDialog.h"
#include "qt/widgets/InputLevelDialog.h"
#include "qt/widgets/MonitorWindow.h"
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/SetupPanel.h"
#include "qt/widgets/TransferDialog.h"
#include "qt/widgets/UpdateDialog.h"
#include "report/TransferModel.h"
#include "support/AboutModel.h"
#include "support/HelpMenu.h"
#include "support/UpdateModel.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QLabel>
#include <QMenuBar>

namespace zav {

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
        m_message->setText(QString::fromStdString(m_status));
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
        add(QString::fromStdString(name), name);
    m_audioInputMenu->addSeparator();
    add(kFileInputName, kFileInputName);
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

} // namespace zav
