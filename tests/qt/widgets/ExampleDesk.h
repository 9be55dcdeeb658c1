#pragma once

#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <filesystem>
#include <memory>

namespace zav::test {

// The main model on a copy of the example profile in its own folder (closing a window saves the
// profile it has open), with the outside world faked and recordings read from dialogs.files.
struct ExampleDesk {
    std::filesystem::path dir;
    FakeDialogs dialogs;
    MemorySettingsStore settings;
    NoDevices devices;
    FakeShell shell;
    FakeHttp http;
    FakeXml xml;
    FakeSystemInfo systemInfo;
    FakeUpdater updater;
    DesktopPorts desktop{http, xml, shell, systemInfo, updater, devices, devices, devices};
    std::unique_ptr<MainModel> model;

    explicit ExampleDesk(std::filesystem::path folder) : dir(std::move(folder)) {
        namespace fs = std::filesystem;
        fs::create_directories(dir);
        fs::copy_file(fs::path(ZAV_SOURCE_DIR) / "examples" / "example.zav", dir / "example.zav",
                      fs::copy_options::overwrite_existing);
        StartupState startup;
        MainEnvironment env;
        startup.currentDir = env.tempDir = dir.string() + "/";
        startup.profilePath = (dir / "example.zav").string(), startup.profileName = "example";
        startup.tsvFileName = (dir / "log.tab").string();
        env.processId = "1A2B", env.osVersion = "6.1";
        model = std::make_unique<MainModel>(
            startup,
            MainPorts{dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
        model->open();
        model->state.InputDevice = kFileInputName;
        model->options.Verbose = false;
    }
    ~ExampleDesk() {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
    ExampleDesk(const ExampleDesk&) = delete;
};

} // namespace zav::test
