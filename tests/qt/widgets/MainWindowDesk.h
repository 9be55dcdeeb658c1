// The real main window over the real model, with the outside world faked: shared by the
// window's offscreen tests.
#pragma once

#include "app/MainModel.h"
#include "platform/MemorySettingsStore.h"
#include "qt/widgets/MainWindow.h"
#include "qt/widgets/SetupPanel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <QApplication>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>

#include <deque>
#include <filesystem>
#include <memory>

namespace zav::test {

const std::string kExamples = std::string(ZAV_SOURCE_DIR) + "/examples/";

// The real window over the real model, with the outside world faked.
struct Desk {
    std::filesystem::path dir = ScratchDir();
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
    std::unique_ptr<MainWindow> window;
    std::deque<std::string> recordings;

    Desk() {
        // A copy: closing the window saves the profile it has open.
        std::filesystem::create_directories(dir);
        const std::string profile = (dir / "example.zav").string();
        std::filesystem::copy_file(kExamples + "example.zav", profile,
                                   std::filesystem::copy_options::overwrite_existing);
        StartupState startup;
        startup.currentDir = dir.string() + "/";
        startup.profilePath = profile;
        startup.profileName = "example";
        startup.tsvFileName = (dir / "log.tab").string();
        MainEnvironment env;
        env.tempDir = dir.string() + "/";
        env.processId = "1A2B";
        env.osVersion = "6.1";
        model = std::make_unique<MainModel>(
            startup,
            MainPorts{dialogs, settings, devices, devices, devices, devices, devices, shell}, env);
        model->chooseRecording = [this]() -> std::optional<std::string> {
            if (recordings.empty())
                return std::nullopt;
            auto next = recordings.front();
            recordings.pop_front();
            return next;
        };
        model->open();
        model->state.InputDevice = kFileInputName;
        window = std::make_unique<MainWindow>(*model, dialogs, settings, desktop, nullptr);
        window->show();
        QApplication::setActiveWindow(window.get());
        QTest::qWait(20);
    }
    ~Desk() {
        window.reset();
        std::filesystem::remove_all(dir);
    }

    QLineEdit* field(SetupField f) {
        return static_cast<QLineEdit*>(window->setupPanel()->fieldWidget(f));
    }
    // Types into a box and leaves it for the next one, as the operator would with Tab.
    void typeAndLeave(SetupField f, const QString& text) {
        QLineEdit* edit = field(f);
        edit->setFocus();
        QTest::qWait(5);
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Tab);
        QTest::qWait(20);
    }
    QString cell(QTableWidget* t, int row, int column) {
        return t->item(row - 1, column - 1)->text();
    }
};

} // namespace zav::test
