#pragma once

#include "config/ResultGrid.h"

#include <QKeySequence>
#include <QMainWindow>

#include <functional>
#include <string>
#include <vector>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QPushButton;
class QScrollArea;

namespace zav {

class Beeper;
class Clipboard;
class Dialogs;
class HttpClient;
class Mailer;
class MainModel;
class Shell;
class SystemInfo;
class Updater;
class XmlLookup;
class P372Panel;
class SettingsStore;
class ResultTable;
class SetupPanel;

// The desktop services the window's dialogs reach through.
struct DesktopPorts {
    HttpClient& http;
    XmlLookup& xml;
    Shell& shell;
    SystemInfo& systemInfo;
    Updater& updater;
    Mailer& mailer;
    Clipboard& clipboard;
    Beeper& beeper;
};

// The main window: binds the widgets to the model, calls its handlers and shows its state
// again after each one. Everything it decides is the model's.
class MainWindow : public QMainWindow {
public:
    // `inputNames` lists the sound card's recording inputs for the "Audio input" menu;
    // `settings` keeps the window's place and size between runs.
    MainWindow(MainModel& model, Dialogs& dialogs, SettingsStore& settings, DesktopPorts desktop,
               std::function<std::vector<std::string>()> inputNames, QWidget* parent = nullptr);

    // Shows the model's state: texts, grids, colours, enabled and checked commands, focus.
    void refresh();

    QPushButton* stepButton(int step) const { return m_steps[step - 1]; }
    QPushButton* recordTsvButton() const { return m_rtsvb; }
    ResultTable* measurementsGrid() const { return m_gridMeas; }
    ResultTable* resultsGrid() const { return m_gridCalc; }
    // The size that shows everything without scrolling.
    QSize sizeHint() const override;
    // The status bar's account of the last command or step.
    QString statusMessage() const;
    SetupPanel* setupPanel() const { return m_setup; }
    // A menu command by its caption, for tests and for keyboard reachability checks.
    QAction* action(const QString& caption) const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    QWidget* buildResults();
    QAction* addCommand(QMenu* menu, const QString& caption, std::function<void()> handler);
    QAction* addShortcutCommand(QMenu* menu, const QString& caption, QKeySequence::StandardKey key,
                                std::function<void()> handler);
    void openInputLevel();
    void run(const std::function<void()>& handler);
    void fillAudioInputMenu();

    MainModel& m_model;
    Dialogs& m_dialogs;
    SettingsStore& m_settings;
    DesktopPorts m_desktop;
    std::function<std::vector<std::string>()> m_inputNames;
    QScrollArea* m_scroll = nullptr;
    SetupPanel* m_setup = nullptr;
    QPushButton* m_steps[3] = {};
    bool m_monitorRunning = false; // the manual steps wait while a monitor runs
    QPushButton* m_rtsvb = nullptr;
    QPushButton* m_getPos = nullptr;
    ResultTable* m_gridMeas = nullptr;
    ResultTable* m_gridCalc = nullptr;
    P372Panel* m_p372 = nullptr;
    QLabel* m_clock = nullptr;
    QLabel* m_stepTitle = nullptr;
    QLabel* m_message = nullptr;
    std::string m_status; // what the command being run did, set by its handler
    QMenu* m_audioInputMenu = nullptr;
    QActionGroup* m_audioInputs = nullptr;
    std::vector<QAction*> m_recent;
    std::vector<QAction*> m_actions;
};

} // namespace zav
