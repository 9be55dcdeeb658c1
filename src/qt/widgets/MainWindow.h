#pragma once

#include "app/Startup.h"

#include <QMainWindow>

namespace zav {

// The main window. For now it carries the designed caption; the set-up form, the steps and
// the result grids bind to it as they come.
class MainWindow : public QMainWindow {
public:
    explicit MainWindow(const StartupState& startup, QWidget* parent = nullptr);

private:
    StartupState m_startup;
};

} // namespace zav
