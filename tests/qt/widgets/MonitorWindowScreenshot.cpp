// Makes docs/screenshots/monitor-window.png: a real run through the Monitor window on three
// frequencies, tuned in-process by Hamlib's dummy rig, with recordings made here at a level
// that differs by frequency and drifts from cycle to cycle as band noise does.
#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MonitorWindow.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QTimer>

#include <cmath>
#include <filesystem>
#include <iostream>

using namespace zav;
namespace fs = std::filesystem;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::cerr << "usage: zav_monitor_window_screenshot OUT.png\n";
        return 2;
    }
    const fs::path dir = fs::temp_directory_path() / "zav-monitor-screenshot";
    fs::remove_all(dir);
    fs::create_directories(dir);
    const std::string examples = std::string(ZAV_SOURCE_DIR) + "/examples/";
    constexpr int kRate = 8000, kCycles = 12;
    const double levels[] = {600, 420, 300}; // RMS counts: lower bands are noisier

    test::FakeDialogs dialogs;
    auto wave = [&](const std::string& name, double rms, unsigned seed) {
        const std::string path = (dir / name).string();
        test::WriteWave(path, test::Noise(rms, 4 * kRate, seed), kRate);
        dialogs.files.push_back(path);
    };
    wave("soundcard.wav", 3, 1);
    for (int f = 0; f < 3; ++f)
        wave("receiver" + std::to_string(f) + ".wav", 100, 10 + f);
    for (int c = 0; c < kCycles; ++c)
        for (int f = 0; f < 3; ++f)
            wave("external-" + std::to_string(c) + "-" + std::to_string(f) + ".wav",
                 levels[f] * (1 + 0.35 * std::sin(c / 2.0 + f)), 100 + 3 * c + f);

    MemorySettingsStore settings;
    test::NoDevices devices;
    test::FakeShell shell;
    StartupState startup;
    startup.currentDir = dir.string() + "/";
    startup.profilePath = (dir / "example.zav").string();
    fs::copy_file(examples + "example.zav", startup.profilePath);
    startup.tsvFileName = (dir / "monitor.tab").string();
    MainEnvironment env;
    env.tempDir = startup.currentDir;
    env.processId = "5C2EE4";
    MainModel model(startup,
                    {dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
    model.open();
    model.state.InputDevice = kFileInputName;
    model.state.transfer.URL.clear();

    MonitorWindow window(model, dialogs);
    window.frequencies()->setText("3.5, 5.3, 7.0");
    window.every()->setText("1s");
    window.cycles()->setText(QString::number(kCycles));
    window.rigModel()->setText("1");
    window.resize(1000, 820);
    window.show();
    window.start();
    int status = 1;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (window.viewModel().running)
            return;
        poll.stop();
        QTimer::singleShot(300, [&] {
            status = window.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
            QApplication::quit();
        });
    });
    poll.start(100);
    QApplication::exec();
    fs::remove_all(dir);
    return status;
}
