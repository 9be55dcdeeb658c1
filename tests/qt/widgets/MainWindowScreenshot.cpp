// Makes docs/screenshots/main-window.png: the main window after the demo observation (the
// example profile and recordings), drawn by the platform it runs on (Xvfb in the script).
#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include <deque>
#include <filesystem>
#include <iostream>

using namespace zav;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::cerr << "usage: zav_main_window_screenshot OUT.png\n";
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
    std::deque<std::string> files = {examples + "soundcard.wav", examples + "receiver.wav",
                                     examples + "external.wav"};
    model.chooseRecording = [&files]() -> std::optional<std::string> {
        auto next = files.front();
        files.pop_front();
        return next;
    };
    model.Form_Load();
    model.state.InputDevice = kFileInputName;
    model.options.Verbose = false;
    model.Step1();
    model.Step2();
    model.Step3();

    test::FakeHttp http;
    test::FakeXml xml;
    test::FakeSystemInfo systemInfo;
    test::FakeUpdater updater;
    MainWindow window(model, dialogs, settings,
                      {http, xml, shell, systemInfo, updater, devices, devices, devices}, nullptr);
    window.resize(window.sizeHint());
    window.show();
    int status = 1;
    QTimer::singleShot(300, [&] {
        status = window.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
        QApplication::quit();
    });
    QApplication::exec();
    std::filesystem::remove(startup.profilePath);
    return status;
}
