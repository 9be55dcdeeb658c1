#include "qt/widgets/MainWindow.h"

#include "app/Caption.h"

namespace zav {

MainWindow::MainWindow(const StartupState& startup, QWidget* parent)
    : QMainWindow(parent), m_startup(startup) {
    setWindowTitle(QString::fromStdString(WindowCaption(m_startup.profileName)));
    resize(900, 640);
}

} // namespace zav
