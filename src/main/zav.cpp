// The desktop program: applies the command line, then lives in the main window's events.
#include "app/MainModel.h"
#include "app/Startup.h"
#include "measure/WaveRecorder.h"
#include "platform/CommandLine.h"
#include "platform/Paths.h"
#include "platform/ResourceFolder.h"
#include "platform/Version.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/LocaleSeparator.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "qt/services/QtClipboard.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtMailer.h"
#include "qt/services/QtSettingsStore.h"
#include "qt/services/QtShell.h"
#include "qt/services/QtSystemInfo.h"
#include "qt/services/QtUpdater.h"
#include "qt/services/QtXmlLookup.h"
#include "qt/widgets/BusyIndicator.h"
#include "qt/widgets/MainWindow.h"
#include "qt/widgets/QtDialogs.h"
#include "qt/widgets/WorkingDialog.h"

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTimer>
#include <QWindow>

namespace {

// The system's version as a number comparable with "6.0".
std::string osVersion() {
#ifdef Q_OS_LINUX
    const QString text = QSysInfo::kernelVersion();
#else
    const QString text = QSysInfo::productVersion();
#endif
    const auto match = QRegularExpression(R"(^\d+(\.\d+)?)").match(text);
    return match.hasMatch() ? match.captured(0).toStdString() : "0";
}

char decimalSeparator() {
    return zav::LocaleDecimalSeparator();
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("ZAV"));
    QApplication::setApplicationName(QStringLiteral("ZAV"));

    std::vector<std::string> args;
    for (const QString& arg : QApplication::arguments().mid(1))
        args.push_back(arg.toStdString());

    zav::QtSettingsStore settings;
    zav::QtDialogs dialogs;
    const zav::StartupDecision decision = zav::DecideStartup(
        zav::JoinCommandLine(args), QDir::currentPath().toStdString(), settings, dialogs);
    if (!decision.showWindow)
        return 0;

    // Marks the program as running for as long as it runs; nothing waits on it.
    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QLockFile lock((runtime.isEmpty() ? QDir::tempPath() : runtime) + "/ZAV.lock");
    lock.tryLock(0);

    // The sound card records each step; the template beside the program decides the format.
    zav::MainModel* running = nullptr;
    zav::QtAudioCapture capture;
    // Owned by the main window once that exists.
    auto* working = new zav::WorkingDialog(nullptr, decimalSeparator());
    const std::string programDir = QApplication::applicationDirPath().toStdString();
    zav::WaveRecorder input({capture, dialogs, working},
                            zav::ResourceFolder(programDir, "ZAV.wav") + "ZAV.wav",
                            [&running] { return running ? running->state.InputDevice : ""; });
    zav::QtShell shell;
    zav::QtBeeper beeper;
    zav::QtAudioOutput audioOutput;
    zav::QtClipboard clipboard;
    zav::QtMailer mailer;
    zav::QtHttpClient http;
    zav::QtXmlLookup xml;
    zav::QtSystemInfo systemInfo;
    zav::QtUpdater updater;
    zav::MainEnvironment environment;
    environment.decimalSeparator = decimalSeparator();
    environment.tempDir = zav::WithTrailingSeparator(QDir::tempPath().toStdString());
    environment.processId =
        QString::number(QApplication::applicationPid(), 16).toUpper().toStdString();
    environment.osVersion = osVersion();
    zav::MainModel model(decision.state,
                         {dialogs, settings, input, audioOutput, beeper, clipboard, mailer, shell},
                         environment);
    running = &model;
    model.open();

    zav::MainWindow window(model, dialogs, settings,
                           {http, xml, shell, systemInfo, updater, mailer, clipboard, beeper},
                           zav::AudioInputNames);
    working->setParent(&window, Qt::Dialog);
    dialogs.setParent(&window);
    zav::ShowBusyWhileWaiting(http, &window, "Waiting for the server...");
    window.show();
    // For the start-up benchmark: end as soon as the window is on the screen and painted.
    QTimer shown;
    if (qEnvironmentVariableIsSet("ZAV_QUIT_WHEN_SHOWN")) {
        QObject::connect(&shown, &QTimer::timeout, &app, [&window] {
            if (window.windowHandle() && window.windowHandle()->isExposed())
                QApplication::quit();
        });
        shown.start(1);
    }
    return QApplication::exec();
}
