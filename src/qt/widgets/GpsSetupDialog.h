#pragma once

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace zav {

class Dialogs;
class GpsSetupModel;
struct GpsSettings;

// "GPS setup": the receiver's serial settings and the wanted accuracy. The port list offers
// the numbers 1 to 99 and then the serial devices the system reports; a device path, picked
// or typed, is kept as the "Device" setting and wins over the number, while picking a number
// again drops it. Closing the window counts as Cancel.
class GpsSetupDialog : public QDialog {
public:
    explicit GpsSetupDialog(GpsSetupModel& model, QWidget* parent = nullptr);

    // Runs the dialog modally over `settings`, offering the serial devices found on this
    // machine. True when OK stored them.
    static bool Edit(GpsSettings& settings, Dialogs& dialogs, QWidget* parent = nullptr);

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void render();
    void portEdited(const QString& text);
    void okClicked();
    void selectAccuracy();

    GpsSetupModel& m_model;
    QComboBox* m_port;
    QComboBox* m_speed;
    QComboBox* m_parity;
    QComboBox* m_dbits;
    QComboBox* m_sbits;
    QLineEdit* m_acc;
    QPushButton* m_ok;
    QPushButton* m_cancel;
    bool m_rendering = false;
};

} // namespace zav
