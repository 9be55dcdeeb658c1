#pragma once

#include "app/MainModel.h"
#include "cli/CliDialogs.h"
#include "platform/MemorySettingsStore.h"

#include <deque>
#include <memory>
#include <string>

namespace zav {

// The main window's model without a window, for zavcli: messages go to standard error,
// settings live for the run only (the desktop user's are never touched), and every step
// takes its recording from the next of the files queued in `recordings`.
class HeadlessModel {
public:
    // Opens `profilePath` as the desktop program opens a profile ("" for every default).
    HeadlessModel(const std::string& profilePath, std::ostream& err);
    ~HeadlessModel();

    MainModel& model() { return *m_model; }
    CliDialogs& dialogs() { return m_dialogs; }
    std::deque<std::string> recordings;
    std::string clipboard; // what the model last put on the clipboard

private:
    struct Devices;
    CliDialogs m_dialogs;
    MemorySettingsStore m_settings;
    std::unique_ptr<Devices> m_devices;
    std::unique_ptr<MainModel> m_model;
};

} // namespace zav
