#pragma once

#include "config/OptionsMenu.h"
#include "config/SetupControls.h"
#include "config/SetupEvents.h"
#include "config/SetupRecord.h"
#include "measure/AntennaFile.h"
#include "platform/Dialogs.h"

#include <optional>
#include <vector>

namespace zav {

// While an antenna file is loaded, the antenna factor comes from the file at the set-up's
// frequency instead of being typed: the box and the gain/factor option are locked.
class AntennaFileMode {
public:
    AntennaFileMode(SetupRecord& record, Options& options, SetupControls& controls,
                    OptionsMenu& optionsMenu, Dialogs& dialogs, SetupEvents& events)
        : m_record(record), m_options(options), m_controls(controls), m_optionsMenu(optionsMenu),
          m_dialogs(dialogs), m_events(events) {}

    // "&Import antenna file": choose a file, then load it.
    void importAntennaFile(const std::string& startDir);
    // Loads the file that AntFileName names; a failed load clears the name and gives the box
    // back to the operator. Loading and unloading recompute the results at once, so that
    // they never stand on another antenna than the one shown.
    void LoadAntennaFile();
    // "&Unload antenna file": the box and the option are the operator's again; the value and
    // the factor mode stay as they are.
    void unloadAntennaFile();

    // The file's factor at `frequencyMHz`, or nothing while no file is loaded.
    std::optional<double> ValueAt(double frequencyMHz) const;
    bool Loaded() const { return !m_table.empty(); }

    bool unloadAntennaEnabled = false;
    char decimalSeparator = '.';

private:
    SetupRecord& m_record;
    Options& m_options;
    SetupControls& m_controls;
    OptionsMenu& m_optionsMenu;
    Dialogs& m_dialogs;
    SetupEvents& m_events;
    std::vector<AntennaRow> m_table;
};

} // namespace zav
