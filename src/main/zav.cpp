// The desktop program: applies the command line, then lives in the main window's events.
#include "app/Startup.h"
#include "platform/CommandLine.h"
#include "qt/services/QtSettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "qt/widgets/QtDialogs.h"

#include <QApplication>
#include <QDir>

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

    zav::MainWindow window(decision.state);
    window.show();
    return QApplication::exec();
}
