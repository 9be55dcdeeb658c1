// Makes docs/screenshots/main-window*.png: the main window after the demo observation (the
// example profile and recordings), drawn by the platform it runs on (Xvfb in the script).
// Usage: zav_main_window_screenshot OUT.png [WIDTHxHEIGHT] [verdict]
// With a size the window takes it (logical pixels); "verdict" measures the loud external
// recording as the sound card, so that the step's judgement shows in words, with its tooltip.
#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "qt/widgets/ResultTable.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QApplication>
#include <QHeaderView>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>
#include <QTimer>
#include <QToolTip>

#include <deque>
#include <filesystem>
#include <iostream>

using namespace zav;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::cerr << "usage: zav_main_window_screenshot OUT.png [WIDTHxHEIGHT] [verdict]\n";
        return 2;
    }
    const std::string examples = std::string(ZAV_SOURCE_DIR) + "/examples/";
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    test::NoDevices devices;
    StartupState startup;
    startup.currentDir = std::filesystem::temp_directory_path().string() + "/";
    // A copy: closing the window saves the profile it has open.
    startup.profilePath = startup.currentDir + "zav-screenshot-example.zav";
    std::filesystem::copy_file(examples + "example.zav", startup.profilePath,
                               std::filesystem::copy_options::overwrite_existing);
    startup.profileName = "example";
    MainEnvironment env;
    env.tempDir = startup.currentDir;
    env.processId = "5C2EE4";
    test::FakeShell shell;
    MainModel model(startup,
                    {dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
    const QString size = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    const bool verdict = argc > 3 && std::string(argv[3]) == "verdict";
    std::deque<std::string> files = {examples + "soundcard.wav", examples + "receiver.wav",
                                     examples + "external.wav"};
    if (verdict)
        files = {examples + "external.wav"};
    model.chooseRecording = [&files]() -> std::optional<std::string> {
        auto next = files.front();
        files.pop_front();
        return next;
    };
    model.open();
    model.state.InputDevice = kFileInputName;
    model.options.Verbose = false;
    if (!verdict) {
        model.Step1();
        model.Step2();
        model.Step3();
    }

    test::FakeHttp http;
    test::FakeXml xml;
    test::FakeSystemInfo systemInfo;
    test::FakeUpdater updater;
    MainWindow window(model, dialogs, settings,
                      {http, xml, shell, systemInfo, updater, devices, devices, devices}, nullptr);
    // The step from its button, so that the status bar tells its verdict.
    if (verdict)
        window.stepButton(1)->click();
    window.resize(window.sizeHint());
    if (!size.isEmpty())
        window.resize(size.section('x', 0, 0).toInt(), size.section('x', 1, 1).toInt());
    window.move(0, 0);
    window.show();
    std::cout << "main window minimum size " << window.minimumSizeHint().width() << "x"
              << window.minimumSizeHint().height() << " logical pixels at scale "
              << window.devicePixelRatioF() << "\n";
    int status = 1;
    QTimer::singleShot(300, [&] {
        if (verdict) {
            QTableWidget* grid = window.measurementsGrid();
            const QRect cell = grid->visualItemRect(grid->item(1, 0));
            const QPoint at = grid->viewport()->mapToGlobal(cell.center());
            QToolTip::showText(at, grid->item(1, 0)->toolTip(), grid);
        }
    });
    QTimer::singleShot(900, [&] {
        const QPixmap shot =
            verdict ? window.screen()->grabWindow(0, 0, 0, window.frameGeometry().width(),
                                                  window.frameGeometry().height())
                    : window.grab();
        status = shot.save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
        QApplication::quit();
    });
    QApplication::exec();
    std::filesystem::remove(startup.profilePath);
    return status;
}
